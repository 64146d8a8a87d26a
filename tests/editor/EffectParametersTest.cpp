// What a host cannot see of the panel's writes: the effect gets each exactly once, with the value
// the panel wrote, inside the panel's own flag, and the flag is still up while the host hears of
// the change (so a host that sets the value again is not echoed to the panel).
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "editor/EffectParameters.h"
#include "effect/VstXSynth.h"
#include "engine/Parameters.h"

namespace {

struct Seen {
    int32_t index;
    float value;
    bool inPanelUpdate;
    bool operator==(const Seen&) const = default;
};

void PrintTo(const Seen& seen, std::ostream* out)
{
    *out << "{" << seen.index << ", " << seen.value
         << (seen.inPanelUpdate ? ", in the panel's write}" : ", outside the panel's write}");
}

std::vector<Seen> automated; // what the host heard, audioMasterAutomate only

VstIntPtr recordingHost(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr, void*, float opt)
{
    if (opcode == audioMasterAutomate)
        automated.push_back({index, opt, static_cast<AudioEffect*>(e->object)->inPanelUpdate});
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

class RecordingEffect : public VstXSynth {
public:
    RecordingEffect() : VstXSynth(recordingHost) {}
    void setParameter(VstInt32 index, float value) override
    {
        written.push_back({index, value, inPanelUpdate});
        VstXSynth::setParameter(index, value);
    }
    std::vector<Seen> written;
};

TEST(EffectParameters, EachWriteReachesTheEffectOnceUnderThePanelsFlagAndOnlyChangesReachTheHost)
{
    struct Case {
        const char* what;
        int32_t index;
        float before, written;
        bool tellHost, told;
    };
    const Case cases[] = {
        {"a knob's new value", kMix, 1.0f, 0.5f, true, true},
        {"the value it has", kMix, 0.5f, 0.5f, true, false},
        {"a new rate choice", kSampleRate, 8.0f, 9.0f, true, true},
        {"a rate that truncates to the one chosen", kSampleRate, 8.0f, 8.7f, true, false},
        {"no parameter", kNumParameters, 0.0f, 0.5f, true, false},
        {"a new value, silent", kMix, 1.0f, 0.5f, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        RecordingEffect effect;
        EffectParameters parameters(&effect, c.tellHost);
        effect.setParameter(c.index, c.before);
        effect.written.clear();
        automated.clear();

        parameters.setParameter(c.index, c.written);
        EXPECT_EQ(effect.written, (std::vector<Seen>{{c.index, c.written, true}}));
        const std::vector<Seen> told = {{c.index, c.written, true}};
        EXPECT_EQ(automated, c.told ? told : std::vector<Seen>{});
        EXPECT_FALSE(effect.inPanelUpdate);
    }
}

} // namespace
