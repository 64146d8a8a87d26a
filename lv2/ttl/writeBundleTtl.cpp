// Writes the bundle's description at build time from the engine's parameter table and factory
// programs, so that names, ranges, defaults and presets cannot drift from the effect:
//   hvtremolo-lv2-ttl OUTPUT_DIR MINOR_VERSION MICRO_VERSION
// writes manifest.ttl, HvTremolo.ttl and presets.ttl into OUTPUT_DIR.
//
// Every float is printed with nine significant digits, which read back as the same float, so a
// preset or default sets exactly the value the module's program holds.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "engine/FactoryPrograms.h"
#include "lv2/Ports.h"

namespace {

using namespace lv2_ports;

constexpr const char* kPrefixes =
    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
    "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n"
    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
    "@prefix opts: <http://lv2plug.in/ns/ext/options#> .\n"
    "@prefix param: <http://lv2plug.in/ns/ext/parameters#> .\n"
    "@prefix pset: <http://lv2plug.in/ns/ext/presets#> .\n"
    "@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .\n"
    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
    "@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .\n"
    "@prefix urid: <http://lv2plug.in/ns/ext/urid#> .\n\n";

std::string number(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    if (std::strtof(text, nullptr) != value) { // no bundle rather than one that sets other values
        std::fprintf(stderr, "hvtremolo-lv2-ttl: %s does not read back exactly\n", text);
        std::exit(1);
    }
    std::string result = text;
    // A Turtle number with neither '.' nor exponent is an integer; keep them all decimals.
    if (result.find_first_of(".e") == std::string::npos)
        result += ".0";
    return result;
}

std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + "\"";
}

std::string presetUri(int program)
{
    return "<" + std::string(kPluginUri) + "#program-" + std::to_string(program) + ">";
}

// "44.1 kHz" for choice 7.
std::string rateLabel(int32_t choice)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g kHz",
                  static_cast<double>(kRateChoiceHz[choice - kFirstRateChoice]) / 1000.0);
    return text;
}

std::string scalePoint(const std::string& label, int32_t value)
{
    return "            [ rdfs:label " + quoted(label) + " ; rdf:value " + std::to_string(value) +
           " ]";
}

std::string rateScalePoints(bool withSession)
{
    std::string points = withSession ? scalePoint("Session rate", kSessionRate) + " ,\n" : "";
    for (int32_t choice = kFirstRateChoice; choice <= kLastRateChoice; ++choice)
        points += scalePoint(rateLabel(choice), choice) + (choice < kLastRateChoice ? " ,\n" : "");
    return points;
}

std::string audioPort(uint32_t index, const char* direction, const char* symbol, const char* name)
{
    return "        a lv2:" + std::string(direction) + "Port , lv2:AudioPort ;\n" +
           "        lv2:index " + std::to_string(index) + " ;\n        lv2:symbol " +
           quoted(symbol) + " ;\n        lv2:name " + quoted(name) + " ;\n";
}

std::string controlPort(int32_t parameter)
{
    const ParameterInfo& info = kParameterInfo[parameter];
    std::string port = "        a lv2:InputPort , lv2:ControlPort ;\n        lv2:index " +
                       std::to_string(portOfParameter(parameter)) + " ;\n        lv2:symbol " +
                       quoted(info.symbol) + " ;\n        lv2:name " + quoted(info.name) + " ;\n";
    if (parameter == kSampleRate)
        return port + "        lv2:portProperty lv2:integer , lv2:enumeration ;\n" +
               "        lv2:default " + std::to_string(kSessionRate) + " ;\n" +
               "        lv2:minimum " + std::to_string(kSessionRate) + " ;\n" +
               "        lv2:maximum " + std::to_string(kLastRateChoice) + " ;\n" +
               "        lv2:scalePoint\n" + rateScalePoints(true) + " ;\n";
    return port + "        lv2:default " + number(factoryValue(0, parameter)) + " ;\n" +
           "        lv2:minimum " + number(info.minimum) + " ;\n" + "        lv2:maximum " +
           number(info.maximum) + " ;\n";
}

std::string tuningPort()
{
    return "        a lv2:OutputPort , lv2:ControlPort ;\n        lv2:index " +
           std::to_string(kTuningPort) + " ;\n        lv2:symbol \"tuning\" ;\n" +
           "        lv2:name \"Tuning\" ;\n" +
           "        lv2:portProperty lv2:integer , lv2:enumeration ;\n" +
           "        lv2:minimum " + std::to_string(kFirstRateChoice) + " ;\n" +
           "        lv2:maximum " + std::to_string(kLastRateChoice) + " ;\n" +
           "        lv2:scalePoint\n" + rateScalePoints(false) + " ;\n";
}

