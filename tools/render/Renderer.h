// The processing loop: pulls blocks from the source, runs them through processReplacing, and hands
// the output to the WAV file, the envelopes and the statistics.
#pragma once

#include <csignal>
#include <string>

#include "tools/render/Envelope.h"
#include "tools/render/Progress.h"
#include "tools/render/SoundSource.h"
#include "tools/render/WavWriter.h"
#include "tools/vsthost/VstPlugin.h"

struct RenderTargets {
    WavWriter& wav;
    OutputStats& stats;
    ProgressBar& progress;
    // Null when no plot is wanted.
    Envelope* input = nullptr;
    Envelope* left = nullptr;
    Envelope* right = nullptr;
};

// Every block has `blockSize` frames but the last, which has what is left. Stops early, with
// `error` set, on a read or write error or when `stop` becomes non-zero (a signal handler's flag).
bool renderAll(SoundSource& source, const VstPlugin& plugin, int blockSize,
               RenderTargets& targets, const volatile std::sig_atomic_t& stop,
               std::string& error);
