// hvtremolo-editor: the plug-in's panel in a window of its own, without a host. Loads the module
// as a host does, opens its editor in a top-level window and calls idle 30 times a second.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "tools/Version.h"
#include "tools/editor/halvoCustomWindow10.h"
#include "tools/vsthost/VstPlugin.h"
#include "tools/vsthost/modulePath.h"

int main(int argc, char** argv)
{
    std::string path = defaultModulePath();
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--plugin") && i + 1 < argc) {
            path = argv[++i];
        } else if (!std::strcmp(argv[i], "--version")) {
            std::printf("hvtremolo-editor %s\n", HVT_VERSION);
            return 0;
        } else if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
            std::printf("Usage: hvtremolo-editor [--plugin PATH.so]\n"
                        "       hvtremolo-editor --help | --version\n\n"
                        "Shows the plug-in's panel in a window of its own, without a host: loads\n"
                        "the module as a host does and opens its editor; close the window to quit.\n"
                        "Needs an X display (DISPLAY).\n\n"
                        "  --plugin PATH.so  the module to load (default: HvTremolo.so next to\n"
                        "                    this program)\n"
                        "  --help, -h        print this text\n"
                        "  --version         print the program's name and version\n\n"
                        "Exit status: 0 when the window is closed, 1 when the module or the\n"
                        "window cannot be opened, 2 for a wrong command line.\n");
            return 0;
        } else {
            std::fprintf(stderr, "usage: hvtremolo-editor [--plugin PATH.so] (see --help)\n");
            return 2;
        }
    }
    VstModule module(path);
    auto plugin = VstPlugin::create(module);
    if (!plugin) {
        std::fprintf(stderr, "hvtremolo-editor: %s\n",
                     module.error().empty() ? "the module made no effect" : module.error().c_str());
        return 1;
    }
    ERect* rect = nullptr;
    plugin->dispatch(effEditGetRect, 0, 0, &rect);
    const int width = rect ? rect->right - rect->left : 253;
    const int height = rect ? rect->bottom - rect->top : 400;
    plugin->dispatch(effOpen);
    halvoCustomWindow10 window(*plugin, width, height);
    if (!window.show()) {
        std::fprintf(stderr, "hvtremolo-editor: cannot open a window (is DISPLAY set?)\n");
        return 1;
    }
    while (window.pump()) {
        plugin->dispatch(effEditIdle);
        std::this_thread::sleep_for(std::chrono::milliseconds(33));
    }
    window.close();
    return 0;
}
