// The LV2 edition through lilv, as a host finds and runs it: the description it reads, the presets
// it restores, and audio bit for bit equal to the VST module's at every block size, in place or
// not, whatever the host's rate and whatever the controls hold.
#include <gtest/gtest.h>

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>

#include "engine/FactoryPrograms.h"
#include "tests/lv2/LilvHost.h"

namespace {

using lilv_host::Instance;
using lilv_host::World;
using test_host::StereoBuffer;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr size_t kFrames = 40000; // several cycles of every oscillator but the slowest

World& world()
{
    static World shared;
    return shared;
}

// The module with parameters 0 to 5 set to values, in 512-frame blocks.
StereoBuffer renderModule(const std::array<float, 6>& values, const StereoBuffer& input)
{
    auto effect = test_host::createEffect();
    for (int parameter = 0; parameter < 6; ++parameter)
        effect->setParameter(parameter, values[parameter]);
    return test_host::process(*effect, input, 512);
}

StereoBuffer renderLv2(const std::array<float, 6>& values, const StereoBuffer& input,
                       size_t block = 512, bool inPlace = false, double rate = 44100.0)
{
    Instance instance(world(), rate);
    EXPECT_TRUE(instance.ok());
    if (!instance.ok())
        return StereoBuffer(0);
    for (int parameter = 0; parameter < 6; ++parameter)
        instance.setControl(parameter, values[parameter]);
    return instance.process(input, block, inPlace);
}

std::string text(const LilvNode* node)
{
    return node ? lilv_node_as_string(node) : "(none)";
}

float floatOf(const LilvNode* node)
{
    return node ? lilv_node_as_float(node) : kNaN;
}

TEST(Lv2Description, NamesThePluginItsPortsAndItsUiAsHostsShowThem)
{
    const LilvPlugin* plugin = world().plugin();
    ASSERT_TRUE(plugin) << "no urn:halvo:hvtremolo under " << lilv_host::lv2Path();
    LilvNode* name = lilv_plugin_get_name(plugin);
    LilvNode* author = lilv_plugin_get_author_name(plugin);
    EXPECT_EQ(text(name), "HvTremolo");
    EXPECT_EQ(text(author), "Halvo Music");
    lilv_node_free(name);
    lilv_node_free(author);
    EXPECT_EQ(text(lilv_plugin_class_get_uri(lilv_plugin_get_class(plugin))),
              LV2_CORE__ModulatorPlugin);
    EXPECT_TRUE(lilv_plugin_verify(plugin));
    LilvNodes* required = lilv_plugin_get_required_features(plugin);
    EXPECT_EQ(lilv_nodes_size(required), 0u);
    lilv_nodes_free(required);
    LilvNode* hardRT = world().uri(LV2_CORE__hardRTCapable);
    EXPECT_TRUE(lilv_plugin_has_feature(plugin, hardRT));
    lilv_node_free(hardRT);
    for (const auto& [predicate, expected] :
         {std::pair{LV2_CORE__minorVersion, HVT_VERSION_MINOR},
          std::pair{LV2_CORE__microVersion, HVT_VERSION_MICRO}}) {
        LilvNode* property = world().uri(predicate);
        LilvNode* value = lilv_world_get(world().world(), lilv_plugin_get_uri(plugin), property, nullptr);
        EXPECT_TRUE(value && lilv_node_is_int(value) && lilv_node_as_int(value) == expected)
            << predicate << " " << text(value);
        lilv_node_free(value);
        lilv_node_free(property);
    }

    struct Expected {
        const char* symbol;
        const char* name; // for the controls
        bool input = false, audio = false;
        float minimum = 0.0f, maximum = 0.0f, defaultValue = kNaN;
    };
    const Expected ports[] = {
        {"in_l", nullptr, true, true},
        {"in_r", nullptr, true, true},
        {"out_l", nullptr, false, true},
        {"out_r", nullptr, false, true},
        {"tremolo_depth", "Tremolo Depth", true, false, 0.0f, 1.0f, 0.634999f},
        {"tremolo_speed", "Tremolo Speed", true, false, 0.0f, 1.0f, 0.174999f},
        {"stereo_panner", "Stereo Panner", true, false, 0.0f, 1.0f, 0.0f},
        {"panner_speed", "Panner Speed", true, false, 0.0f, 1.0f, 0.0f},
        {"mix", "Mix", true, false, 0.0f, 1.0f, 1.0f},
        {"sample_rate", "Sample Rate", true, false, 0.0f, 10.0f, 0.0f},
        {"tuning", "Tuning", false, false, 7.0f, 10.0f, kNaN},
    };
    ASSERT_EQ(lilv_plugin_get_num_ports(plugin), std::size(ports));
    LilvNode* inputClass = world().uri(LV2_CORE__InputPort);
    LilvNode* audioClass = world().uri(LV2_CORE__AudioPort);
    LilvNode* controlClass = world().uri(LV2_CORE__ControlPort);
    for (uint32_t index = 0; index < std::size(ports); ++index) {
        const Expected& expected = ports[index];
        SCOPED_TRACE(expected.symbol);
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, index);
        EXPECT_EQ(text(lilv_port_get_symbol(plugin, port)), expected.symbol);
        EXPECT_EQ(lilv_port_is_a(plugin, port, inputClass), expected.input);
        EXPECT_EQ(lilv_port_is_a(plugin, port, audioClass), expected.audio);
        EXPECT_EQ(lilv_port_is_a(plugin, port, controlClass), !expected.audio);
        if (expected.audio)
            continue;
        LilvNode* portName = lilv_port_get_name(plugin, port);
        EXPECT_EQ(text(portName), expected.name);
        lilv_node_free(portName);
        LilvNode *defaultValue = nullptr, *minimum = nullptr, *maximum = nullptr;
        lilv_port_get_range(plugin, port, &defaultValue, &minimum, &maximum);
        EXPECT_EQ(floatOf(minimum), expected.minimum);
        EXPECT_EQ(floatOf(maximum), expected.maximum);
        if (!std::isnan(expected.defaultValue)) { // the exact float of program 0
            EXPECT_EQ(floatOf(defaultValue), expected.defaultValue);
        }
        lilv_node_free(defaultValue);
        lilv_node_free(minimum);
        lilv_node_free(maximum);
    }

