// A seeded random host: it loads the module as a host does and calls it through the AEffect record
// with random opcodes, indices, values, floats and block sizes, handing over every buffer flush
// against a guard page. After each call it checks that the module wrote nothing outside the
// buffers, that finite audio came back finite, and that calls that must not touch their buffers
// did not. A crash is reported with the call that caused it, to be replayed from the seed:
//   hvt_dispatch_fuzz [--iterations N] [--seed S]
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr size_t kPage = 4096;

// Memory followed by an inaccessible page. What the module is handed ends flush against it, so
// that a read or write past the end faults at once; a canary fills the memory before it, so that
// a stray write there shows afterwards.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t bytes) : capacity((bytes + kPage - 1) / kPage * kPage)
    {
        void* mapped = mmap(nullptr, capacity + kPage, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED ||
            mprotect(static_cast<uint8_t*>(mapped) + capacity, kPage, PROT_NONE) != 0)
            std::abort();
        placed = base = static_cast<uint8_t*>(mapped);
        std::memset(base, kCanary, capacity);
    }
    ~GuardedBuffer() { munmap(base, capacity + kPage); }
    GuardedBuffer(const GuardedBuffer&) = delete;

    // Bytes of undefined content; the previous placement must have been checked since.
    uint8_t* place(size_t bytes)
    {
        std::memset(placed, kCanary, base + capacity - placed);
        return placed = base + capacity - bytes;
    }

    bool canaryIntact() const
    {
        static const std::vector<uint8_t> canary(kPage, kCanary);
        for (const uint8_t* p = base; p < placed; p += kPage)
            if (std::memcmp(p, canary.data(), std::min<size_t>(kPage, placed - p)) != 0)
                return false;
        return true;
    }

private:
    static constexpr uint8_t kCanary = 0xA5;
    size_t capacity;
    uint8_t* base;
    uint8_t* placed;
};

// What ptr points at, opcode by opcode, and the most the module may write or read there: a text
// limit plus its terminator, or the record's size. Other opcodes get null or a scrap of bytes.
enum class Kind { Scrap, Bytes, Text, ProgramName, PointerSlot, Speakers, Null };
struct Argument {
    VstInt32 opcode;
    Kind kind;
    size_t size;
};
constexpr size_t kProgramName = kVstMaxProgNameLen + 1, kString = kVstMaxVendorStrLen + 1;
constexpr Argument kArguments[] = {
    {effSetProgramName, Kind::ProgramName, kVstMaxProgNameLen},
    {effGetProgramName, Kind::Bytes, kProgramName},
    {effGetProgramNameIndexed, Kind::Bytes, kProgramName},
    {effGetParamLabel, Kind::Bytes, kVstMaxParamStrLen + 1},
    {effGetParamDisplay, Kind::Bytes, kVstMaxParamStrLen + 1},
    {effGetParamName, Kind::Bytes, 14}, // the longest name, "Tremolo Depth", and a terminator
    {effGetEffectName, Kind::Bytes, kVstMaxEffectNameLen + 1},
    {effGetVendorString, Kind::Bytes, kString}, {effGetProductString, Kind::Bytes, kString},
    {effShellGetNextPlugin, Kind::Bytes, kString},
    {effString2Parameter, Kind::Text, 40}, {effCanDo, Kind::Text, 40},
    {effEditGetRect, Kind::PointerSlot, 8}, {effGetChunk, Kind::PointerSlot, 8},
    {effGetSpeakerArrangement, Kind::Speakers, 8}, // ptr and value: VstSpeakerArrangement**
    {effEditOpen, Kind::Null, 0}, // a non-null ptr would be a host window to embed in
    {effSetChunk, Kind::Bytes, 256}, {effVendorSpecific, Kind::Bytes, 256},
    {effProcessEvents, Kind::Bytes, 32}, // VstEvents with room for two event pointers
    {effGetInputProperties, Kind::Bytes, sizeof(VstPinProperties)},
    {effGetOutputProperties, Kind::Bytes, sizeof(VstPinProperties)},
    {effOfflineNotify, Kind::Bytes, 2048}, {effOfflinePrepare, Kind::Bytes, 2048},
    {effOfflineRun, Kind::Bytes, 2048}, {effProcessVarIo, Kind::Bytes, 2048},
    {effSetSpeakerArrangement, Kind::Bytes, 8 + 8 * 112}, // and value: an arrangement as well
    {effGetParameterProperties, Kind::Bytes, 152},
    {effGetMidiProgramName, Kind::Bytes, sizeof(MidiProgramName)},
    {effGetCurrentMidiProgram, Kind::Bytes, sizeof(MidiProgramName)},
    {effGetMidiProgramCategory, Kind::Bytes, sizeof(MidiProgramCategory)},
    {effGetMidiKeyName, Kind::Bytes, sizeof(MidiKeyName)},
    {effBeginLoadBank, Kind::Bytes, 64}, {effBeginLoadProgram, Kind::Bytes, 64}};

