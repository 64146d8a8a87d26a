// Runs an ardour7-lua session script, again from scratch when Ardour crashes by itself.
#pragma once

#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tests/render/Support.h"

// Whether a process ended on a signal of its own fault, as Ardour does now and then by itself.
inline bool crashSignal(int signal)
{
    return signal == SIGSEGV || signal == SIGABRT || signal == SIGBUS || signal == SIGILL ||
           signal == SIGFPE;
}

// Ardour 7.3's Lua session corrupts its own heap now and then and dies on SIGABRT or SIGSEGV,
// about one run in three here, also in a session without any plug-in, and valgrind shows no
// invalid access by Ardour or by us. Such a run is made again from scratch, a few times; any other
// failure counts at once.
inline Ran runArdour(const std::string& command, const std::vector<std::string>& outputs)
{
    Ran ran;
    for (int attempt = 1; attempt <= 6; ++attempt) {
        for (const std::string& output : outputs)
            std::filesystem::remove_all(output);
        ran = shell(command);
        if (ran.status <= 128 || !crashSignal(ran.status - 128))
            break;
        std::cout << "Ardour crashed (status " << ran.status << "), attempt " << attempt << "\n";
    }
    return ran;
}