    // The rate choice and the tuning in use: whole numbers with named values.
    const std::map<float, std::string> rates = {
        {7.0f, "44.1 kHz"}, {8.0f, "48 kHz"}, {9.0f, "88.2 kHz"}, {10.0f, "96 kHz"}};
    for (uint32_t index : {9u, 10u}) {
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, index);
        for (const char* property : {LV2_CORE__integer, LV2_CORE__enumeration}) {
            LilvNode* node = world().uri(property);
            EXPECT_TRUE(lilv_port_has_property(plugin, port, node)) << index << " " << property;
            lilv_node_free(node);
        }
        std::map<float, std::string> expected = rates;
        if (index == 9)
            expected[0.0f] = "Session rate";
        std::map<float, std::string> shown;
        LilvScalePoints* points = lilv_port_get_scale_points(plugin, port);
        LILV_FOREACH (scale_points, i, points) {
            const LilvScalePoint* point = lilv_scale_points_get(points, i);
            shown[floatOf(lilv_scale_point_get_value(point))] =
                text(lilv_scale_point_get_label(point));
        }
        lilv_scale_points_free(points);
        EXPECT_EQ(shown, expected) << "port " << index;
    }
    lilv_node_free(inputClass);
    lilv_node_free(audioClass);
    lilv_node_free(controlClass);

    LilvUIs* uis = lilv_plugin_get_uis(plugin);
    ASSERT_EQ(lilv_uis_size(uis), 1u);
    const LilvUI* ui = lilv_uis_get(uis, lilv_uis_begin(uis));
    EXPECT_EQ(text(lilv_ui_get_uri(ui)), "urn:halvo:hvtremolo#ui");
    LilvNode* x11 = world().uri(LV2_UI__X11UI);
    EXPECT_TRUE(lilv_ui_is_a(ui, x11));
    lilv_node_free(x11);
    char* binary = lilv_file_uri_parse(lilv_node_as_uri(lilv_ui_get_binary_uri(ui)), nullptr);
    EXPECT_EQ(std::string(binary), std::string(HVT_LV2_DIR) + "/HvTremolo.lv2/HvTremolo_ui.so");
    lilv_free(binary);
    lilv_uis_free(uis);
}

