// The base classes' requests into the host, which no host reaches through the module: each must
// send its published opcode number with its arguments in the right slots, map the host's answer,
// and answer its default without calling anything when the effect holds no callback.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "host/AudioEffectX.h"

namespace {

using HostCall = std::tuple<AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float>;
std::vector<HostCall> calls;
VstIntPtr hostAnswer = 0;

VstIntPtr recordingHost(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                        void* ptr, float opt)
{
    calls.emplace_back(effect, opcode, index, value, ptr, opt);
    return hostAnswer;
}

class BareEffect : public AudioEffectX {
public:
    using AudioEffectX::AudioEffectX;
    void processReplacing(float**, float**, VstInt32) override {}
    void setParameter(VstInt32 index, float value) override { parameters[index] = value; }
    float getParameter(VstInt32 index) override { return parameters[index]; }
    float parameters[4] = {};
    // A request that stores the host's answer must return what it stored.
    double updatedSampleRate()
    {
        const double rate = updateSampleRate();
        return rate == sampleRate ? rate : -1;
    }
    double updatedBlockSize()
    {
        const VstInt32 size = updateBlockSize();
        return size == blockSize ? size : -1;
    }
};

template <typename T>
T* fake(VstIntPtr address) { return reinterpret_cast<T*>(address); }

// Every result as a number: booleans as 0 or 1, pointers as their address.
template <typename T>
double asNumber(T result)
{
    if constexpr (std::is_pointer_v<T>)
        return static_cast<double>(reinterpret_cast<VstIntPtr>(result));
    else
        return static_cast<double>(result);
}

struct Request {
    const char* call;
    double (*request)(BareEffect& e);
    // What the host must receive; the opcode numbers are those of the published interface.
    VstInt32 opcode, index;
    VstIntPtr value, ptr;
    float opt;
    // Two host answers with what each must turn into, then the answer without a host.
    VstIntPtr answerA;
    double resultA;
    VstIntPtr answerB;
    double resultB, withoutHost;
};

// clang-format off
#define ROW(expression, ...) \
    {#expression, [](BareEffect& e) { return asNumber(expression); }, __VA_ARGS__}

// The call; opcode, index, value, ptr, opt; two host answers, each with its result; no host.
const Request kRequests[] = {
    // The effect's own setParameter runs first, also without a host.
    ROW((e.setParameterAutomated(2, 0.5f), e.getParameter(2)),
                                             0, 2, 0, 0, 0.5f, 1, 0.5, 0, 0.5, 0.5),
    ROW(e.getMasterVersion(),                1, 0, 0, 0, 0, 2400, 2400, 0, 1, 1),
    ROW(e.getCurrentUniqueId(),              2, 0, 0, 0, 0, 77, 77, -5, -5, 0),
    ROW((e.masterIdle(), 0),                 3, 0, 0, 0, 0, 1, 0, 0, 0, 0),
    // The host answers 0 for a connected pin.
    ROW(e.isInputConnected(1),               4, 1, 0, 0, 0, 0, 1, 1, 0, 1),
    ROW(e.isOutputConnected(1),              4, 1, 1, 0, 0, 0, 1, 1, 0, 1),
    ROW((e.wantEvents(3), 0),                6, 0, 3, 0, 0, 1, 0, 0, 0, 0),
    ROW(e.getTimeInfo(0x0f00),               7, 0, 0x0f00, 0, 0, 0x5000, 0x5000, 0, 0, 0),
    // Only an answer of exactly 1 means the events were taken.
    ROW(e.sendVstEventsToHost(fake<VstEvents>(0x100)), 8, 0, 0, 0x100, 0, 1, 1, 2, 0, 0),
    ROW(e.tempoAt(960),                      10, 0, 960, 0, 0, 1200000, 1200000, 0, 0, 0),
    ROW(e.getNumAutomatableParameters(),     11, 0, 0, 0, 0, 6, 6, 0, 0, 0),
    ROW(e.getParameterQuantization(),        12, 0, 0, 0, 0, 127, 127, 0, 0, 0),
    ROW(e.ioChanged(),                       13, 0, 0, 0, 0, 5, 1, 0, 0, 0),
    ROW(e.needIdle(),                        14, 0, 0, 0, 0, -1, 1, 0, 0, 0),
    ROW(e.sizeWindow(640, 480),              15, 640, 480, 0, 0, 5, 1, 0, 0, 0),
    // Only a positive answer replaces the stored rate or size.
    ROW(e.updatedSampleRate(),               16, 0, 0, 0, 0, 48000, 48000, -1, 44100, 44100),
    ROW(e.updatedBlockSize(),                17, 0, 0, 0, 0, 256, 256, 0, 1024, 1024),
    ROW(e.getInputLatency(),                 18, 0, 0, 0, 0, 64, 64, 0, 0, 0),
    ROW(e.getOutputLatency(),                19, 0, 0, 0, 0, 128, 128, 0, 0, 0),
    // The pin argument is not passed on.
    ROW(e.getPreviousPlug(3),                20, 0, 0, 0, 0, 0x7000, 0x7000, 0, 0, 0),
    ROW(e.getNextPlug(3),                    21, 0, 0, 0, 0, 0x7100, 0x7100, 0, 0, 0),
    ROW(e.willProcessReplacing(),            22, 0, 0, 0, 0, 2, 2, 0, 0, 0),
    ROW(e.getCurrentProcessLevel(),          23, 0, 0, 0, 0, 2, 2, 0, 0, 0),
    ROW(e.getAutomationState(),              24, 0, 0, 0, 0, 3, 3, 0, 0, 0),
    ROW(e.offlineStart(fake<VstAudioFile>(0x200), 4, 1), 25, 1, 4, 0x200, 0, 9, 1, 0, 0, 0),
    ROW(e.offlineRead(fake<VstOfflineTask>(0x300), 2, true), 26, 1, 2, 0x300, 0, 9, 1, 0, 0, 0),
    ROW(e.offlineWrite(fake<VstOfflineTask>(0x300), 3), 27, 0, 3, 0x300, 0, 9, 1, 0, 0, 0),
    ROW(e.offlineGetCurrentPass(),           28, 0, 0, 0, 0, 7, 1, 0, 0, 0),
    ROW(e.offlineGetCurrentMetaPass(),       29, 0, 0, 0, 0, 7, 1, 0, 0, 0),
    ROW(e.setOutputSamplerate(96000.0f),     30, 0, 0, 0, 96000.0f, 5, 1, 0, 0, 0),
    ROW(e.getOutputSpeakerArrangement(),     31, 0, 0, 0, 0, 0x7200, 0x7200, 0, 0, 0),
    ROW(e.getHostVendorString(fake<char>(0x400)), 32, 0, 0, 0x400, 0, 3, 1, 0, 0, 0),
    ROW(e.getHostProductString(fake<char>(0x400)), 33, 0, 0, 0x400, 0, 3, 1, 0, 0, 0),
    ROW(e.getHostVendorVersion(),            34, 0, 0, 0, 0, 8100, 8100, 0, 0, 0),
    ROW(e.hostVendorSpecific(5, 6, fake<void>(0x500), 0.25f),
                                             35, 5, 6, 0x500, 0.25f, -9, -9, 0, 0, 0),
    // Any answer but 0 counts: a host's -1 ("no") reads as 1, just like its 1.
    ROW(e.canHostDo(fake<char>(0x600)),      37, 0, 0, 0x600, 0, -1, 1, 0, 0, 0),
    ROW(e.getHostLanguage(),                 38, 0, 0, 0, 0, 2, 2, 0, 0, 0),
    ROW(e.openWindow(fake<VstWindow>(0x700)), 39, 0, 0, 0x700, 0, 0x7300, 0x7300, 0, 0, 0),
    ROW(e.closeWindow(fake<VstWindow>(0x700)), 40, 0, 0, 0x700, 0, 5, 1, 0, 0, 0),
    ROW(e.getDirectory(),                    41, 0, 0, 0, 0, 0x7400, 0x7400, 0, 0, 0),
    ROW(e.updateDisplay(),                   42, 0, 0, 0, 0, 5, 1, 0, 0, 0),
    ROW(e.beginEdit(3),                      43, 3, 0, 0, 0, 5, 1, 0, 0, 0),
    ROW(e.endEdit(3),                        44, 3, 0, 0, 0, 5, 1, 0, 0, 0),
    ROW(e.openFileSelector(fake<VstFileSelect>(0x800)), 45, 0, 0, 0x800, 0, 5, 1, 0, 0, 0),
    ROW(e.closeFileSelector(fake<VstFileSelect>(0x800)), 46, 0, 0, 0x800, 0, 5, 1, 0, 0, 0),
    ROW(e.getChunkFile(fake<void>(0x900)),   48, 0, 0, 0x900, 0, 5, 1, 0, 0, 0),
    ROW(e.getInputSpeakerArrangement(),      49, 0, 0, 0, 0, 0x7500, 0x7500, 0, 0, 0),
};
// clang-format on

} // namespace

TEST(HostRequests, EachSendsItsOpcodeAndArgumentsAndMapsTheAnswer)
{
    for (const Request& r : kRequests) {
        SCOPED_TRACE(r.call);
        for (auto [answer, expected] : {std::pair{r.answerA, r.resultA}, {r.answerB, r.resultB}}) {
            BareEffect effect(recordingHost, 1, 4);
            calls.clear();
            hostAnswer = answer;
            EXPECT_EQ(r.request(effect), expected) << "host answered " << answer;
            EXPECT_EQ(calls, std::vector{HostCall(effect.getAeffect(), r.opcode, r.index, r.value,
                                                  fake<void>(r.ptr), r.opt)});
        }
        BareEffect alone(nullptr, 1, 4);
        calls.clear();
        EXPECT_EQ(r.request(alone), r.withoutHost) << "without a host";
        EXPECT_TRUE(calls.empty());
    }
    // A null file selector or path is not passed to the host at all.
    BareEffect effect(recordingHost, 1, 4);
    calls.clear();
    hostAnswer = 1;
    EXPECT_FALSE(effect.openFileSelector(nullptr) || effect.closeFileSelector(nullptr) ||
                 effect.getChunkFile(nullptr));
    EXPECT_TRUE(calls.empty());
}

// The value-to-text tools beside them, as the base class defines them.
TEST(HostRequests, TextToolsFormatDecibelsHertzAndMillisecondsWithinTheirLimit)
{
    using Tool = void (AudioEffect::*)(float, char*, VstInt32);
    const Tool dB = &AudioEffect::dB2string, Hz = &AudioEffect::Hz2string,
               ms = &AudioEffect::ms2string;
    const std::tuple<Tool, float, float, VstInt32, std::string> rows[] = {
        {dB, 1.0f, 44100.0f, 8, "0.000000"},  {dB, 10.0f, 44100.0f, 8, "20.00000"},
        {dB, 0.5f, 44100.0f, 8, "-6.02059"}, // -6.0205998 as a float, truncated
        {dB, 0.0f, 44100.0f, 8, "-oo"},       {dB, -1.0f, 44100.0f, 2, "-o"},
        {Hz, 441.0f, 44100.0f, 8, "100.0000"}, {Hz, 480.0f, 48000.0f, 8, "100.0000"},
        {Hz, 0.0f, 44100.0f, 8, "0.000000"},  {ms, 441.0f, 44100.0f, 8, "10.00000"},
        {ms, 24000.0f, 48000.0f, 4, "500."},
    };
    for (const auto& [tool, value, rate, maxLen, expected] : rows) {
        SCOPED_TRACE(testing::Message() << value << " at " << rate << ", limit " << maxLen);
        BareEffect effect(nullptr, 1, 4);
        effect.setSampleRate(rate);
        char text[16];
        std::fill(std::begin(text), std::end(text), 'x');
        (effect.*tool)(value, text, maxLen);
        ASSERT_EQ(text[maxLen], 0);
        EXPECT_EQ(text, expected);
        EXPECT_EQ(text[maxLen + 1], 'x') << "written past the terminator";
    }
}
