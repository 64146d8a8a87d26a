#include "tools/editor/halvoCustomWindow10.h"

halvoCustomWindow10::halvoCustomWindow10(const VstPlugin& plugin, int width, int height)
    : HostWindow(200, 200, width, height, "HvTremolo"), plugin(plugin)
{
}

halvoCustomWindow10::~halvoCustomWindow10()
{
    close();
}

bool halvoCustomWindow10::show()
{
    editorOpen = ok() && plugin.dispatch(effEditOpen, 0, 0, winPointerRef()) == 1;
    return editorOpen;
}

void halvoCustomWindow10::close()
{
    if (!editorOpen)
        return;
    plugin.dispatch(effEditClose);
    editorOpen = false;
    destroy();
}
