// A private Xvfb on a display number it picks itself (-displayfd), so that suites can run side by
// side; DISPLAY names it while it lives. Ended by its process id, or by the server itself when
// the test dies: it holds a connection of its own, and the server ends with its last client.
#pragma once

#include <signal.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <xcb/xcb.h>

// Starts argv[0] from PATH with this process's environment; -1 when it cannot be started. With
// quiet, its output goes nowhere (and does not hold the test's own output open).
inline pid_t spawnProgram(const std::vector<std::string>& argv, bool quiet = false)
{
    extern char** environ;
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

class XServer {
public:
    explicit XServer(const std::string& screen = "800x600x24")
    {
        int fds[2];
        if (pipe(fds) != 0)
            return;
        pid = spawnProgram({"Xvfb", "-displayfd", std::to_string(fds[1]), "-screen", "0", screen,
                            "-nolisten", "tcp", "-terminate"},
                           true);
        close(fds[1]);
        std::string number;
        for (char c; pid > 0 && read(fds[0], &c, 1) == 1 && c != '\n';)
            number += c;
        close(fds[0]);
        if (number.empty())
            return;
        keepAlive = xcb_connect((":" + number).c_str(), nullptr);
        if (xcb_connection_has_error(keepAlive))
            return;
        name = ":" + number;
        setenv("DISPLAY", name.c_str(), 1);
    }
    ~XServer()
    {
        xcb_disconnect(keepAlive);
        if (pid > 0 && kill(pid, SIGTERM) == 0)
            waitpid(pid, nullptr, 0);
    }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    bool running() const { return !name.empty(); }
    const std::string& display() const { return name; }

private:
    pid_t pid = -1;
    xcb_connection_t* keepAlive = nullptr;
    std::string name;
};
