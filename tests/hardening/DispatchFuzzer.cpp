// A seeded random host: it loads the module as a host does and calls it through the AEffect record
// with random opcodes, indices, values, floats and block sizes, handing over every buffer between
// guard pages. After each call it checks that the module wrote nothing outside the buffers, that
// finite audio came back finite, and that the calls that must not touch their buffers did not.
// A crash is reported with the call that caused it, so that it can be replayed from the seed.
//
//   hvt_dispatch_fuzz [--iterations N] [--seed S] [--module PATH]
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/hardening/GuardedBuffer.h"
#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr int kMaxFrames = 8192;

// What the interface says ptr (and for two opcodes value) points at, opcode by opcode. The sizes
// are the most the module may write: a text limit plus its terminator, or the record's size.
enum class Argument {
    None,        // ptr unused: null or a scrap of random bytes
    TextOut,     // a text buffer of the given size
    TextIn,      // a terminated text
    ProgramName, // a text of at most 24 characters, sometimes unterminated at 24
    Record,      // a record of the given size, random content
    MidiRecord,  // a MIDI name record whose index field the module reads
    PointerSlot, // a pointer the module may store through (ERect**, void**)
    Speakers,    // value and ptr both point at speaker arrangement slots
    EditOpen,    // null: a non-null ptr would be a host window to embed in
};

struct OpcodeArguments {
    Argument kind = Argument::None;
    size_t size = 0;
};

constexpr size_t kSpeakerArrangementSize = 8 + 8 * 112;
constexpr size_t kParameterPropertiesSize = 152;
constexpr size_t kPatchChunkInfoSize = 64;
constexpr size_t kOfflineRecordSize = 2048;

OpcodeArguments argumentsOf(VstInt32 opcode)
{
    switch (opcode) {
    case effSetProgramName:
        return {Argument::ProgramName, 0};
    case effGetProgramName:
    case effGetProgramNameIndexed:
        return {Argument::TextOut, kVstMaxProgNameLen + 1};
    case effGetParamLabel:
    case effGetParamDisplay:
        return {Argument::TextOut, kVstMaxParamStrLen + 1};
    case effGetParamName:
        return {Argument::TextOut, 14}; // the longest name, "Tremolo Depth", and a terminator
    case effEditGetRect:
    case effGetChunk:
        return {Argument::PointerSlot, sizeof(void*)};
    case effEditOpen:
        return {Argument::EditOpen, 0};
    case effSetChunk:
    case effVendorSpecific:
        return {Argument::Record, 256};
    case effProcessEvents:
        return {Argument::Record, 32}; // VstEvents with room for two event pointers
    case effString2Parameter:
    case effCanDo:
        return {Argument::TextIn, 0};
    case effGetInputProperties:
    case effGetOutputProperties:
        return {Argument::Record, sizeof(VstPinProperties)};
    case effOfflineNotify:
    case effOfflinePrepare:
    case effOfflineRun:
    case effProcessVarIo:
        return {Argument::Record, kOfflineRecordSize};
    case effSetSpeakerArrangement:
        return {Argument::Record, kSpeakerArrangementSize};
    case effGetSpeakerArrangement:
        return {Argument::Speakers, sizeof(void*)};
    case effGetEffectName:
        return {Argument::TextOut, kVstMaxEffectNameLen + 1};
    case effGetVendorString:
    case effGetProductString:
    case effShellGetNextPlugin:
        return {Argument::TextOut, kVstMaxVendorStrLen + 1};
    case effGetParameterProperties:
        return {Argument::Record, kParameterPropertiesSize};
    case effGetMidiProgramName:
    case effGetCurrentMidiProgram:
        return {Argument::MidiRecord, sizeof(MidiProgramName)};
    case effGetMidiProgramCategory:
        return {Argument::MidiRecord, sizeof(MidiProgramCategory)};
    case effGetMidiKeyName:
        return {Argument::MidiRecord, sizeof(MidiKeyName)};
    case effBeginLoadBank:
    case effBeginLoadProgram:
        return {Argument::Record, kPatchChunkInfoSize};
    default:
        return {Argument::None, 0};
    }
}