// The call in progress, formatted before it is made, for the crash report.
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
        // Finite audio stays below 1e20: a gain a host can set (parameters far outside 0 to 1)
        // multiplies by up to about 1e8, and audio does not come near the float range anyway.
        for (float& sample : pool) {
            const uint32_t pick = below(1000);
            sample = pick < 900 ? uniform(-1.0f, 1.0f)
                     : pick < 950 ? 1e-45f * static_cast<float>(below(1000))
                     : pick < 990 ? 0.0f
                                  : uniform(-1e20f, 1e20f);
        }
    }

    // False at the first failed check, after saying why.
    bool run(uint64_t iterations)
    {
        for (iteration = 0; iteration < iterations; ++iteration) {
            if (!effect) {
                call("VSTPluginMain");
                if (!(effect = module.entry()(VstPlugin::defaultCallback)))
                    return fail("VSTPluginMain returned null");
            }
            const uint32_t pick = below(100);
            if (!(pick < 40 ? dispatch() : pick < 75 ? parameter(pick < 65) : process(pick >= 98)))
                return false;
        }
        if (effect)
            effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
        return true;
    }

private:
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
    uint32_t below(uint32_t n) { return std::uniform_int_distribution<uint32_t>(0, n - 1)(random); }
    float uniform(float a, float b) { return std::uniform_real_distribution<float>(a, b)(random); }
    template <typename T, size_t n> T pickFrom(const T (&values)[n]) { return values[below(n)]; }

    __attribute__((format(printf, 2, 3))) void call(const char* format, ...)
    {
        const int used = snprintf(currentCall, sizeof currentCall, "call %" PRIu64 ": ", iteration);
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(currentCall + used, sizeof currentCall - used, format, arguments);
        va_end(arguments);
    }

    bool fail(const char* why)
    {
        fprintf(stderr, "hvt_dispatch_fuzz: FAULT FOUND: %s\n  in %s\n", why, currentCall);
        return false;
    }

    // Mostly numbers around the valid indices and values, sometimes an edge, rarely anything.
    int64_t randomNumber()
    {
        constexpr int64_t edges[] = {INT64_MIN, INT64_MAX, INT32_MIN, INT32_MAX, 1ll << 32,
                                     (1ll << 32) + 3, -1, 0, 6, 9, 10, 16, 4096, 0x2A1};
        const uint32_t pick = below(100);
        return pick < 65 ? static_cast<int64_t>(below(14)) - 2
               : pick < 75 ? below(140)
               : pick < 92 ? pickFrom(edges)
                           : static_cast<int64_t>(random());
    }

    float randomFloat()
    {
        using limits = std::numeric_limits<float>;
        static const float specials[] = {
            0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 7.0f, 8.0f, 9.0f, 10.0f, 9.9f, 0.999f, 100.0f, 1800.2f,
            3600.4f, 18002.0f, 1e9f, 1e30f, -1e30f, limits::max(), -limits::max(), limits::min(),
            limits::denorm_min(), -limits::denorm_min(), limits::min() / 3.0f, limits::infinity(),
            -limits::infinity(), limits::quiet_NaN(), -limits::quiet_NaN(),
            limits::signaling_NaN()};
        const uint32_t pick = below(100);
        return pick < 45   ? uniform(0.0f, 1.0f)
               : pick < 55 ? uniform(-3.0f, 12.0f)
               : pick < 90 ? pickFrom(specials)
                           : std::bit_cast<float>(static_cast<uint32_t>(random()));
    }

    uint8_t* randomBytes(GuardedBuffer& buffer, size_t size)
    {
        uint8_t* bytes = buffer.place(size);
        for (size_t i = 0; i < size; i += 8) {
            const uint64_t word = random();
            std::memcpy(bytes + i, &word, std::min<size_t>(8, size - i));
        }
        return bytes;
    }

    char* text(size_t length, bool terminated)
    {
        auto* text = reinterpret_cast<char*>(argument.place(length + terminated));
        for (size_t i = 0; i < length; ++i)
            text[i] = static_cast<char>(' ' + below(95));
        if (terminated)
            text[length] = 0;
        return text;
    }

    bool dispatch()
    {
        const auto opcode = static_cast<VstInt32>(below(100) < 80 ? below(80)
                                                  : chance(0.75)  ? below(106) - 5
                                                                  : random());
        const auto index = static_cast<VstInt32>(randomNumber());
        VstIntPtr value = randomNumber();
        const float opt = randomFloat();
        const auto* found = std::find_if(std::begin(kArguments), std::end(kArguments),
                                         [&](const Argument& a) { return a.opcode == opcode; });
        const Argument arg = found == std::end(kArguments) ? Argument{0, Kind::Scrap, 64} : *found;
        void* ptr = nullptr;
        if (arg.kind == Kind::Bytes || (arg.kind == Kind::Scrap && chance(0.5))) {
            ptr = randomBytes(argument, arg.size);
            // The first field of a MIDI name record is the index asked about, of VstEvents the
            // number of events (none: the pointers after it are random bytes).
            const int first = opcode == effProcessEvents ? 0 : static_cast<int>(below(140)) - 2;
            std::memcpy(ptr, &first, sizeof first);
        } else if (arg.kind == Kind::Text || arg.kind == Kind::ProgramName) {
            // A program name is copied up to 24 characters; at 24 the host need not terminate.
            const size_t length = below(arg.size + 1);
            ptr = text(length, length < arg.size || arg.kind == Kind::Text || chance(0.5));
        } else if (arg.kind == Kind::PointerSlot) {
            ptr = std::memset(argument.place(arg.size), 0, arg.size);
        } else if (arg.kind == Kind::Speakers) {
            ptr = randomBytes(argument, arg.size);
        }
        const bool usesSecond = opcode == effSetSpeakerArrangement || arg.kind == Kind::Speakers;
        if (usesSecond)
            value = reinterpret_cast<VstIntPtr>(randomBytes(second, arg.size));
        if (opcode == effSetChunk)
            value = static_cast<VstIntPtr>(arg.size);

        call("dispatcher(opcode %d, index %d, value %" PRIdPTR ", ptr %p, opt %a)", opcode, index,
             value, ptr, static_cast<double>(opt));
        const VstIntPtr result = effect->dispatcher(effect, opcode, index, value, ptr, opt);
        if (opcode == effClose) {
            effect = nullptr; // the record is gone; the next call makes a new effect
            return true;
        }
        if (!argument.canaryIntact() || !second.canaryIntact())
            return fail("wrote outside a buffer it was given");
        if (arg.kind == Kind::PointerSlot && result != 0) {
            // What the module stored must be readable: ERect for the editor, chunk bytes else.
            const uint8_t* stored = *static_cast<uint8_t* const*>(ptr);
            if (!stored)
                return fail("answered true but stored a null pointer");
            volatile uint8_t sum = 0;
            const VstIntPtr readable = opcode == effEditGetRect ? sizeof(ERect) : result;
            for (VstIntPtr i = 0; i < readable; ++i)
                sum = sum + stored[i];
        }
        return true;
    }

    bool parameter(bool set)
    {
        const auto index = static_cast<VstInt32>(randomNumber());
        if (set) {
            const float value = randomFloat();
            call("setParameter(%d, %a)", index, static_cast<double>(value));
            effect->setParameter(effect, index, value);
            return true;
        }
        call("getParameter(%d)", index);
        const bool exists = index >= 0 && index <= 5;
        return effect->getParameter(effect, index) == 0.0f || exists ||
               fail("a parameter that does not exist read other than 0");
    }

    // processReplacing, or (deprecated) the accumulating or double-precision entry, which do
    // nothing in this module and must leave every buffer as it was.
    bool process(bool deprecated)
    {
        constexpr VstInt32 common[] = {1, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192};
        const uint32_t pick = below(100);
        const VstInt32 frames = deprecated ? static_cast<VstInt32>(below(kMaxFrames / 2)) + 1
                                : pick < 50 ? pickFrom(common)
                                : pick < 98 ? static_cast<VstInt32>(below(kMaxFrames)) + 1
                                            : -static_cast<VstInt32>(below(3));
        const bool doubles = deprecated && chance(0.5);
        const bool finite = deprecated || chance(0.95);
        const int out = deprecated || !chance(0.3) ? 2 : 0; // 0: in place
        const size_t samples = frames > 0 ? frames : 64;
        const size_t bytes = samples * (doubles ? sizeof(double) : sizeof(float));
        void* channel[4];
        for (int c = 0; c < 4; ++c) {
            channel[c] = deprecated ? randomBytes(channels[c], bytes) : channels[c].place(bytes);
            if (!deprecated)
                std::memcpy(channel[c], pool.data() + below(kPoolSize), bytes);
            for (size_t k = 0, spoilt = finite ? 0 : 1 + samples / 64; k < spoilt; ++k)
                static_cast<float*>(channel[c])[below(samples)] = pickFrom(kNonFinite);
            std::memcpy(before[c].data(), channel[c], bytes);
        }
        call("%s(%d frames, %s, %s input)",
             !deprecated ? "processReplacing" : doubles ? "processDoubleReplacing" : "process",
             frames, out ? "separate buffers" : "in place", finite ? "finite" : "non-finite");
        if (doubles) {
            double* pointers[4];
            std::memcpy(pointers, channel, sizeof channel);
            effect->processDoubleReplacing(effect, pointers, pointers + 2, frames);
        } else {
            float* pointers[4];
            std::memcpy(pointers, channel, sizeof channel);
            (deprecated ? effect->process : effect->processReplacing)(effect, pointers,
                                                                      pointers + out, frames);
            if (finite && !deprecated)
                for (int c = out; c < out + 2; ++c)
                    for (VstInt32 i = 0; i < frames; ++i)
                        if (!std::isfinite(pointers[c][i]))
                            return fail("turned finite input into a non-finite output");
        }
        for (int c = 0; c < 4; ++c) {
            if (!channels[c].canaryIntact())
                return fail("wrote outside an audio buffer");
            const bool output = !deprecated && frames > 0 && c >= out && c < out + 2;
            if (!output && std::memcmp(before[c].data(), channel[c], bytes) != 0)
                return fail("changed a buffer it must leave alone");
        }
        return true;
    }

    static constexpr int kMaxFrames = 8192;
    static constexpr uint32_t kPoolSize = 1 << 16;
    static constexpr float kNonFinite[] = {std::numeric_limits<float>::quiet_NaN(),
                                           std::numeric_limits<float>::infinity(),
                                           -std::numeric_limits<float>::infinity()};
    const VstModule& module;
    std::mt19937_64 random;
    std::vector<float> pool = std::vector<float>(kMaxFrames + kPoolSize);
    AEffect* effect = nullptr;
    uint64_t iteration = 0;
    GuardedBuffer argument{kPage}, second{kPage};
    // Room for the most a call uses: kMaxFrames floats, or half as many doubles.
    static constexpr size_t kBytes = kMaxFrames * sizeof(float);
    GuardedBuffer channels[4]{GuardedBuffer(kBytes), GuardedBuffer(kBytes), GuardedBuffer(kBytes),
                              GuardedBuffer(kBytes)};
    std::vector<uint8_t> before[4]{std::vector<uint8_t>(kBytes), std::vector<uint8_t>(kBytes),
                                   std::vector<uint8_t>(kBytes), std::vector<uint8_t>(kBytes)};
};

} // namespace

int main(int argc, char** argv)
{
    uint64_t iterations = 1000000, seed = 1;
    bool usage = argc % 2 == 0;
    for (int i = 1; i + 1 < argc && !usage; i += 2) {
        const std::string option = argv[i];
        char* end = nullptr;
        (option == "--seed" ? seed : iterations) = std::strtoull(argv[i + 1], &end, 0);
        usage = *end != 0 || end == argv[i + 1] || (option != "--seed" && option != "--iterations");
    }
    if (usage) {
        fprintf(stderr, "usage: %s [--iterations N] [--seed S]\n", argv[0]);
        return 2;
    }
    // Sanitizer findings end in abort() too when run with abort_on_error=1 (tests/sanitizers.sh).
    for (const int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        signal(signalNumber, onFatalSignal);
    const VstModule module(HVT_MODULE_PATH);
    if (!module.entry()) {
        fprintf(stderr, "hvt_dispatch_fuzz: %s\n", module.error().c_str());
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    if (!std::make_unique<Fuzzer>(module, seed)->run(iterations))
        return 1;
    printf("hvt_dispatch_fuzz: seed %" PRIu64 ", %" PRIu64 " calls in %.1f s: no fault found\n",
           seed, iterations,
           std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return 0;
}
