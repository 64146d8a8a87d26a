// Programs the GUI and host tests start and always end themselves, each stopped by its own
// process id (the private X server is in XServer.h).
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

// Starts argv[0] (looked up in PATH) with this process's environment; -1 if it cannot start.
// With quiet, its output goes nowhere (and does not hold the test's own output open).
inline pid_t spawn(const std::vector<std::string>& argv, bool quiet = false)
{
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (quiet) {
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
    }
    pid_t pid = -1;
    const int failed = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed ? -1 : pid;
}

// A child that is asked to end (SIGTERM) when this goes, and killed if it has not within five
// seconds.
class ChildProcess {
public:
    explicit ChildProcess(const std::vector<std::string>& argv) : pid(spawn(argv)) {}
    ~ChildProcess() { stop(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool started() const { return pid > 0; }
    // Whether it is still running; collects its status once it has ended.
    bool running()
    {
        if (pid <= 0)
            return false;
        if (waitpid(pid, &status, WNOHANG) == pid)
            pid = -1;
        return pid > 0;
    }
    // The exit status (or 128 + signal) once ended, -1 before.
    int exitStatus() const
    {
        if (pid > 0 || status < 0)
            return -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    void stop()
    {
        if (!running())
            return;
        kill(pid, SIGTERM);
        for (int i = 0; i < 500 && running(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (running()) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            pid = -1;
        }
    }

private:
    pid_t pid;
    int status = -1;
};
