// What the Ardour tests of the VST module share: the module installed as a user installs it,
// under a $HOME of the test's own, and Ardour's scanner.
#pragma once

#include <filesystem>
#include <string>

#include "tests/realhost/RunArdour.h"
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
