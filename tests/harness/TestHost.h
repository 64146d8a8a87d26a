// The test host: loads the built module once per process and creates effects through
// VSTPluginMain, exactly as a host does. Most tests talk to the plug-in only through this.
#pragma once

#include <memory>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace test_host {

// The module under test (its path comes from the build).
const VstModule& module();

// A fresh effect created with a host callback that answers version 2400.
std::unique_ptr<VstPlugin> createEffect();

// A host callback that records every call the plug-in makes into the host.
struct HostCall {
    AEffect* effect;
    VstInt32 opcode;
    VstInt32 index;
    VstIntPtr value;
    void* ptr;
    float opt;
};
std::vector<HostCall>& recordedCalls();
VstIntPtr recordingCallback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                            void* ptr, float opt);

// Stereo buffers in the shape processReplacing takes.
struct StereoBuffer {
    explicit StereoBuffer(size_t frames) : left(frames), right(frames) {}
    float** channels()
    {
        pointers[0] = left.data();
        pointers[1] = right.data();
        return pointers;
    }
    std::vector<float> left, right;
    float* pointers[2] = {};
};

// Processes input into a new buffer, in blocks of the given sizes (cycled until done).
StereoBuffer process(const VstPlugin& plugin, StereoBuffer& input,
                     const std::vector<int>& blockSizes);

// A deterministic test signal: two detuned saws and a little noise, different on each channel,
// peaking near 0.8.
StereoBuffer testSignal(size_t frames, unsigned seed = 1);

} // namespace test_host
