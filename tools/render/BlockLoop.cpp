#include "tools/render/BlockLoop.h"

#include <vector>

bool renderThrough(SoundSource& source, const VstPlugin& plugin, int blockSize, BlockSinks& sinks,
                   std::string& error)
{
    const auto size = static_cast<size_t>(blockSize);
    std::vector<float> inLeft(size), inRight(size), outLeft(size), outRight(size);
    float* inputs[2] = {inLeft.data(), inRight.data()};
    float* outputs[2] = {outLeft.data(), outRight.data()};
    const bool mono = source.channels() == 1;

    for (;;) {
        const int frames = source.read(inputs[0], inputs[1], blockSize);
        if (frames < 0) {
            error = source.error();
            return false;
        }
        if (frames == 0)
            return true;

        if (sinks.input)
            sinks.input->add(inputs[0], mono ? nullptr : inputs[1], frames);
        plugin.processReplacing(inputs, outputs, frames);

        if (!sinks.sound.write(outputs[0], outputs[1], frames)) {
            error = sinks.sound.error();
            return false;
        }
        sinks.stats.add(outputs[0], outputs[1], frames);
        if (sinks.left)
            sinks.left->add(outputs[0], nullptr, frames);
        if (sinks.right)
            sinks.right->add(outputs[1], nullptr, frames);
        sinks.progress.update(sinks.stats.frames);
    }
}
