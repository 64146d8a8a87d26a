#include "tests/harness/TestHost.h"

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

std::vector<HostCall>& recordedCalls()
{
    static std::vector<HostCall> calls;
    return calls;
}

VstIntPtr recordingCallback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                            void* ptr, float opt)
{
    recordedCalls().push_back({effect, opcode, index, value, ptr, opt});
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

StereoBuffer process(const VstPlugin& plugin, StereoBuffer& input,
                     const std::vector<int>& blockSizes)
{
    const size_t frames = input.left.size();
    StereoBuffer output(frames);
    size_t done = 0;
    for (size_t block = 0; done < frames; ++block) {
        const size_t size = std::min<size_t>(blockSizes[block % blockSizes.size()], frames - done);
        float* in[2] = {input.left.data() + done, input.right.data() + done};
        float* out[2] = {output.left.data() + done, output.right.data() + done};
        plugin.processReplacing(in, out, static_cast<VstInt32>(size));
        done += size;
    }
    return output;
}

StereoBuffer testSignal(size_t frames, unsigned seed)
{
    StereoBuffer signal(frames);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> noise(-0.05f, 0.05f);
    float sawL = 0.0f;
    float sawR = 0.0f;
    for (size_t i = 0; i < frames; ++i) {
        sawL += 0.0101f;
        sawR += 0.0137f;
        if (sawL >= 1.0f)
            sawL -= 2.0f;
        if (sawR >= 1.0f)
            sawR -= 2.0f;
        signal.left[i] = 0.7f * sawL + noise(random);
        signal.right[i] = 0.7f * sawR + noise(random);
    }
    return signal;
}

} // namespace test_host
