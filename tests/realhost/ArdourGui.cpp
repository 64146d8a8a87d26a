#include "tests/realhost/ArdourGui.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstring>
#include <thread>

#include "tests/realhost/ArdourSupport.h"

extern char** environ;

ArdourGui::ArdourGui(const std::string& program, const std::string& sessionFile,
                     const std::vector<std::string>& settings, const std::string& logFile)
{
    std::vector<std::string> environment;
    for (char** entry = environ; *entry; ++entry) {
        const std::string name(*entry, std::strcspn(*entry, "="));
        bool replaced = name == "HVTREMOLO_SILENT_PANEL";
        for (const std::string& setting : settings)
            replaced = replaced || setting.compare(0, name.size() + 1, name + "=") == 0;
        if (!replaced)
            environment.emplace_back(*entry);
    }
    environment.insert(environment.end(), settings.begin(), settings.end());
    std::vector<char*> envp;
    for (std::string& entry : environment)
        envp.push_back(entry.data());
    envp.push_back(nullptr);
    std::string arguments[] = {program, "-n", "-a", sessionFile};
    char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                    arguments[3].data(), nullptr};

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, logFile.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    if (posix_spawn(&pid, program.c_str(), &actions, &attributes, argv, envp.data()) != 0)
        pid = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}

ArdourGui::~ArdourGui()
{
    if (pid > 0 && status < 0) {
        kill(-pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
}

bool ArdourGui::running()
{
    if (pid <= 0)
        return false;
    if (status >= 0)
        return false;
    siginfo_t ended{};
    if (waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        ended.si_pid != pid)
        return true;
    // What it left behind (a scanner it started, say) goes with it, while the unreaped leader
    // still holds the group's id.
    kill(-pid, SIGKILL);
    int raw = 0;
    waitpid(pid, &raw, 0);
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    if (WIFSIGNALED(raw) && crashSignal(WTERMSIG(raw)))
        throw ArdourCrashed{WTERMSIG(raw)};
    return false;
}

bool ArdourGui::waitFor(std::chrono::seconds limit, const std::function<bool()>& ready)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (running()) {
        if (ready())
            return true;
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}
