// What the value readout says about a parameter, in a musician's units: depths and mix in
// percent, the speeds in cycles per second at the rate choice and sample rate in use (as the
// engine really turns, see OscillatorRate.h), the rate choice as the rate it tunes for.
#pragma once

#include <cstdint>
#include <string>

struct ReadoutText {
    std::string name;  // "Tremolo Speed"
    std::string value; // "4.29 Hz"

    bool operator==(const ReadoutText&) const = default;
};

// parameter's value as the engine uses it (a value it does not take, such as NaN, reads as what
// it runs with instead), with rateChoice the value of the rate choice parameter and sampleRate
// the host's rate in Hz. An unknown parameter gives empty texts.
ReadoutText readoutText(int32_t parameter, float value, float rateChoice, float sampleRate);
