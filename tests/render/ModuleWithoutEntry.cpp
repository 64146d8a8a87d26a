// A loadable module that is no plug-in: it exports no VSTPluginMain.
