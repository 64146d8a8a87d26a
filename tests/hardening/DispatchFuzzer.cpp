// A seeded random host: it loads the module as a host does and calls it through the AEffect record
// with random opcodes, indices, values, floats and block sizes, handing over every buffer flush
// against a guard page. After each call it checks that the module wrote nothing outside the
// buffers, that finite audio came back finite, and that buffers a call must leave alone are as
// they were. A crash names the call that caused it, to be replayed from the seed:
//   hvt_dispatch_fuzz [--iterations N] [--seed S]
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

constexpr size_t kPage = 4096, kMaxFrames = 8192, kChannelBytes = kMaxFrames * sizeof(float);
constexpr uint8_t kCanary = 0xA5;

// Memory followed by an inaccessible page. What the module is handed ends flush against it, so
// that a read or write past the end faults at once; a canary fills the memory before it, so that
// a stray write there shows afterwards.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t pages = kChannelBytes / kPage) : capacity(pages * kPage)
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

    // All canary: the first byte is, and every byte equals the next.
    bool canaryIntact() const
    {
        return placed == base ||
               (*base == kCanary && std::memcmp(base, base + 1, placed - base - 1) == 0);
    }

private:
    size_t capacity;
    uint8_t* base;
    uint8_t* placed;
};

// What ptr points at for the opcodes whose ptr this module reads or writes, and the most it may
// touch there: a text limit plus its terminator, a record's size, or a zeroed slot where it stores
// a pointer. Other opcodes get null or a scrap of bytes.
enum class Kind { Scrap, Bytes, Text, ProgramName, PointerSlot, Null };
using enum Kind;
constexpr size_t kName = kVstMaxProgNameLen + 1, kParameterText = kVstMaxParamStrLen + 1,
                 kString = kVstMaxVendorStrLen + 1;
constexpr std::tuple<VstInt32, Kind, size_t> kArguments[] = {
    {effSetProgramName, ProgramName, kVstMaxProgNameLen}, {effGetProgramName, Bytes, kName},
    {effGetProgramNameIndexed, Bytes, kName}, {effGetParamLabel, Bytes, kParameterText},
    {effGetParamDisplay, Bytes, kParameterText},
    {effGetParamName, Bytes, 14}, // the longest name, "Tremolo Depth", and a terminator
    {effGetEffectName, Bytes, kVstMaxEffectNameLen + 1}, {effGetVendorString, Bytes, kString},
    {effGetProductString, Bytes, kString}, {effString2Parameter, Text, 40}, {effCanDo, Text, 40},
    {effSetChunk, Bytes, 256},
    {effEditGetRect, PointerSlot, 8}, {effGetChunk, PointerSlot, 8},
    {effGetSpeakerArrangement, Bytes, 8}, // ptr and value: VstSpeakerArrangement**
    {effEditOpen, Null, 0},               // a non-null ptr would be a host window to embed in
    {effGetInputProperties, Bytes, sizeof(VstPinProperties)},
    {effGetOutputProperties, Bytes, sizeof(VstPinProperties)},
    {effGetMidiProgramName, Bytes, sizeof(MidiProgramName)},
    {effGetCurrentMidiProgram, Bytes, sizeof(MidiProgramName)},
    {effGetMidiProgramCategory, Bytes, sizeof(MidiProgramCategory)},
    {effGetMidiKeyName, Bytes, sizeof(MidiKeyName)}};

// The crash report, the call in it written before the call is made.
char report[300] = "\nhvt_dispatch_fuzz: crashed in no call yet\n";
constexpr size_t kCallAt = sizeof "\nhvt_dispatch_fuzz: crashed in " - 1;

