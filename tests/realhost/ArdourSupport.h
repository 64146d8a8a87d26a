// What the Ardour tests share: the module installed as a user installs it, under a $HOME of the
// test's own, Ardour's scanner, and runs of Ardour's Lua tool made again when Ardour crashes.
#pragma once

#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tests/render/Support.h"

// The scanner needs Ardour's private libraries, which live beside it.
inline const std::string kArdourScan =
    "LD_LIBRARY_PATH=" + quote(std::filesystem::path(HVT_ARDOUR_VST_SCANNER).parent_path()) +
    " " + quote(HVT_ARDOUR_VST_SCANNER) + " -f \"$HOME/vst/HvTremolo.so\"";

// The module in a folder of its own under home, which holds the hosts' caches and settings
// (the XDG folders too, whatever the caller's are). Returns the shell commands that go there.
inline std::string install(const Scratch& home)
{
    std::filesystem::create_directory(home / "vst");
    std::filesystem::copy_file(HVT_MODULE_PATH, home / "vst/HvTremolo.so");
    return "export HOME=" + quote(home.dir) +
           "; export XDG_CONFIG_HOME=\"$HOME/.config\" XDG_CACHE_HOME=\"$HOME/.cache\""
           " XDG_DATA_HOME=\"$HOME/.local/share\" LXVST_PATH=\"$HOME/vst\"; cd \"$HOME\"; ";
}

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
