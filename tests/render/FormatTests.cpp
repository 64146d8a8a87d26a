// Output formats: chosen from the extension (or --type), the input's sample format kept (or
// --bits), tags kept; `-` both ways; and outputs past 4 GiB, which WAV can only hold as RF64.
#include <gtest/gtest.h>

#include "tests/render/RenderSupport.h"
#include "tools/render/OutputFormat.h"

namespace {

constexpr int kPcm16Wav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
const Tags kTags = {{SF_STR_TITLE, "Night Train"}, {SF_STR_ARTIST, "The Halvos"},
                    {SF_STR_COMMENT, "take 3"}};

// The inputs every row may use, made once per folder.
void makeInputs(const Scratch& dir)
{
    ASSERT_TRUE(writeSoundWith(dir / "in16.wav", tone(44100, 2, kPcm16Wav), kTags));
    ASSERT_TRUE(writeSoundWith(dir / "in24.flac", tone(44100, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_24),
                               kTags));
    ASSERT_TRUE(writeSoundWith(dir / "in32.aiff", tone(44100, 2, SF_FORMAT_AIFF | SF_FORMAT_PCM_32)));
    ASSERT_TRUE(writeSoundWith(dir / "infloat.wav", tone(44100, 2, kFloatWav), kTags));
    ASSERT_TRUE(writeSoundWith(dir / "in.ogg", tone(44100, 2, SF_FORMAT_OGG | SF_FORMAT_VORBIS),
                               kTags));
    // Twice full scale: an integer output must clip it, never wrap.
    Sound loud = tone(44100, 2, kFloatWav);
    for (float& sample : loud.samples)
        sample *= 2.0f;
    ASSERT_TRUE(writeSoundWith(dir / "loud.wav", loud));
}

TEST(RenderFormats, EachFormatReadsBackWithTheBitsAskedForAndTheTagsItHolds)
{
    struct Row {
        std::string arguments;
        std::string output;
        int format;       // read back
        bool tags;        // the input's tags kept
        std::string note; // in standard error
    };
    const Row rows[] = {
        {"in16.wav", "out.wav", kPcm16Wav, true, "(WAV, 16-bit)"},
        {"in16.wav", "OUT.WAV", kPcm16Wav, true, ""},
        {"in16.wav", "out.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, true, "(FLAC, 16-bit)"},
        {"--bits 24 in16.wav", "out.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, true, ""},
        {"--bits float in16.wav", "out.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, true,
         "warning: FLAC cannot hold float samples; writing 24-bit"},
        {"infloat.wav", "out.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, true, ""},
        {"in16.wav", "out.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, true, "(OGG Vorbis)"},
        {"--bits 32 in16.wav", "out.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_32, true, ""},
        {"in16.wav", "out.aif", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, true, ""},
        {"--bits float in16.wav", "out.au", SF_FORMAT_AU | SF_FORMAT_FLOAT, false, ""},
        {"--bits 24 in16.wav", "out.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_24, false, ""},
        {"in16.wav", "out.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, true, ""},
        {"in16.wav", "out.caf", SF_FORMAT_CAF | SF_FORMAT_PCM_16, true, ""},
        {"in16.wav", "out.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, true, "(MP3)"},
        {"in24.flac", "out.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, true, ""},
        {"in32.aiff", "out.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_32, false, ""},
        {"infloat.wav", "out.caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT, true, ""},
        {"in.ogg", "out.wav", kFloatWav, true, "(WAV, float)"}, // lossy in: float out
        {"in16.wav", "noextension", kPcm16Wav, true, ""},
        {"--type flac in16.wav", "stream", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, true, ""},
        {"-t .caf --bits 16 infloat.wav", "out.wav", SF_FORMAT_CAF | SF_FORMAT_PCM_16, true, ""},
        {"--bits 16 loud.wav", "out.wav", kPcm16Wav, false, ""},
    };
    Scratch dir;
    makeInputs(dir);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments + " " + row.output);
        const Ran run = render(dir, row.arguments + " " + row.output);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find(row.note), npos) << run.err;
        const Sound output = readSound(dir / row.output);
        EXPECT_EQ(output.format, row.format) << std::hex << output.format;
        EXPECT_EQ(output.channels, 2);

        const std::string inputName = row.arguments.substr(row.arguments.rfind(' ') + 1);
        const Sound input = readSound(dir / inputName);
        const Tags tags = readTags(dir / row.output);
        for (const auto& [kind, text] : kTags) {
            const bool kept = tags.count(kind) && tags.at(kind) == text;
            EXPECT_EQ(kept, row.tags) << kind;
        }
        const bool lossy = (row.format & SF_FORMAT_SUBMASK) == SF_FORMAT_VORBIS ||
                           (row.format & SF_FORMAT_SUBMASK) == SF_FORMAT_MPEG_LAYER_III;
        if (lossy) {
            EXPECT_GE(output.samples.size(), input.samples.size() / input.channels * 2);
            continue;
        }
        // The module's float output, stored by libsndfile in the same format, with clipping.
        const std::vector<float> direct = renderDirectly(input, {512, -1, {{5, 7}}});
        ASSERT_TRUE(writeSoundWith(dir / ("expected-" + row.output), {44100, 2, row.format, direct}));
        EXPECT_EQ(firstDifference(output.samples, readSound(dir / ("expected-" + row.output)).samples),
                  npos);
        if (inputName == "loud.wav") {
            const auto [low, high] = std::minmax_element(output.samples.begin(), output.samples.end());
            EXPECT_EQ(std::pair(*low, *high), std::pair(-1.0f, 32767.0f / 32768.0f));
        }
    }
}

TEST(RenderFormats, AnUnknownExtensionIsRefusedWithTheListOfTheKnownOnes)
{
    Scratch dir;
    makeInputs(dir);
    const std::string before = listing(dir);
    for (const std::string output : {"out.mp4", "out.wave", "take.final"}) {
        const Ran run = render(dir, "in16.wav " + output);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find("unknown extension"), npos) << run.err;
        EXPECT_NE(run.err.find("wav, flac, ogg, aiff, aif, au, w64, rf64, caf"), npos) << run.err;
        EXPECT_EQ(listing(dir), before);
    }
}

TEST(RenderPipes, DashReadsStandardInputAndWritesStandardOutput)
{
    Scratch dir;
    makeInputs(dir);
    ASSERT_EQ(render(dir, "-q in16.wav reference.wav").status, 0);
    ASSERT_EQ(render(dir, "-q in24.flac reference24.wav").status, 0);
    ASSERT_EQ(render(dir, "-q in.ogg referenceogg.wav").status, 0);
    ASSERT_EQ(render(dir, "-q in16.wav reference.flac").status, 0);
    const std::string R = renderCommand();
    const std::pair<std::string, std::string> rows[] = {
        // A pipe reader takes the WAV stream.
        {"cat in16.wav | " + R + " - - | sox -t wav - got.wav", "reference.wav"},
        {R + " in16.wav - | sox -t wav - got.wav", "reference.wav"},
        {"cat in16.wav | " + R + " -q - got.wav", "reference.wav"},
        // FLAC and OGG need seeking: piped in, they are read whole first.
        {"cat in24.flac | " + R + " -q - - >got.wav", "reference24.wav"},
        {"cat in.ogg | " + R + " -q - got.wav", "referenceogg.wav"},
        {R + " -q --type flac in16.wav - | cat >got.flac", "reference.flac"},
    };
    for (const auto& [line, reference] : rows) {
        SCOPED_TRACE(line);
        std::filesystem::remove(dir / "got.wav");
        std::filesystem::remove(dir / "got.flac");
        const Ran run = inFolder(dir, line);
        ASSERT_EQ(run.status, 0) << run.err;
        const std::string got = line.find("got.flac") != npos ? "got.flac" : "got.wav";
        const Sound output = readSound(dir / got), expected = readSound(dir / reference);
        EXPECT_EQ(output.channels, 2);
        EXPECT_EQ(firstDifference(output.samples, expected.samples), npos);
    }
    // Standard input that is a terminal, or standard output that is one, is refused.
    const Ran toTerminal = inFolder(dir, "script -qec '" + R + " in16.wav -' /dev/null");
    EXPECT_NE(toTerminal.out.find("standard output, which is a terminal"), npos) << toTerminal.out;
}

TEST(RenderLargeOutput, WavChoosesRf64WhereItWouldPassFourGibibytes)
{
    // At the format level: the frame count decides, with room for the header and the tags.
    const Container& wav = *containerFor("wav");
    const Container& aiff = *containerFor("aiff");
    std::string error;
    const int64_t fits = kLargestPlainWavData / 8; // float stereo frames
    EXPECT_EQ(chooseFormat(wav, SampleBits::Float, false, 44100, fits, error)->format, kFloatWav);
    const auto big = chooseFormat(wav, SampleBits::Float, false, 44100, fits + 1, error);
    EXPECT_EQ(big->format, SF_FORMAT_RF64 | SF_FORMAT_FLOAT);
    EXPECT_TRUE(big->rf64AutoDowngrade);
    EXPECT_TRUE(chooseFormat(wav, SampleBits::Pcm16, false, 44100, -1, error)->rf64AutoDowngrade);
    EXPECT_EQ(chooseFormat(wav, SampleBits::Pcm16, false, 44100, 2 * fits, error)->format,
              kPcm16Wav);
    EXPECT_TRUE(chooseFormat(aiff, SampleBits::Pcm16, false, 44100, 2 * fits, error));
    // AU marks a size past 4 GiB as unknown, which readers read to the end: no limit.
    EXPECT_TRUE(chooseFormat(*containerFor("au"), SampleBits::Float, false, 44100, 0x40000000,
                             error));
    EXPECT_FALSE(chooseFormat(aiff, SampleBits::Float, false, 44100, 0x40000000, error));
    EXPECT_NE(error.find("AIFF cannot hold more than 4 GiB"), npos) << error;
}

TEST(RenderLargeOutput, AFileOfMoreThanFourGibibytesIsRf64AndReadsBackWhole)
{
    // 4.3 GB of float stereo, silent: the input and the output are sparse files, which take
    // almost no disk space and little time, but are read and written in full by the program.
    constexpr int64_t kFrames = 540000000;
    Scratch dir;
    ASSERT_TRUE(writeSilence(dir / "big.rf64", 44100, kFrames));
    ASSERT_TRUE(writeSilence(dir / "small.rf64", 44100, 1000));
    std::ofstream(dir / "big.aiff") << "an earlier render\n";
    struct Row {
        std::string arguments, output;
        int status;
        std::string head; // the file's first bytes
        int64_t frames;
    };
    const Row rows[] = {
        {"big.rf64 big.wav", "big.wav", 0, "RF64", kFrames},
        {"small.rf64 small.wav", "small.wav", 0, "RIFF", 1000},
        {"big.rf64 big.aiff", "big.aiff", 1, "an earlier render\n", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Ran run = render(dir, row.arguments, 300);
        EXPECT_EQ(run.status, row.status) << run.err;
        EXPECT_EQ(firstBytes(dir / row.output, row.head.size()), row.head);
        if (row.status != 0) {
            EXPECT_NE(run.err.find("AIFF cannot hold more than 4 GiB"), npos) << run.err;
            continue;
        }
        SF_INFO info{};
        SNDFILE* file = sf_open((dir / row.output).c_str(), SFM_READ, &info);
        ASSERT_TRUE(file);
        EXPECT_EQ(info.frames, row.frames);
        // The last frames are there and read.
        float last[8];
        EXPECT_EQ(sf_seek(file, row.frames - 2, SEEK_SET), row.frames - 2);
        EXPECT_EQ(sf_readf_float(file, last, 4), 2);
        sf_close(file);
        std::filesystem::remove(dir / row.output);
    }
}

} // namespace
