// Ardour's GUI as a process a test drives: started on a session with an environment of the test's
// own, in a process group of its own that the test ends by id, its output in a log file.
//
// Ardour 7.3 crashes by itself now and then; a test learns of it as an ArdourCrashed exception
// from the first look at the process after it, and can make its run again.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

struct ArdourCrashed {
    int signal;
};

class ArdourGui {
public:
    // Runs program (Ardour's start script) on the session file, without splash screen or
    // announcements, with NAME=VALUE settings added to this process's environment.
    ArdourGui(const std::string& program, const std::string& sessionFile,
              const std::vector<std::string>& settings, const std::string& logFile);
    // Ends the whole group if it still runs.
    ~ArdourGui();
    ArdourGui(const ArdourGui&) = delete;
    ArdourGui& operator=(const ArdourGui&) = delete;

    bool started() const { return pid > 0; }
    // Whether it still runs. Throws ArdourCrashed when it died of a fault signal.
    bool running();
    // The exit status once it has ended of itself (-1 while it runs).
    int exitStatus() const { return status; }

    // Asks ready() every 100 ms until it holds, for at most the given time, and only while
    // Ardour runs; whether it held.
    bool waitFor(std::chrono::seconds limit, const std::function<bool()>& ready);

private:
    pid_t pid = -1;
    int status = -1;
};
