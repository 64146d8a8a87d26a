// The engine settings of a factory program, as the plug-in hands them to its engine.
#pragma once

#include "effect/EngineSettings.h"
#include "effect/TremoloProgram.h"

inline EngineSettings factorySettings(int number)
{
    static TremoloProgram programs[kNumPrograms];
    static const bool loaded = (loadFactoryPrograms(programs), true);
    (void)loaded;
    const TremoloProgram& factory = programs[number];
    EngineSettings settings;
    settings.tremoloDepth = factory.tremoloDepth;
    settings.tremoloSpeed = factory.tremoloSpeed;
    settings.pannerDepth = factory.pannerDepth;
    settings.pannerSpeed = factory.pannerSpeed;
    settings.mix = factory.mix;
    settings.rateChoice = factory.rateChoice;
    return settings;
}
