#include "tests/harness/TestHost.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace test_host {

const VstModule& module()
{
    static const VstModule loaded(HVT_MODULE_PATH);
    return loaded;
}

std::unique_ptr<VstPlugin> createEffect()
{
    return VstPlugin::create(module());
}

StereoBuffer process(const VstPlugin& plugin, StereoBuffer input, size_t block)
{
    StereoBuffer output(input.left.size());
    for (size_t done = 0; done < input.left.size(); done += block) {
        float* in[2] = {input.left.data() + done, input.right.data() + done};
        float* out[2] = {output.left.data() + done, output.right.data() + done};
        plugin.processReplacing(in, out, VstInt32(std::min(block, input.left.size() - done)));
    }
    return output;
}

::testing::AssertionResult sameAudio(const StereoBuffer& actual, const StereoBuffer& expected)
{
    if (actual.left.size() != expected.left.size())
        return ::testing::AssertionFailure() << "lengths differ";
    for (size_t i = 0; i < actual.left.size(); ++i) {
        if (std::memcmp(&actual.left[i], &expected.left[i], sizeof(float)) != 0 ||
            std::memcmp(&actual.right[i], &expected.right[i], sizeof(float)) != 0)
            return ::testing::AssertionFailure()
                   << "frame " << i << ": " << actual.left[i] << ", " << actual.right[i]
                   << " instead of " << expected.left[i] << ", " << expected.right[i];
    }
    return ::testing::AssertionSuccess();
}

StereoBuffer testSignal(size_t frames, unsigned seed)
{
    StereoBuffer signal(frames);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> sample(-0.8f, 0.8f);
    for (size_t i = 0; i < frames; ++i) {
        signal.left[i] = sample(random);
        signal.right[i] = sample(random);
    }
    return signal;
}

} // namespace test_host
