// Programs the GUI and host tests start and always end themselves: a private Xvfb on a display
// number of its own, and any other child, each stopped by its own process id.
#pragma once

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
inline pid_t spawn(const std::vector<std::string>& argv)
{
    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = -1;
    return posix_spawnp(&pid, args[0], nullptr, nullptr, args.data(), environ) == 0 ? pid : -1;
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

// A private Xvfb on a display number it picks itself (-displayfd), so suites can run side by
// side; DISPLAY names it while it lives.
class XServer {
public:
    XServer()
    {
        int fds[2];
        if (pipe(fds) != 0)
            return;
        pid = spawn({"Xvfb", "-displayfd", std::to_string(fds[1]), "-screen", "0", "800x600x24",
                     "-nolisten", "tcp", "-noreset"});
        close(fds[1]);
        std::string name = ":";
        for (char c; pid > 0 && read(fds[0], &c, 1) == 1 && c != '\n';)
            name += c;
        close(fds[0]);
        running = name.size() > 1;
        display = name;
        setenv("DISPLAY", display.c_str(), 1);
    }
    ~XServer()
    {
        if (pid > 0 && kill(pid, SIGTERM) == 0)
            waitpid(pid, nullptr, 0);
    }

    bool running = false;
    std::string display;

private:
    pid_t pid = -1;
};
