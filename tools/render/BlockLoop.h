// The processing loop: pulls blocks from the source, runs them through the effect's
// processReplacing, and hands the output to the sound file, the envelopes and the statistics.
#pragma once

#include <string>

#include "tools/render/Envelope.h"
#include "tools/render/Progress.h"
#include "tools/render/SoundSource.h"
#include "tools/render/SoundWriter.h"
#include "tools/vsthost/VstPlugin.h"

struct BlockSinks {
    SoundWriter& sound;
    OutputStats& stats;
    ProgressBar& progress;
    // Null when no plot is wanted.
    Envelope* input = nullptr;
    Envelope* left = nullptr;
    Envelope* right = nullptr;
};

// Renders the whole source through the effect. Every block has `blockSize` frames but the last,
// which has what is left. Stops early, with `error` set, on a read or write error.
bool renderThrough(SoundSource& source, const VstPlugin& plugin, int blockSize, BlockSinks& sinks,
                   std::string& error);
