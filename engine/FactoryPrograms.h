// The ten factory programs: a name and the settings of all six parameters each.
#pragma once

#include "engine/EngineSettings.h"

constexpr int kNumPrograms = 10;

struct FactoryProgram {
    const char* name;
    EngineSettings settings;
};

// Program `number` (0 to kNumPrograms - 1).
const FactoryProgram& factoryProgram(int number);

// Program `number`'s settings as the engine takes them.
inline EngineSettings factorySettings(int number)
{
    return factoryProgram(number).settings;
}

// The value program `number` gives parameter `index` (a Parameter).
float factoryValue(int number, int32_t index);
