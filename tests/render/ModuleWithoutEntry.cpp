// A loadable module that is not a plug-in: it exports a function, but no VSTPluginMain.
extern "C" __attribute__((visibility("default"))) int notAPlugin()
{
    return 0;
}
