#include "tools/render/Renderer.h"

#include <vector>

bool renderAll(SoundSource& source, const VstPlugin& plugin, int blockSize,
               RenderTargets& targets, const volatile std::sig_atomic_t& stop, std::string& error)
{
    const auto size = static_cast<size_t>(blockSize);
    std::vector<float> inLeft(size), inRight(size), outLeft(size), outRight(size);
    float* inputs[2] = {inLeft.data(), inRight.data()};
    float* outputs[2] = {outLeft.data(), outRight.data()};
    const bool mono = source.channels() == 1;

    for (;;) {
        if (stop) {
            error = "interrupted";
            return false;
        }
        const int frames = source.read(inputs[0], inputs[1], blockSize);
        if (frames < 0) {
            error = source.error();
            return false;
        }
        if (frames == 0)
            return true;

        if (targets.input)
            targets.input->add(inputs[0], mono ? nullptr : inputs[1], frames);
        plugin.processReplacing(inputs, outputs, frames);

        if (!targets.wav.write(outputs[0], outputs[1], frames)) {
            error = targets.wav.error();
            return false;
        }
        targets.stats.add(outputs[0], outputs[1], frames);
        if (targets.left)
            targets.left->add(outputs[0], nullptr, frames);
        if (targets.right)
            targets.right->add(outputs[1], nullptr, frames);
        targets.progress.update(targets.stats.frames);
    }
}