void onFatalSignal(int signalNumber)
{
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, report, strlen(report));
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
                call("VSTPluginMain\n");
                if (!(effect = module.entry()(VstPlugin::defaultCallback)))
                    return fail("VSTPluginMain returned null");
            }
            const uint32_t pick = below(100);
            if (!(pick < 40 ? dispatch() : pick < 75 ? parameter(pick < 65) : process()))
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
        const size_t room = sizeof report - kCallAt;
        const int used = snprintf(report + kCallAt, room, "call %" PRIu64 ": ", iteration);
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(report + kCallAt + used, room - used, format, arguments);
        va_end(arguments);
    }

    bool fail(const char* why)
    {
        fprintf(stderr, "hvt_dispatch_fuzz: FAULT FOUND: %s\n  in %s", why, report + kCallAt);
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
        std::generate_n(bytes, size, [&] { return static_cast<uint8_t>(random()); });
        return bytes;
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
                                         [&](const auto& a) { return std::get<0>(a) == opcode; });
        const auto [_, kind, size] = found == std::end(kArguments) ? std::tuple(0, Scrap, 64ul)
                                                                   : *found;
        void* ptr = nullptr;
        if (kind == Bytes || (kind == Scrap && chance(0.5))) {
            ptr = randomBytes(argument, size);
            const int first = static_cast<int>(below(140)) - 2; // a MIDI record's index asked
            std::memcpy(ptr, &first, sizeof first);
        } else if (kind == Text || kind == ProgramName) {
            // A program name is copied up to 24 characters; at 24 the host need not terminate.
            const size_t length = below(size + 1);
            const bool terminated = length < size || kind == Text || chance(0.5);
            auto* text = reinterpret_cast<char*>(argument.place(length + terminated));
            std::generate_n(text, length, [&] { return static_cast<char>(' ' + below(95)); });
            if (terminated)
                text[length] = 0;
            ptr = text;
        } else if (kind == PointerSlot) {
            ptr = std::memset(argument.place(size), 0, size);
        }
        if (opcode == effGetSpeakerArrangement)
            value = reinterpret_cast<VstIntPtr>(randomBytes(second, size));
        if (opcode == effSetChunk)
            value = static_cast<VstIntPtr>(size);

        call("dispatcher(opcode %d, index %d, value %" PRIdPTR ", ptr %p, opt %a)\n", opcode,
             index, value, ptr, static_cast<double>(opt));
        const VstIntPtr result = effect->dispatcher(effect, opcode, index, value, ptr, opt);
        if (opcode == effClose) {
            effect = nullptr; // the record is gone; the next call makes a new effect
            return true;
        }
        if (!argument.canaryIntact() || !second.canaryIntact())
            return fail("wrote outside a buffer it was given");
        return kind != PointerSlot || result == 0 || *static_cast<void**>(ptr) ||
               fail("answered true but stored a null pointer");
    }

    bool parameter(bool set)
    {
        const auto index = static_cast<VstInt32>(randomNumber());
        if (set) {
            const float value = randomFloat();
            call("setParameter(%d, %a)\n", index, static_cast<double>(value));
            effect->setParameter(effect, index, value);
            return true;
        }
        call("getParameter(%d)\n", index);
        return effect->getParameter(effect, index) == 0.0f || (index >= 0 && index <= 5) ||
               fail("a parameter that does not exist read other than 0");
    }

    bool process()
    {
        constexpr VstInt32 common[] = {1, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192};
        const uint32_t pick = below(100);
        const VstInt32 frames = pick < 50 ? pickFrom(common)
                                : pick < 98 ? static_cast<VstInt32>(below(kMaxFrames)) + 1
                                            : -static_cast<VstInt32>(below(3));
        const bool finite = chance(0.95);
        const int out = chance(0.3) ? 0 : 2; // 0: in place
        const size_t samples = frames > 0 ? frames : 64;
        float* channel[4];
        for (int c = 0; c < 4; ++c) {
            channel[c] = reinterpret_cast<float*>(channels[c].place(samples * sizeof(float)));
            std::memcpy(channel[c], pool.data() + below(kPoolSize), samples * sizeof(float));
            for (size_t k = 0, spoilt = finite ? 0 : 1 + samples / 64; k < spoilt; ++k)
                channel[c][below(samples)] = std::bit_cast<float>( // an infinity or a quiet NaN
                    0x7F800000u | below(2) << 22 | below(2) << 31);
            std::copy_n(channel[c], samples, before.begin() + c * kMaxFrames);
        }
        call("processReplacing(%d frames, %s, %s input)\n", frames,
             out ? "separate buffers" : "in place", finite ? "finite" : "non-finite");
        effect->processReplacing(effect, channel, channel + out, frames);
        for (int c = 0; c < 4; ++c) {
            if (!channels[c].canaryIntact())
                return fail("wrote outside an audio buffer");
            const bool output = frames > 0 && c >= out && c < out + 2;
            if (output && finite && !std::all_of(channel[c], channel[c] + frames,
                                                 [](float x) { return std::isfinite(x); }))
                return fail("turned finite input into a non-finite output");
            if (!output && std::memcmp(before.data() + c * kMaxFrames, channel[c],
                                       samples * sizeof(float)) != 0)
                return fail("changed a buffer it must leave alone");
        }
        return true;
    }

    static constexpr uint32_t kPoolSize = 1 << 16;
    const VstModule& module;
    std::mt19937_64 random;
    std::vector<float> pool = std::vector<float>(kMaxFrames + kPoolSize);
    std::vector<float> before = std::vector<float>(4 * kMaxFrames);
    AEffect* effect = nullptr;
    uint64_t iteration = 0;
    GuardedBuffer argument{1}, second{1}, channels[4];
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
    if (!Fuzzer(module, seed).run(iterations))
        return 1;
    printf("hvt_dispatch_fuzz: seed %" PRIu64 ", %" PRIu64 " calls: no fault found\n", seed,
           iterations);
    return 0;
}
