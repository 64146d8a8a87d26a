// Real Linux hosts from Debian load the built module: Ardour, Qtractor and MusE scan it with
// their own scanners, as when a user adds a plug-in folder, and Ardour runs it headless in a
// session whose export must equal hvtremolo-render's bit for bit.
#include <gtest/gtest.h>

#include "tests/realhost/ArdourSupport.h"

namespace {

constexpr auto npos = std::string::npos;

TEST(RealHostScan, ArdourQtractorAndMuseSeeTheModule)
{
    const Scratch home;
    const std::string environment = install(home);
    const std::pair<std::string, std::vector<std::string>> hosts[] = {
        // Ardour reads the cache file its scanner writes.
        {kArdourScan + " >&2 && cat .cache/ardour7/vst/*.v2i",
         {"<VST2Info id=\"1213617208\" name=\"HvTremolo 32-Bit\" creator=\"Halvo Music\" "
          "category=\"Effect\" version=\"\" n_inputs=\"2\" n_outputs=\"2\" n_midi_inputs=\"0\" "
          "n_midi_outputs=\"0\" is_instrument=\"0\" can_process_replace=\"1\" has_editor=\"1\"/>"}},
        // name|audio in:out|MIDI in:out|controls in:out|flags|file|index|unique id
        {"echo \"VST:$HOME/vst/HvTremolo.so\" | " + quote(HVT_QTRACTOR_SCAN),
         {"VST|HvTremolo 32-Bit|2:2|0:0|6:0|GUI,RT|" + home / "vst/HvTremolo.so|0|0x48565438\n"}},
        // MusE's scanner adds to a file that must exist; type 16 is Linux VST, -p lists ports.
        {": >scan.xml && " + quote(HVT_MUSE_SCAN) +
             " -t 16 -f \"$HOME/vst/HvTremolo.so\" -o scan.xml -p >&2 && cat scan.xml",
         {"<uniqueID>1213617208<", "<name>HvTremolo 32-Bit<", "<description>Halvo&apos;s Tremolo<",
          "<maker>Halvo Music<", "<apiVersionMajor>2400<", "<pluginVersionMinor>1000<",
          "<pluginFlags>1<", "<inports>2<", "<outports>2<", "<ctlInports>6<",
          "\"Tremolo Depth\"", "\"Tremolo Speed\"", "\"Stereo Panner\"", "\"Panner Speed\"",
          "\"Mix\"", "\"Sample Rate\""}},
    };
    for (const auto& [command, expected] : hosts) {
        SCOPED_TRACE(command);
        const Ran scan = shell(environment + command);
        EXPECT_EQ(scan.status, 0) << scan.err << "(apt-get install ardour qtractor muse)";
        for (const std::string& text : expected)
            EXPECT_NE(scan.out.find(text), npos) << text << "\n" << scan.out;
    }
}

TEST(ArdourSession, ExportEqualsOurHostBitForBitAndTheSavedSessionSoundsTheSame)
{
    const Scratch home;
    const std::string environment = install(home);
    const std::string scripts = quote(HVT_ARDOUR_SCRIPTS);
    // A session loads only plug-ins that were scanned, and Ardour trusts a scan only if its
    // cache is newer than the module by a second.
    const Ran scan = shell(environment + "install -Dt .config/ardour7/scripts " + scripts +
                           "/hvt_test_signal.lua && install -Dt .config/ardour7/export " + scripts +
                           "/hvt-float-wav.preset && touch -d '-1 minute' vst/HvTremolo.so && " +
                           kArdourScan);
    ASSERT_EQ(scan.status, 0) << scan.err;

    constexpr size_t kStart = 22050, kLength = 3 * 44100; // as in the Lua scripts
    const std::string session = environment + quote(HVT_ARDOUR_LUA) + " " + scripts +
                                "/session.lua session export " + std::to_string(kLength);
    // Speeds whose steps are not whole numbers, so that the phases carry rounded fractions.
    const Ran made = runArdour(session + " 0.9 0.37 0.7 0.61 0.85",
                               {home / "session", home / "export"});
    ASSERT_EQ(made.status, 0) << made.out << made.err;
    const Sound dry = readSound(home / "export/dry.wav");
    const Sound wet = readSound(home / "export/wet.wav");
    ASSERT_EQ(dry.samples.size(), 2 * (kStart + kLength));
    ASSERT_EQ(wet.samples.size(), dry.samples.size());
    EXPECT_NE(dry.samples[2 * kStart], 0.0f); // else the comparison below would prove nothing

    ASSERT_TRUE(writeSound(home / "signal.wav",
                           {.samples = {dry.samples.begin() + 2 * kStart, dry.samples.end()}}));
    const Ran ours = shell(environment + quote(HVT_RENDER_PROGRAM) +
                           " --quiet --plugin vst/HvTremolo.so --param 0=0.9 --param 1=0.37"
                           " --param 2=0.7 --param 3=0.61 --param 4=0.85 signal.wav ours.wav");
    ASSERT_EQ(ours.status, 0) << ours.err;
    EXPECT_EQ(firstDifference(readSound(home / "ours.wav").samples,
                              {wet.samples.begin() + 2 * kStart, wet.samples.end()}),
              npos);

    // A fresh instance in a new process, set from the session file alone.
    const Ran reloaded = runArdour(session, {home / "export/reloaded.wav"});
    ASSERT_EQ(reloaded.status, 0) << reloaded.out << reloaded.err;
    EXPECT_EQ(firstDifference(readSound(home / "export/reloaded.wav").samples, wet.samples), npos);
}

} // namespace
