// The LV2 edition's identity and ports, written once for the plug-in, its UI and the TTL
// generator. The five knob parameters are ports 4 to 8 in parameter order; the rate choice is
// port 9, which adds "Session rate" (0) to the module's choices 7 to 10; port 10 reports the
// choice in use.
#pragma once

#include <cmath>
#include <cstdint>

#include "common/truncate.h"
#include "engine/Parameters.h"

namespace lv2_ports {

constexpr const char* kPluginUri = "urn:halvo:hvtremolo";
constexpr const char* kUiUri = "urn:halvo:hvtremolo#ui";

enum Port : uint32_t {
    kInLeft = 0,
    kInRight = 1,
    kOutLeft = 2,
    kOutRight = 3,
    kFirstControl = 4, // parameter 0, Tremolo Depth
    kRateChoicePort = kFirstControl + kSampleRate,
    kTuningPort = 10,
};
constexpr uint32_t kNumPorts = 11;

// Port 9's own choice: follow the rate the host runs at.
constexpr int32_t kSessionRate = 0;

constexpr uint32_t portOfParameter(int32_t parameter)
{
    return kFirstControl + static_cast<uint32_t>(parameter);
}

// The parameter a control input carries, or -1 for any other port.
constexpr int32_t parameterOfPort(uint32_t port)
{
    return port >= kFirstControl && port < kFirstControl + kNumParameters
               ? static_cast<int32_t>(port - kFirstControl)
               : -1;
}

// The rate choice whose rate is nearest sampleRate, the lower one of two as near; 44.1 kHz for
// a rate that is no number.
inline int32_t sessionRateChoice(double sampleRate)
{
    int32_t nearest = kFirstRateChoice;
    for (int32_t choice = kFirstRateChoice + 1; choice <= kLastRateChoice; ++choice) {
        const double distance = std::fabs(sampleRate - kRateChoiceHz[choice - kFirstRateChoice]);
        if (distance < std::fabs(sampleRate - kRateChoiceHz[nearest - kFirstRateChoice]))
            nearest = choice;
    }
    return nearest;
}

// The rate choice port 9's value asks for: 7 to 10 as the module stores them (the whole part,
// so 9.5 is 9), anything else (0, 3, 11, NaN) the session's choice.
inline int32_t rateChoiceOfPort(float value, int32_t sessionChoice)
{
    const int32_t choice = truncateToInt32(value);
    return isRateChoice(choice) ? choice : sessionChoice;
}

} // namespace lv2_ports