TEST(Lv2Presets, AreTheTenFactoryProgramsWithTheirExactValues)
{
    const auto presets = world().presets();
    ASSERT_EQ(presets.size(), 10u);
    const char* symbols[] = {"tremolo_depth", "tremolo_speed", "stereo_panner", "panner_speed",
                             "mix"};
    for (int program = 0; program < kNumPrograms; ++program) {
        const std::string uri = "urn:halvo:hvtremolo#program-" + std::to_string(program);
        SCOPED_TRACE(uri);
        const auto preset = std::find_if(presets.begin(), presets.end(),
                                         [&](const auto& p) { return p.uri == uri; });
        ASSERT_NE(preset, presets.end());
        EXPECT_EQ(preset->label, factoryProgram(program).name);
        // The tuning is no part of a program, as in the module.
        ASSERT_EQ(preset->values.size(), 5u);
        for (int parameter = 0; parameter < 5; ++parameter) {
            const float value = preset->values.at(symbols[parameter]);
            const float expected = factoryValue(program, parameter);
            EXPECT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << symbols[parameter];
        }
    }
}

// Each program as a host applies the preset, with each rate choice in turn, and one setting whose
// speeds step by fractions no program uses.
std::vector<std::array<float, 6>> settingsToRender()
{
    std::vector<std::array<float, 6>> settings;
    for (const auto& preset : world().presets()) {
        const int program = std::stoi(preset.uri.substr(preset.uri.rfind('-') + 1));
        settings.push_back({preset.values.at("tremolo_depth"), preset.values.at("tremolo_speed"),
                            preset.values.at("stereo_panner"), preset.values.at("panner_speed"),
                            preset.values.at("mix"), static_cast<float>(7 + program % 4)});
    }
    settings.push_back({0.9f, 0.37f, 0.7f, 0.61f, 0.85f, 9.0f});
    return settings;
}

TEST(Lv2Render, EqualsTheModuleBitForBitAtEveryBlockSizeInPlaceOrNot)
{
    const StereoBuffer input = test_host::testSignal(kFrames, 7);
    const auto settings = settingsToRender();
    ASSERT_EQ(settings.size(), 11u);
    for (const auto& values : settings) {
        const StereoBuffer expected = renderModule(values, input);
        for (size_t block : {1, 64, 256, 4096})
            for (bool inPlace : {false, true})
                EXPECT_TRUE(test_host::sameAudio(renderLv2(values, input, block, inPlace), expected))
                    << "block " << block << (inPlace ? " in place" : "") << ", speeds "
                    << values[1] << " " << values[3] << ", choice " << values[5];
    }
}

TEST(Lv2Render, SessionRateTunesForTheNearestRateAndAChoiceOverridesIt)
{
    const StereoBuffer input = test_host::testSignal(20000, 3);
    struct Case {
        double hostRate;
        float port9;
        int32_t tuning;
    };
    const Case cases[] = {
        {44100, 0, 7}, {48000, 0, 8}, {88200, 0, 9}, {96000, 0, 10},
        {22050, 0, 7}, {192000, 0, 10}, {46050, 0, 7}, {46051, 0, 8}, {8000, 0, 7},
        // Anything but 7 to 10 is "Session rate".
        {48000, 3, 8}, {48000, 11, 8}, {48000, -7, 8}, {96000, kNaN, 10}, {96000, kInf, 10},
        {96000, 6.99f, 10},
        // A choice holds whatever the host's rate; the whole part counts, as in the module.
        {48000, 7, 7}, {44100, 10, 10}, {96000, 8, 8}, {44100, 9.5f, 9}, {44100, 10.9f, 10},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.hostRate << " Hz, port 9 at " << c.port9);
        std::array<float, 6> values = {0.8f, 0.45f, 0.9f, 0.3f, 0.75f, c.port9};
        Instance instance(world(), c.hostRate);
        ASSERT_TRUE(instance.ok());
        for (int parameter = 0; parameter < 6; ++parameter)
            instance.setControl(parameter, values[parameter]);
        const StereoBuffer output = instance.process(input, 256, false);
        EXPECT_EQ(instance.tuning(), static_cast<float>(c.tuning));
        values[5] = static_cast<float>(c.tuning);
        EXPECT_TRUE(test_host::sameAudio(output, renderModule(values, input)));
    }
}

