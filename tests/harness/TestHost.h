// The test host: loads the built module once per process and creates effects through
// VSTPluginMain, exactly as a host does. Most tests talk to the plug-in only through this.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace test_host {

const VstModule& module();

// A fresh effect whose host callback answers version 2400 and nothing else.
std::unique_ptr<VstPlugin> createEffect();

struct StereoBuffer {
    explicit StereoBuffer(size_t frames, float v = 0.0f) : left(frames, v), right(frames, v) {}
    float** channels()
    {
        pointers[0] = left.data();
        pointers[1] = right.data();
        return pointers;
    }
    std::vector<float> left, right;
    float* pointers[2] = {};
};

// Processes input into a new buffer in blocks of the given size.
StereoBuffer process(const VstPlugin& plugin, StereoBuffer input, size_t block);

// Bit for bit, so that -0 and 0 differ and NaNs compare; names the first frame that differs.
::testing::AssertionResult sameAudio(const StereoBuffer& actual, const StereoBuffer& expected);

// Uniform noise peaking near 0.8, different on each channel.
StereoBuffer testSignal(size_t frames, unsigned seed = 1);

} // namespace test_host