std::string manifest()
{
    std::string text = kPrefixes;
    text += "<" + std::string(kPluginUri) + ">\n    a lv2:Plugin ;\n" +
            "    lv2:binary <HvTremolo_dsp.so> ;\n    rdfs:seeAlso <HvTremolo.ttl> .\n\n";
    text += "<" + std::string(kUiUri) + ">\n    a ui:X11UI ;\n" +
            "    ui:binary <HvTremolo_ui.so> ;\n    rdfs:seeAlso <HvTremolo.ttl> .\n";
    for (int program = 0; program < kNumPrograms; ++program)
        text += "\n" + presetUri(program) + "\n    a pset:Preset ;\n    lv2:appliesTo <" +
                kPluginUri + "> ;\n    rdfs:label " + quoted(factoryProgram(program).name) +
                " ;\n    rdfs:seeAlso <presets.ttl> .\n";
    return text;
}

std::string plugin(const std::string& minor, const std::string& micro)
{
    std::string text = kPrefixes;
    text += "<" + std::string(kPluginUri) + ">\n" +
            "    a lv2:Plugin , lv2:ModulatorPlugin ;\n" +
            "    doap:name \"HvTremolo\" ;\n" +
            "    rdfs:comment \"A stereo tremolo followed by an automatic stereo panner.\" ;\n" +
            // The maker as the project's maintainer, where lilv looks when the plug-in names
            // none: the schema lv2_validate checks against has no doap:maker.
            "    lv2:project [\n        a doap:Project ;\n        doap:name \"Halvo Music\" ;\n" +
            "        doap:maintainer [\n            a foaf:Organization ;\n" +
            "            foaf:name \"Halvo Music\"\n        ]\n    ] ;\n" +
            "    lv2:minorVersion " + minor + " ;\n    lv2:microVersion " + micro + " ;\n" +
            "    lv2:optionalFeature lv2:hardRTCapable ;\n" +
            "    ui:ui <" + kUiUri + "> ;\n    lv2:port [\n";
    const std::string ports[kNumPorts] = {
        audioPort(kInLeft, "Input", "in_l", "In L"),
        audioPort(kInRight, "Input", "in_r", "In R"),
        audioPort(kOutLeft, "Output", "out_l", "Out L"),
        audioPort(kOutRight, "Output", "out_r", "Out R"),
        controlPort(kTremoloDepth),
        controlPort(kTremoloSpeed),
        controlPort(kStereoPanner),
        controlPort(kPannerSpeed),
        controlPort(kMix),
        controlPort(kSampleRate),
        tuningPort(),
    };
    for (uint32_t index = 0; index < kNumPorts; ++index)
        text += ports[index] + (index + 1 < kNumPorts ? "    ] , [\n" : "    ] .\n");

    // The panel: a child of the host's window, driven by the host's idle calls.
    text += "\n<" + std::string(kUiUri) + ">\n    a ui:X11UI ;\n" +
            "    lv2:requiredFeature ui:idleInterface , ui:parent ;\n" +
            "    lv2:optionalFeature ui:resize , ui:touch , opts:options , urid:map ;\n" +
            "    opts:supportedOption ui:scaleFactor , param:sampleRate ;\n" +
            "    lv2:extensionData ui:idleInterface ;\n" +
            "    ui:portNotification [\n        ui:plugin <" + kPluginUri + "> ;\n" +
            "        lv2:symbol \"tuning\" ;\n        ui:protocol ui:floatProtocol\n    ] .\n";
    return text;
}

// The programs set the five knob parameters; the tuning stays, as in the module.
std::string presets()
{
    std::string text = kPrefixes;
    for (int program = 0; program < kNumPrograms; ++program) {
        text += presetUri(program) + "\n    a pset:Preset ;\n    lv2:appliesTo <" + kPluginUri +
                "> ;\n    rdfs:label " + quoted(factoryProgram(program).name) +
                " ;\n    lv2:port ";
        for (int32_t parameter = 0; parameter < kSampleRate; ++parameter)
            text += std::string(parameter ? " , " : "") + "[\n        lv2:symbol " +
                    quoted(kParameterInfo[parameter].symbol) + " ;\n        pset:value " +
                    number(factoryValue(program, parameter)) + "\n    ]";
        text += " .\n" + std::string(program + 1 < kNumPrograms ? "\n" : "");
    }
    return text;
}

bool write(const std::string& path, const std::string& text)
{
    FILE* file = std::fopen(path.c_str(), "w");
    if (!file)
        return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && written;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: hvtremolo-lv2-ttl OUTPUT_DIR MINOR_VERSION MICRO_VERSION\n");
        return 2;
    }
    const std::string dir = argv[1];
    const std::pair<std::string, std::string> files[] = {
        {"manifest.ttl", manifest()},
        {"HvTremolo.ttl", plugin(argv[2], argv[3])},
        {"presets.ttl", presets()},
    };
    for (const auto& [name, text] : files) {
        if (!write(dir + "/" + name, text)) {
            std::fprintf(stderr, "hvtremolo-lv2-ttl: cannot write %s/%s\n", dir.c_str(),
                         name.c_str());
            return 1;
        }
    }
    return 0;
}
