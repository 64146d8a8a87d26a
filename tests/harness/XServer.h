// A private Xvfb on a display number it picks itself (-displayfd), so that suites can run side by
// side; DISPLAY names it while it lives. Ended by its process id, or by the server itself when
// the test dies: it holds a connection of its own, and the server ends with its last client.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <xcb/xcb.h>

#include "tests/harness/Processes.h"

class XServer {
public:
    explicit XServer(const std::string& screen = "800x600x24")
    {
        int fds[2];
        if (pipe(fds) != 0)
            return;
        pid = spawn({"Xvfb", "-displayfd", std::to_string(fds[1]), "-screen", "0", screen,
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

// The first top-level window named exactly name, waiting up to ten seconds for it; 0 if none.
inline xcb_window_t findWindowNamed(const std::string& name)
{
    xcb_window_t window = 0;
    const std::string search =
        "timeout 10 xdotool search --sync --limit 1 --name '^" + name + "$'";
    if (FILE* found = popen(search.c_str(), "r")) {
        if (fscanf(found, "%u", &window) != 1)
            window = 0;
        pclose(found);
    }
    return window;
}