TEST(Lv2Render, BadControlsGiveTheModulesAnswerAndNeverTurnFiniteAudioIntoNaN)
{
    const StereoBuffer input = test_host::testSignal(9000, 5);
    const std::array<float, 6> settings[] = {
        {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN},
        {kInf, kInf, kInf, kInf, kInf, kInf},
        {-kInf, 0.5f, -kInf, 0.5f, -kInf, -kInf},
        {1e30f, 1e30f, 1e30f, 1e30f, 1e30f, 1e30f},
        {-1e30f, -1e30f, 2.0f, -3.0f, 50.0f, 7.0f},
        {1.0f, kInf, 1.0f, kNaN, 1.0f, 10.0f},
    };
    for (const auto& values : settings) {
        SCOPED_TRACE(testing::Message() << values[0] << " " << values[1] << " " << values[2]
                                        << " " << values[3] << " " << values[4] << " " << values[5]);
        const StereoBuffer output = renderLv2(values, input, 100);
        bool finite = true;
        for (size_t i = 0; i < output.left.size(); ++i)
            finite = finite && std::isfinite(output.left[i]) && std::isfinite(output.right[i]);
        EXPECT_TRUE(finite);
        // At 44.1 kHz "Session rate" is the module's 44.1 kHz tuning, which it also uses for any
        // rate choice it does not know.
        EXPECT_TRUE(test_host::sameAudio(output, renderModule(values, input)));
    }
}

TEST(Lv2Instance, RunsSafelyBeforeItsPortsAreConnectedAndUsesTheDefaultsForMissingControls)
{
    const LilvPlugin* plugin = world().plugin();
    ASSERT_TRUE(plugin);
    LilvInstance* instance = lilv_plugin_instantiate(plugin, 44100.0, nullptr);
    ASSERT_TRUE(instance);
    lilv_instance_activate(instance);
    lilv_instance_run(instance, 64); // nothing connected
    StereoBuffer input = test_host::testSignal(5000, 9);
    StereoBuffer output(input.left.size());
    lilv_instance_connect_port(instance, 0, input.left.data());
    lilv_instance_connect_port(instance, 2, output.left.data());
    lilv_instance_run(instance, 64); // half the audio
    EXPECT_EQ(output.left[0], 0.0f);
    lilv_instance_connect_port(instance, 1, input.right.data());
    lilv_instance_connect_port(instance, 3, output.right.data());
    lilv_instance_run(instance, static_cast<uint32_t>(input.left.size()));
    lilv_instance_deactivate(instance);
    lilv_instance_free(instance);
    // Without a single control: program 0 at the session's rate.
    std::array<float, 6> program0{};
    for (int parameter = 0; parameter < 5; ++parameter)
        program0[parameter] = factoryValue(0, parameter);
    program0[5] = 7.0f;
    EXPECT_TRUE(test_host::sameAudio(output, renderModule(program0, input)));
}

TEST(Lv2Instance, ActivateStartsTheOscillatorsWhereANewInstanceDoes)
{
    const StereoBuffer input = test_host::testSignal(6000, 11);
    Instance instance(world(), 44100.0);
    ASSERT_TRUE(instance.ok());
    instance.setControl(3, 0.7f);
    instance.setControl(2, 1.0f);
    const StereoBuffer first = instance.process(input, 512, false);
    lilv_instance_deactivate(instance.lilv());
    lilv_instance_activate(instance.lilv());
    EXPECT_TRUE(test_host::sameAudio(instance.process(input, 333, false), first));
}

} // namespace
