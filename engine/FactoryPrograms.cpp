#include "engine/FactoryPrograms.h"

#include "engine/Parameters.h"

namespace {

// Programs 0 and 3 have the panner off; all use the 44.1 kHz rate choice.
constexpr FactoryProgram kFactory[kNumPrograms] = {
    {"Wurli Classic", {0.634999f, 0.174999f, 0.0f, 0.0f, 1.0f, 7}},
    {"Waves", {1.0f, 0.174999f, 0.479999f, 0.275f, 1.0f, 7}},
    {"Warble", {0.77999f, 0.5f, 1.0f, 0.495f, 0.545f, 7}},
    {"SlowHand", {1.0f, 0.14f, 0.0f, 0.0f, 1.0f, 7}},
    {"Undulate", {1.0f, 0.054999f, 1.0f, 0.75f, 0.68f, 7}},
    {"The Gentleman", {1.0f, 0.189999f, 0.455f, 0.475999f, 0.62999f, 7}},
    {"Ghosts", {1.0f, 0.189999f, 1.0f, 0.474999f, 0.62999f, 7}},
    {"New Morning", {0.69499f, 0.135f, 0.20999f, 0.474999f, 1.0f, 7}},
    {"Mystery Spot", {0.54f, 0.15999f, 1.0f, 0.35499f, 0.535f, 7}},
    {"Rotary", {0.834999f, 0.63499f, 1.0f, 0.63999f, 0.5f, 7}},
};

} // namespace

const FactoryProgram& factoryProgram(int number)
{
    return kFactory[number];
}

float factoryValue(int number, int32_t index)
{
    float value = 0.0f;
    visitParameter(kFactory[number].settings, index,
                   [&](const auto& field) { value = static_cast<float>(field); });
    return value;
}