// --- What a crash report prints: the call in progress, formatted before it is made. ---

char currentCall[256] = "no call yet";

void onFatalSignal(int signalNumber)
{
    const char prefix[] = "\nhvt_dispatch_fuzz: crashed in ";
    [[maybe_unused]] ssize_t ignored = write(STDERR_FILENO, prefix, sizeof prefix - 1);
    ignored = write(STDERR_FILENO, currentCall, strnlen(currentCall, sizeof currentCall));
    ignored = write(STDERR_FILENO, "\n", 1);
    signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

class Fuzzer {
public:
    Fuzzer(const VstModule& module, uint64_t seed) : module(module), random(seed)
    {
        fillSamplePool();
    }

    // Returns false at the first failed check, after saying why.
    bool run(uint64_t iterations);
    void printSummary(double seconds) const;

private:
    struct Tally {
        uint64_t dispatches = 0, setParameters = 0, getParameters = 0, processes = 0,
                 otherProcesses = 0, recreations = 0;
    };

    bool step();
    bool dispatchRandomOpcode();
    bool setRandomParameter();
    bool getRandomParameter();
    bool processRandomBlock();
    bool callDeprecatedProcess();
    bool fail(const char* why);
    bool ensureEffect();

    VstInt32 randomOpcode();
    VstInt32 randomIndex();
    VstIntPtr randomValue();
    float randomFloat();
    void fillSamplePool();
    void fillAudio(float* samples, size_t count, bool finite);
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
    uint32_t below(uint32_t bound) { return std::uniform_int_distribution<uint32_t>(0, bound - 1)(random); }
    void fillRandom(uint8_t* bytes, size_t size);

    static constexpr uint32_t kSamplePoolSize = 1 << 16;

    const VstModule& module;
    std::mt19937_64 random;
    std::vector<float> samplePool;
    AEffect* effect = nullptr;
    uint64_t iteration = 0;
    Tally tally;

    GuardedBuffer argument{4096};
    GuardedBuffer second{4096};
    GuardedBuffer channels[4] = {GuardedBuffer(kMaxFrames * sizeof(float)),
                                 GuardedBuffer(kMaxFrames * sizeof(float)),
                                 GuardedBuffer(kMaxFrames * sizeof(float)),
                                 GuardedBuffer(kMaxFrames * sizeof(float))};
    std::vector<float> before[4] = {std::vector<float>(kMaxFrames), std::vector<float>(kMaxFrames),
                                    std::vector<float>(kMaxFrames), std::vector<float>(kMaxFrames)};
};

bool Fuzzer::run(uint64_t iterations)
{
    for (iteration = 0; iteration < iterations; ++iteration) {
        if (!ensureEffect())
            return fail("VSTPluginMain returned null");
        if (!step())
            return false;
    }
    if (effect)
        effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    effect = nullptr;
    return true;
}

bool Fuzzer::ensureEffect()
{
    if (effect)
        return true;
    snprintf(currentCall, sizeof currentCall, "call %" PRIu64 ": VSTPluginMain", iteration);
    effect = module.entry()(VstPlugin::defaultCallback);
    ++tally.recreations;
    return effect != nullptr;
}

bool Fuzzer::step()
{
    const uint32_t pick = below(100);
    if (pick < 40)
        return dispatchRandomOpcode();
    if (pick < 65)
        return setRandomParameter();
    if (pick < 75)
        return getRandomParameter();
    if (pick < 98)
        return processRandomBlock();
    return callDeprecatedProcess();
}

bool Fuzzer::fail(const char* why)
{
    fprintf(stderr, "hvt_dispatch_fuzz: %s\n  in %s\n", why, currentCall);
    return false;
}

VstInt32 Fuzzer::randomOpcode()
{
    const uint32_t pick = below(100);
    if (pick < 80)
        return static_cast<VstInt32>(below(80));
    if (pick < 95)
        return static_cast<VstInt32>(below(106)) - 5;
    return static_cast<VstInt32>(random());
}

VstInt32 Fuzzer::randomIndex()
{
    static constexpr VstInt32 edges[] = {std::numeric_limits<VstInt32>::min(),
                                         std::numeric_limits<VstInt32>::max(), -1, 6, 9, 10, 16};
    const uint32_t pick = below(100);
    if (pick < 75)
        return static_cast<VstInt32>(below(12)) - 1;
    if (pick < 85)
        return static_cast<VstInt32>(below(140));
    if (pick < 95)
        return edges[below(std::size(edges))];
    return static_cast<VstInt32>(random());
}

VstIntPtr Fuzzer::randomValue()
{
    static constexpr VstIntPtr edges[] = {
        std::numeric_limits<VstIntPtr>::min(), std::numeric_limits<VstIntPtr>::max(),
        std::numeric_limits<VstInt32>::min(),  std::numeric_limits<VstInt32>::max(),
        VstIntPtr(1) << 32,                    (VstIntPtr(1) << 32) + 3,
        -1, 0, 10, 4096, 0x2A1};
    const uint32_t pick = below(100);
    if (pick < 60)
        return static_cast<VstIntPtr>(below(20)) - 2;
    if (pick < 85)
        return edges[below(std::size(edges))];
    return static_cast<VstIntPtr>(random());
}

float Fuzzer::randomFloat()
{
    static const float specials[] = {
        0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 7.0f, 8.0f, 9.0f, 10.0f, 9.9f, 0.999f, 100.0f, 1800.2f,
        3600.4f, 18002.0f, 1e9f, 1e30f, -1e30f,
        std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(),
        std::numeric_limits<float>::min(), std::numeric_limits<float>::denorm_min(),
        -std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::min() / 3.0f,
        std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
        std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN(),
        std::numeric_limits<float>::signaling_NaN()};
    const uint32_t pick = below(100);
    if (pick < 45)
        return std::uniform_real_distribution<float>(0.0f, 1.0f)(random);
    if (pick < 55)
        return std::uniform_real_distribution<float>(-3.0f, 12.0f)(random);
    if (pick < 90)
        return specials[below(std::size(specials))];
    const uint32_t bits = static_cast<uint32_t>(random());
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Audio as a host may send it, drawn once into a pool that blocks are copied from. Finite samples
// stay below 1e20 in size: a gain a host can set (parameters far outside 0 to 1) multiplies by up
// to about 1e8, and audio does not come near the float range anyway.
void Fuzzer::fillSamplePool()
{
    samplePool.resize(2 * kMaxFrames + kSamplePoolSize);
    for (float& sample : samplePool) {
        const uint32_t pick = below(1000);
        if (pick < 900)
            sample = std::uniform_real_distribution<float>(-1.0f, 1.0f)(random);
        else if (pick < 950)
            sample = std::numeric_limits<float>::denorm_min() * static_cast<float>(below(1000));
        else if (pick < 990)
            sample = 0.0f;
        else
            sample = std::uniform_real_distribution<float>(-1e20f, 1e20f)(random);
    }
}

void Fuzzer::fillAudio(float* samples, size_t count, bool finite)
{
    std::memcpy(samples, samplePool.data() + below(kSamplePoolSize), count * sizeof(float));
    if (finite)
        return;
    static const float nonFinite[] = {std::numeric_limits<float>::quiet_NaN(),
                                      std::numeric_limits<float>::infinity(),
                                      -std::numeric_limits<float>::infinity()};
    for (size_t k = 0, spoilt = 1 + count / 64; k < spoilt; ++k)
        samples[below(static_cast<uint32_t>(count))] = nonFinite[below(3)];
}

void Fuzzer::fillRandom(uint8_t* bytes, size_t size)
{
    for (size_t i = 0; i < size; i += sizeof(uint64_t)) {
        const uint64_t word = random();
        std::memcpy(bytes + i, &word, std::min(sizeof word, size - i));
    }
}

bool Fuzzer::dispatchRandomOpcode()
{
    const VstInt32 opcode = randomOpcode();
    const VstInt32 index = randomIndex();
    VstIntPtr value = randomValue();
    const float opt = randomFloat();
    const OpcodeArguments arguments = argumentsOf(opcode);
    const bool atEnd = chance(0.5);
    void* ptr = nullptr;
    bool usesSecond = false;

    switch (arguments.kind) {
    case Argument::None:
        if (chance(0.5)) {
            ptr = argument.place(64, atEnd);
            fillRandom(argument.data(), 64);
        }
        break;
    case Argument::TextOut:
    case Argument::Record:
    case Argument::MidiRecord:
        ptr = argument.place(arguments.size, atEnd);
        fillRandom(argument.data(), arguments.size);
        if (arguments.kind == Argument::MidiRecord) {
            // The first field of each MIDI name record is the index the host asks about.
            const VstInt32 asked = chance(0.8) ? static_cast<VstInt32>(below(140)) - 2 : randomIndex();
            std::memcpy(ptr, &asked, sizeof asked);
        }
        if (opcode == effProcessEvents) {
            const VstInt32 none = 0;
            std::memcpy(ptr, &none, sizeof none);
        }
        if (opcode == effSetChunk || opcode == effSetSpeakerArrangement)
            value = static_cast<VstIntPtr>(arguments.size);
        if (opcode == effSetSpeakerArrangement) {
            second.place(kSpeakerArrangementSize, atEnd);
            fillRandom(second.data(), kSpeakerArrangementSize);
            value = reinterpret_cast<VstIntPtr>(second.data());
            usesSecond = true;
        }
        break;
    case Argument::TextIn: {
        const size_t length = below(41);
        char* text = reinterpret_cast<char*>(argument.place(length + 1, atEnd));
        for (size_t i = 0; i < length; ++i)
            text[i] = static_cast<char>(' ' + below(95));
        text[length] = 0;
        ptr = text;
        break;
    }
    case Argument::ProgramName: {
        // Up to the 24 characters the module copies; at 24 the host need not terminate.
        const size_t length = below(kVstMaxProgNameLen + 1);
        const bool terminated = length < kVstMaxProgNameLen || chance(0.5);
        char* text = reinterpret_cast<char*>(argument.place(length + (terminated ? 1 : 0), atEnd));
        for (size_t i = 0; i < length; ++i)
            text[i] = static_cast<char>(' ' + below(95));
        if (terminated)
            text[length] = 0;
        ptr = text;
        break;
    }
    case Argument::PointerSlot:
        ptr = argument.place(sizeof(void*), atEnd);
        std::memset(ptr, 0, sizeof(void*));
        break;
    case Argument::Speakers:
        ptr = argument.place(sizeof(void*), atEnd);
        second.place(sizeof(void*), !atEnd);
        fillRandom(argument.data(), sizeof(void*));
        fillRandom(second.data(), sizeof(void*));
        value = reinterpret_cast<VstIntPtr>(second.data());
        usesSecond = true;
        break;
    case Argument::EditOpen:
        break;
    }

    snprintf(currentCall, sizeof currentCall,
             "call %" PRIu64 ": dispatcher(opcode %d, index %d, value %" PRIdPTR ", ptr %p, opt %a)",
             iteration, opcode, index, value, ptr, static_cast<double>(opt));
    ++tally.dispatches;
    const VstIntPtr result = effect->dispatcher(effect, opcode, index, value, ptr, opt);

    if (opcode == effClose) {
        effect = nullptr; // the record is gone; the next call makes a new effect
        return true;
    }
    if (ptr && !argument.outsideUntouched())
        return fail("wrote outside the buffer it was given");
    if (usesSecond && !second.outsideUntouched())
        return fail("wrote outside the second buffer it was given");
    if (arguments.kind == Argument::PointerSlot && result != 0) {
        // What the module stored must be readable: ERect for the editor, chunk bytes otherwise.
        const uint8_t* stored = *static_cast<uint8_t* const*>(ptr);
        if (!stored)
            return fail("answered true but stored a null pointer");
        const size_t readable = opcode == effEditGetRect ? sizeof(ERect) : static_cast<size_t>(result);
        volatile uint8_t sum = 0;
        for (size_t i = 0; i < readable; ++i)
            sum = sum + stored[i];
    }
    return true;
}

bool Fuzzer::setRandomParameter()
{
    const VstInt32 index = randomIndex();
    const float value = randomFloat();
    snprintf(currentCall, sizeof currentCall, "call %" PRIu64 ": setParameter(%d, %a)", iteration,
             index, static_cast<double>(value));
    ++tally.setParameters;
    effect->setParameter(effect, index, value);
    return true;
}

bool Fuzzer::getRandomParameter()
{
    const VstInt32 index = randomIndex();
    snprintf(currentCall, sizeof currentCall, "call %" PRIu64 ": getParameter(%d)", iteration,
             index);
    ++tally.getParameters;
    const float value = effect->getParameter(effect, index);
    if ((index < 0 || index > 5) && value != 0.0f)
        return fail("a parameter that does not exist read other than 0");
    return true;
}

bool Fuzzer::processRandomBlock()
{
    // Mostly sizes a host uses, sometimes any size up to the largest, rarely none or negative.
    static constexpr VstInt32 common[] = {1, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192};
    const uint32_t pick = below(100);
    VstInt32 frames;
    if (pick < 50)
        frames = common[below(std::size(common))];
    else if (pick < 98)
        frames = static_cast<VstInt32>(below(kMaxFrames)) + 1;
    else
        frames = -static_cast<VstInt32>(below(3));

    const bool finite = chance(0.95);
    const bool inPlace = chance(0.3);
    const size_t count = frames > 0 ? static_cast<size_t>(frames) : 64;
    float* pointers[4];
    for (int c = 0; c < 4; ++c) {
        pointers[c] = reinterpret_cast<float*>(channels[c].place(count * sizeof(float), chance(0.5)));
        fillAudio(pointers[c], count, finite);
        std::memcpy(before[c].data(), pointers[c], count * sizeof(float));
    }
    float* inputs[2] = {pointers[0], pointers[1]};
    float* outputs[2] = {inPlace ? pointers[0] : pointers[2], inPlace ? pointers[1] : pointers[3]};

    snprintf(currentCall, sizeof currentCall,
             "call %" PRIu64 ": processReplacing(%d frames, %s, %s input)", iteration, frames,
             inPlace ? "in place" : "separate buffers", finite ? "finite" : "non-finite");
    ++tally.processes;
    effect->processReplacing(effect, inputs, outputs, frames);

    for (int c = 0; c < 4; ++c)
        if (!channels[c].outsideUntouched())
            return fail("wrote outside an audio buffer");
    if (frames <= 0) {
        for (int c = 0; c < 4; ++c)
            if (std::memcmp(before[c].data(), pointers[c], count * sizeof(float)) != 0)
                return fail("changed audio when asked for no frames");
        return true;
    }
    if (!inPlace)
        for (int c = 0; c < 2; ++c)
            if (std::memcmp(before[c].data(), pointers[c], count * sizeof(float)) != 0)
                return fail("changed its input buffers");
    if (finite)
        for (int c = 0; c < 2; ++c)
            for (size_t i = 0; i < count; ++i)
                if (!std::isfinite(outputs[c][i]))
                    return fail("turned finite input into a non-finite output");
    return true;
}

// The accumulating and the double-precision entries do nothing in this module: they must leave
// every buffer as it was.
bool Fuzzer::callDeprecatedProcess()
{
    const VstInt32 frames = static_cast<VstInt32>(below(kMaxFrames / 2)) + 1;
    const bool doubles = chance(0.5);
    const size_t bytes = static_cast<size_t>(frames) * (doubles ? sizeof(double) : sizeof(float));
    uint8_t* pointers[4];
    for (int c = 0; c < 4; ++c) {
        pointers[c] = channels[c].place(bytes, chance(0.5));
        fillRandom(pointers[c], bytes);
        std::memcpy(before[c].data(), pointers[c], bytes);
    }
    snprintf(currentCall, sizeof currentCall, "call %" PRIu64 ": %s(%d frames)", iteration,
             doubles ? "processDoubleReplacing" : "process", frames);
    ++tally.otherProcesses;
    if (doubles) {
        double* inputs[2] = {reinterpret_cast<double*>(pointers[0]),
                             reinterpret_cast<double*>(pointers[1])};
        double* outputs[2] = {reinterpret_cast<double*>(pointers[2]),
                              reinterpret_cast<double*>(pointers[3])};
        effect->processDoubleReplacing(effect, inputs, outputs, frames);
    } else {
        float* inputs[2] = {reinterpret_cast<float*>(pointers[0]),
                            reinterpret_cast<float*>(pointers[1])};
        float* outputs[2] = {reinterpret_cast<float*>(pointers[2]),
                             reinterpret_cast<float*>(pointers[3])};
        effect->process(effect, inputs, outputs, frames);
    }
    for (int c = 0; c < 4; ++c)
        if (!channels[c].outsideUntouched() ||
            std::memcmp(before[c].data(), pointers[c], bytes) != 0)
            return fail("an entry that does nothing changed a buffer");
    return true;
}

void Fuzzer::printSummary(double seconds) const
{
    const uint64_t calls = tally.dispatches + tally.setParameters + tally.getParameters +
                           tally.processes + tally.otherProcesses;
    printf("hvt_dispatch_fuzz: %" PRIu64 " calls in %.1f s: %" PRIu64 " dispatcher, %" PRIu64
           " setParameter, %" PRIu64 " getParameter, %" PRIu64 " processReplacing, %" PRIu64
           " process/processDoubleReplacing; %" PRIu64 " effects created\n",
           calls, seconds, tally.dispatches, tally.setParameters, tally.getParameters,
           tally.processes, tally.otherProcesses, tally.recreations);
}

bool parseNumber(const char* text, uint64_t& number)
{
    char* end = nullptr;
    number = std::strtoull(text, &end, 0);
    return end && *end == 0 && end != text;
}

} // namespace

int main(int argc, char** argv)
{
    uint64_t iterations = 1000000;
    uint64_t seed = 1;
    std::string modulePath = HVT_MODULE_PATH;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        const bool hasValue = i + 1 < argc;
        if (option == "--iterations" && hasValue && parseNumber(argv[i + 1], iterations)) {
            ++i;
        } else if (option == "--seed" && hasValue && parseNumber(argv[i + 1], seed)) {
            ++i;
        } else if (option == "--module" && hasValue) {
            modulePath = argv[++i];
        } else {
            fprintf(stderr, "usage: %s [--iterations N] [--seed S] [--module PATH]\n", argv[0]);
            return 2;
        }
    }

    // Sanitizer findings end in abort() too when run with abort_on_error=1 (tests/sanitizers.sh).
    for (int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        signal(signalNumber, onFatalSignal);

    VstModule module(modulePath);
    if (!module.entry()) {
        fprintf(stderr, "hvt_dispatch_fuzz: %s\n", module.error().c_str());
        return 2;
    }
    auto fuzzer = std::make_unique<Fuzzer>(module, seed);
    const auto start = std::chrono::steady_clock::now();
    const bool passed = fuzzer->run(iterations);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    fuzzer->printSummary(seconds);
    printf("seed %" PRIu64 ": %s\n", seed, passed ? "no fault found" : "FAULT FOUND");
    return passed ? 0 : 1;
}
