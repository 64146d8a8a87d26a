// Three Linux hosts from Debian scan the built module with their own scanner programs, exactly as
// they do when a user adds a plug-in folder, and report what they read from it. Each host reads a
// different selection of the module's answers; together they cover name, vendor, product, unique
// id, version, channels, parameters and the editor flag. The programs are checked in Ardour's
// session test, where Ardour lists them as presets.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/realhost/RealHostSupport.h"

namespace {

const std::string kUniqueId = "1213617208"; // 'HVT8'

// The module as a user installs it: one file in a folder of its own.
std::filesystem::path installModule(const ScratchDirectory& scratch)
{
    const std::filesystem::path folder = scratch.path() / "vst";
    std::filesystem::create_directories(folder);
    const std::filesystem::path module = folder / "HvTremolo.so";
    std::filesystem::copy_file(HVT_MODULE_PATH, module);
    return module;
}

TEST(RealHostScan, ardourReadsIdentityChannelsAndEditor)
{
    const std::string scanner = HVT_ARDOUR_VST_SCANNER;
    ASSERT_TRUE(isExecutable(scanner)) << "ardour-vst-scanner not found: apt-get install ardour";
    ScratchDirectory scratch;
    const auto module = installModule(scratch);

    // The scanner links Ardour's private libraries, which live beside it.
    const std::string libraries = std::filesystem::path(scanner).parent_path().string();
    const CommandResult scan =
        runCommand("HOME=" + quoted(scratch.path().string()) + " LD_LIBRARY_PATH=" +
                   quoted(libraries) + " " + quoted(scanner) + " -f " + quoted(module.string()));
    ASSERT_EQ(scan.exitCode, 0) << scan.output;

    // What Ardour itself reads later is the cache file the scanner wrote.
    std::string cache;
    const auto cacheFolder = scratch.path() / ".cache" / "ardour7" / "vst";
    ASSERT_TRUE(std::filesystem::is_directory(cacheFolder)) << scan.output;
    for (const auto& entry : std::filesystem::directory_iterator(cacheFolder))
        if (entry.path().extension() == ".v2i")
            cache = readTextFile(entry.path());
    ASSERT_NE(cache.find("<VST2Info"), std::string::npos) << "no plug-in in the cache:\n" << cache;

    EXPECT_EQ(attributeValue(cache, "id"), kUniqueId);
    EXPECT_EQ(attributeValue(cache, "name"), "HvTremolo 32-Bit");
    EXPECT_EQ(attributeValue(cache, "creator"), "Halvo Music");
    EXPECT_EQ(attributeValue(cache, "category"), "Effect");
    EXPECT_EQ(attributeValue(cache, "n_inputs"), "2");
    EXPECT_EQ(attributeValue(cache, "n_outputs"), "2");
    EXPECT_EQ(attributeValue(cache, "n_midi_inputs"), "0");
    EXPECT_EQ(attributeValue(cache, "is_instrument"), "0");
    EXPECT_EQ(attributeValue(cache, "can_process_replace"), "1");
    EXPECT_EQ(attributeValue(cache, "has_editor"), "1");
}

TEST(RealHostScan, qtractorReadsNameChannelsParametersEditorAndId)
{
    const std::string scanner = HVT_QTRACTOR_SCAN;
    ASSERT_TRUE(isExecutable(scanner)) << "qtractor_plugin_scan not found: apt-get install qtractor";
    ScratchDirectory scratch;
    const auto module = installModule(scratch);

    // Qtractor's scanner reads "TYPE:file" requests on its input and answers one line each:
    // VST|name|audio in:out|MIDI in:out|controls in:out|flags|file|index|unique id
    const CommandResult scan = runCommand("HOME=" + quoted(scratch.path().string()) +
                                          " echo " + quoted("VST:" + module.string()) + " | " +
                                          quoted(scanner));
    ASSERT_EQ(scan.exitCode, 0) << scan.output;
    const auto answers = linesStartingWith(scan.output, "VST|");
    ASSERT_EQ(answers.size(), 1u) << scan.output;

    char hexId[16];
    snprintf(hexId, sizeof hexId, "0x%08x", static_cast<unsigned>(std::stoul(kUniqueId)));
    EXPECT_EQ(answers[0], "HvTremolo 32-Bit|2:2|0:0|6:0|GUI,RT|" + module.string() + "|0|" +
                              std::string(hexId));
}

TEST(RealHostScan, museReadsIdentityVersionChannelsParameterNamesAndEditor)
{
    const std::string scanner = HVT_MUSE_SCAN;
    ASSERT_TRUE(isExecutable(scanner)) << "muse_plugin_scan not found: apt-get install muse";
    ScratchDirectory scratch;
    const auto module = installModule(scratch);

    // MusE's scanner appends to an existing file; type 16 is Linux VST, -p lists the ports.
    const auto report = scratch.path() / "scan.xml";
    { std::ofstream create(report); }
    const CommandResult scan = runCommand(
        "HOME=" + quoted(scratch.path().string()) + " " + quoted(scanner) + " -t 16 -f " +
        quoted(module.string()) + " -o " + quoted(report.string()) + " -p");
    ASSERT_EQ(scan.exitCode, 0) << scan.output;
    const std::string xml = readTextFile(report);
    ASSERT_NE(xml.find("<plugin "), std::string::npos) << "MusE found no plug-in:\n" << scan.output;

    EXPECT_EQ(elementText(xml, "name"), "HvTremolo 32-Bit");
    EXPECT_EQ(elementText(xml, "maker"), "Halvo Music");
    EXPECT_EQ(elementText(xml, "description"), "Halvo&apos;s Tremolo");
    EXPECT_EQ(elementText(xml, "uniqueID"), kUniqueId);
    EXPECT_EQ(elementText(xml, "apiVersionMajor"), "2400");
    EXPECT_EQ(elementText(xml, "pluginVersionMinor"), "1000"); // where MusE keeps the vendor version
    EXPECT_EQ(elementText(xml, "inports"), "2");
    EXPECT_EQ(elementText(xml, "outports"), "2");
    EXPECT_EQ(elementText(xml, "ctlInports"), "6");
    EXPECT_EQ(elementText(xml, "pluginFlags"), "1"); // MusE's "has GUI"
    for (const char* name : {"Tremolo Depth", "Tremolo Speed", "Stereo Panner", "Panner Speed",
                             "Mix", "Sample Rate"})
        EXPECT_NE(xml.find("<port name=\"" + std::string(name) + "\""), std::string::npos) << name;
}

} // namespace
