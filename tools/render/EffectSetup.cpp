#include "tools/render/EffectSetup.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

// The whole text must be a decimal integer.
std::optional<long> integerIn(const std::string& text)
{
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0])))
        return std::nullopt;
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != 0)
        return std::nullopt;
    return number;
}

// An index within `names`, or a name of one of them.
std::optional<int> find(const std::string& key, const std::vector<std::string>& names)
{
    if (const auto number = integerIn(key))
        return *number < static_cast<long>(names.size()) ? std::optional<int>(*number)
                                                          : std::nullopt;
    const std::string wanted = controlName(key);
    for (size_t i = 0; i < names.size(); ++i)
        if (controlName(names[i]) == wanted)
            return static_cast<int>(i);
    return std::nullopt;
}

std::string choices(const std::vector<std::string>& names, const char* separator)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : separator) + controlName(name);
    return list;
}

std::string rangeText(bool rate)
{
    if (!rate)
        return "0 to 1";
    std::string choicesText, rates;
    const size_t count = std::size(kRateChoices);
    for (size_t i = 0; i < count; ++i) {
        const char* separator = i == 0 ? "" : i + 1 == count ? " or " : ", ";
        choicesText += separator + std::to_string(kRateChoices[i].choice);
        std::string khz = kilohertz(kRateChoices[i].rate);
        rates += separator + khz.substr(0, khz.find(' '));
    }
    return choicesText + " (" + rates + " kHz)";
}

} // namespace

std::string controlName(const std::string& displayName)
{
    std::string name;
    for (char c : displayName)
        name += c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

std::string kilohertz(int rate)
{
    char text[32];
    if (rate % 1000 == 0)
        std::snprintf(text, sizeof text, "%d kHz", rate / 1000);
    else
        std::snprintf(text, sizeof text, "%g kHz", rate / 1000.0);
    return text;
}

EffectVocabulary vocabularyOf(const VstPlugin& plugin)
{
    EffectVocabulary vocabulary;
    const AEffect& record = *plugin.effect();
    for (VstInt32 i = 0; i < record.numParams; ++i) {
        vocabulary.parameters.push_back(plugin.parameterName(i));
        if (controlName(vocabulary.parameters.back()) == kRateParameterName)
            vocabulary.rateParameter = i;
    }
    for (VstInt32 i = 0; i < record.numPrograms; ++i)
        vocabulary.programs.push_back(plugin.programNameIndexed(i));
    return vocabulary;
}

EffectRequest resolveRequest(const RenderOptions& options, const EffectVocabulary& vocabulary)
{
    EffectRequest request;
    const auto& programs = vocabulary.programs;
    if (options.program) {
        request.program = find(*options.program, programs);
        if (!request.program) {
            request.error = "--program " + quoted(*options.program) + " is not a program: give " +
                            (programs.empty() ? std::string("none, the plug-in has no programs")
                                              : "0 to " + std::to_string(programs.size() - 1) +
                                                    " or a name: " + choices(programs, ", "));
            return request;
        }
    }
    const auto& parameters = vocabulary.parameters;
    for (const ParameterRequest& given : options.parameters) {
        const std::optional<int> index = find(given.key, parameters);
        if (!index) {
            request.error = "--param " + quoted(given.given) + ": " + quoted(given.key) +
                            " is not a parameter: give 0 to " +
                            std::to_string(static_cast<int>(parameters.size()) - 1) +
                            " or a name: " + choices(parameters, ", ");
            return request;
        }
        // The module takes anything a host sends; this host sends only what means something.
        const bool rate = *index == vocabulary.rateParameter;
        const bool inRange =
            rate ? std::any_of(std::begin(kRateChoices), std::end(kRateChoices),
                               [&](const RateChoice& c) { return given.value == c.choice; })
                 : given.value >= 0.0f && given.value <= 1.0f;
        if (!inRange) {
            request.error = "--param " + quoted(given.given) + ": " + parameters[*index] + " (" +
                            std::to_string(*index) + ") takes " + rangeText(rate);
            return request;
        }
        request.parameters.push_back({*index, given.value});
        request.rateGiven = request.rateGiven || rate;
    }
    return request;
}

std::unique_ptr<VstPlugin> createEffect(const VstModule& module, const std::string& modulePath,
                                        std::string& error)
{
    std::unique_ptr<VstPlugin> plugin = VstPlugin::create(module);
    if (!plugin) {
        error = "plug-in '" + modulePath + "' did not create an effect";
        return nullptr;
    }
    const AEffect* record = plugin->effect();
    if (record->magic != kEffectMagic) {
        // Not a VST 2.4 record: closing it through its dispatcher could be anything.
        plugin->release();
        error = "plug-in '" + modulePath + "' returned something that is not a VST effect";
        return nullptr;
    }
    if (record->numInputs != 2 || record->numOutputs != 2 ||
        !(record->flags & effFlagsCanReplacing) || !record->processReplacing) {
        error = "plug-in '" + modulePath + "' is not a stereo effect with processReplacing (" +
                std::to_string(record->numInputs) + " inputs, " +
                std::to_string(record->numOutputs) + " outputs)";
        return nullptr;
    }
    plugin->dispatch(effOpen);
    return plugin;
}

std::vector<float> prepareEffect(const VstPlugin& plugin, const EffectSettings& settings)
{
    plugin.dispatch(effSetSampleRate, 0, 0, nullptr, settings.sampleRate);
    plugin.dispatch(effSetBlockSize, 0, settings.blockSize);
    plugin.dispatch(effMainsChanged, 0, 1);
    if (settings.program)
        plugin.dispatch(effSetProgram, 0, *settings.program);
    std::vector<float> programValues;
    for (VstInt32 i = 0; i < plugin.effect()->numParams; ++i)
        programValues.push_back(plugin.getParameter(i));
    if (settings.tuning)
        plugin.setParameter(settings.tuning->index, settings.tuning->value);
    for (const ParameterSetting& parameter : settings.parameters)
        plugin.setParameter(parameter.index, parameter.value);
    return programValues;
}

void stopEffect(const VstPlugin& plugin)
{
    plugin.dispatch(effMainsChanged, 0, 0);
}
