// A host callback that remembers every request effects make of their host, with the thread each
// came from, so that a test can show what a plug-in tells its host and when. It answers as
// VstPlugin::defaultCallback does.
//
// One log for the process: the callback is a plain function, and effects call it before the
// host knows their AEffect record. Any thread may call it.
#pragma once

#include <functional>
#include <thread>
#include <vector>

#include "host/vst2.h"

struct HostCall {
    VstInt32 opcode;
    VstInt32 index;
    float value; // opt: the value of audioMasterAutomate
    std::thread::id thread;

    bool operator==(const HostCall&) const = default;
};

class HostCallLog {
public:
    static VstIntPtr callback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                              void* ptr, float opt);

    // The calls made since the last take, oldest first.
    static std::vector<HostCall> take();

    // What the host does on audioMasterAutomate after recording it, on the calling thread (some
    // hosts set the parameter again from there); an empty function does nothing.
    using AutomateHandler = std::function<void(AEffect* effect, VstInt32 index, float value)>;
    static void onAutomate(AutomateHandler handler);
};
