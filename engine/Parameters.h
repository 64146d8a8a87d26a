// The six parameters: their indices, names and ranges, written once for the effect, the panel,
// the editor's mailbox, the LV2 description and the tools.
//
// Records that hold one value per parameter (the engine's settings, the effect's live values,
// a program) name their fields after the parameters, so one mapping from index to field serves
// them all (parameterField, visitParameter).
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

enum Parameter : int32_t {
    kTremoloDepth = 0,
    kTremoloSpeed = 1,
    kStereoPanner = 2, // the panner's depth
    kPannerSpeed = 3,
    kMix = 4,
    kSampleRate = 5, // the rate choice the speeds are tuned for
};

constexpr int32_t kNumParameters = 6;

constexpr bool isParameter(int32_t index)
{
    return static_cast<uint32_t>(index) < static_cast<uint32_t>(kNumParameters);
}

// The rate choices parameter kSampleRate takes: 7, 8, 9, 10 for 44.1, 48, 88.2, 96 kHz.
constexpr int32_t kFirstRateChoice = 7;
constexpr int32_t kLastRateChoice = 10;
constexpr int32_t kNumRateChoices = kLastRateChoice - kFirstRateChoice + 1;

constexpr bool isRateChoice(int32_t choice)
{
    return choice >= kFirstRateChoice && choice <= kLastRateChoice;
}

// The session rate each choice tunes the speeds for, in Hz.
constexpr float kRateChoiceHz[kNumRateChoices] = {44100.0f, 48000.0f, 88200.0f, 96000.0f};

struct ParameterInfo {
    const char* name;   // what hosts show ("Tremolo Depth")
    const char* label;  // the unit text hosts show beside the value
    const char* symbol; // a C identifier for formats that want one (LV2 port symbols)
    float minimum;
    float maximum;
    bool integer; // stored as a whole number (the rate choice)
};

constexpr ParameterInfo kParameterInfo[kNumParameters] = {
    {"Tremolo Depth", "amount", "tremolo_depth", 0.0f, 1.0f, false},
    {"Tremolo Speed", "amount", "tremolo_speed", 0.0f, 1.0f, false},
    {"Stereo Panner", "amount", "stereo_panner", 0.0f, 1.0f, false},
    {"Panner Speed", "amount", "panner_speed", 0.0f, 1.0f, false},
    {"Mix", "percent", "mix", 0.0f, 1.0f, false},
    {"Sample Rate", "Hz", "sample_rate", 7.0f, 10.0f, true},
};

// The field of parameter P in a record named after the parameters.
template <Parameter P, typename Record>
constexpr auto& parameterField(Record& record)
{
    if constexpr (P == kTremoloDepth)
        return record.tremoloDepth;
    else if constexpr (P == kTremoloSpeed)
        return record.tremoloSpeed;
    else if constexpr (P == kStereoPanner)
        return record.pannerDepth;
    else if constexpr (P == kPannerSpeed)
        return record.pannerSpeed;
    else if constexpr (P == kMix)
        return record.mix;
    else
        return record.rateChoice;
}

// Calls visit(field) with the field of parameter index; an unknown index calls nothing and
// answers false.
template <typename Record, typename Visit>
constexpr bool visitParameter(Record& record, int32_t index, Visit&& visit)
{
    switch (index) {
    case kTremoloDepth:
        visit(parameterField<kTremoloDepth>(record));
        return true;
    case kTremoloSpeed:
        visit(parameterField<kTremoloSpeed>(record));
        return true;
    case kStereoPanner:
        visit(parameterField<kStereoPanner>(record));
        return true;
    case kPannerSpeed:
        visit(parameterField<kPannerSpeed>(record));
        return true;
    case kMix:
        visit(parameterField<kMix>(record));
        return true;
    case kSampleRate:
        visit(parameterField<kSampleRate>(record));
        return true;
    default:
        return false;
    }
}

// Calls visit(std::integral_constant<Parameter, P>) for every parameter, in index order; the
// index is a constant, so a loop over the fields costs what six written-out lines would.
template <typename Visit>
constexpr void forEachParameter(Visit&& visit)
{
    [&]<int32_t... P>(std::integer_sequence<int32_t, P...>) {
        (visit(std::integral_constant<Parameter, static_cast<Parameter>(P)>{}), ...);
    }(std::make_integer_sequence<int32_t, kNumParameters>{});
}
