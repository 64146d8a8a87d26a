#include "tools/render/CommandLine.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <strings.h>

namespace {

// Far beyond what any host uses; a larger block is a typo, not a wish.
constexpr int kLargestBlock = 65536;
constexpr int kLowestSampleRate = 1000;
constexpr int kHighestSampleRate = 768000;

// The whole text must be a decimal integer: "12abc", "", " 1" and "1.5" are refused.
bool parseInteger(const std::string& text, long& result)
{
    if (text.empty() || text[0] == ' ')
        return false;
    char* end = nullptr;
    errno = 0;
    result = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && *end == 0;
}

// The value reaches the effect exactly as strtof reads it, so "0.1" is the float nearest 0.1.
bool parseFloat(const std::string& text, float& result)
{
    if (text.empty() || text[0] == ' ')
        return false;
    char* end = nullptr;
    errno = 0;
    result = std::strtof(text.c_str(), &end);
    return errno != ERANGE && *end == 0;
}

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

bool endsWithPng(const std::string& path)
{
    return path.size() > 4 && strcasecmp(path.c_str() + path.size() - 4, ".png") == 0 &&
           path[path.size() - 5] != '/';
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments(arguments) {}

    ParseResult run()
    {
        std::vector<std::string> files;
        bool optionsEnded = false;
        for (position = 0; position < arguments.size() && result.error.empty(); ++position) {
            const std::string& argument = arguments[position];
            // A lone `-` is a file: standard input or output.
            if (optionsEnded || argument.size() < 2 || argument[0] != '-')
                files.push_back(argument);
            else if (argument == "--")
                optionsEnded = true;
            else
                option(argument);
        }
        if (result.error.empty())
            placeFiles(files);
        if (result.error.empty())
            checkOutputs();
        return result;
    }

private:
    void option(const std::string& argument)
    {
        // Both "--block 64" and "--block=64".
        const size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        std::optional<std::string> attached;
        if (equals != std::string::npos)
            attached = argument.substr(equals + 1);

        RenderOptions& options = result.options;
        if (name == "--help" || name == "-h")
            flag(name, attached, options.help);
        else if (name == "--version")
            flag(name, attached, options.version);
        else if (name == "--quiet" || name == "-q")
            flag(name, attached, options.quiet);
        else if (name == "--list")
            flag(name, attached, options.list);
        else if (name == "--demo")
            flag(name, attached, options.demo);
        else if (name == "--keep-rate")
            flag(name, attached, options.keepRate);
        else if (name == "--plugin")
            text(name, attached, options.pluginPath);
        else if (name == "--plot")
            text(name, attached, options.plotPath);
        else if (name == "--type" || name == "-t")
            type(name, attached);
        else if (name == "--bits")
            bits(name, attached);
        else if (name == "--program")
            program(name, attached);
        else if (name == "--param")
            parameter(name, attached);
        else if (name == "--block")
            block(name, attached);
        else if (name == "--sample-rate")
            sampleRate(name, attached);
        else
            fail("unknown option " + quoted(name) + " (see --help)");
    }

    void flag(const std::string& name, const std::optional<std::string>& attached, bool& target)
    {
        if (attached)
            fail(name + " takes no value");
        else
            target = true;
    }

    bool value(const std::string& name, const std::optional<std::string>& attached,
               std::string& out)
    {
        if (attached) {
            out = *attached;
            return true;
        }
        if (position + 1 >= arguments.size()) {
            fail(name + " needs a value (see --help)");
            return false;
        }
        out = arguments[++position];
        return true;
    }

    void text(const std::string& name, const std::optional<std::string>& attached,
              std::string& target)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        if (given.empty())
            fail(name + " needs a file name");
        else
            target = given;
    }

    void type(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        const std::string extension = given.rfind('.', 0) == 0 ? given.substr(1) : given;
        if (!containerFor(extension))
            fail(name + " " + quoted(given) + " is not a type this program writes; give one of " +
                 writableExtensions());
        else
            result.options.type = extension;
    }

    void bits(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        if (const auto parsed = parseBits(given))
            result.options.bits = parsed;
        else
            fail(name + " " + quoted(given) + " is not 16, 24, 32 or float");
    }

    void program(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        if (given.empty())
            fail(name + " needs a program number or name (see --list)");
        else
            result.options.program = given;
    }

    void parameter(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        const size_t equals = given.find('=');
        if (equals == std::string::npos || equals == 0) {
            fail("--param " + quoted(given) + " is not INDEX=VALUE or NAME=VALUE");
            return;
        }
        const std::string valueText = given.substr(equals + 1);
        float number = 0.0f;
        // NaN and infinity are refused: no parameter means anything with them.
        if (!parseFloat(valueText, number) || !std::isfinite(number)) {
            fail("--param " + quoted(given) + ": value " + quoted(valueText) +
                 " is not a finite number");
            return;
        }
        result.options.parameters.push_back({given, given.substr(0, equals), number});
    }

    void block(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        long number = 0;
        if (!parseInteger(given, number) || number < 1 || number > kLargestBlock)
            fail("--block " + quoted(given) + " is not a block size 1 to " +
                 std::to_string(kLargestBlock));
        else
            result.options.blockSize = static_cast<int>(number);
    }

    void sampleRate(const std::string& name, const std::optional<std::string>& attached)
    {
        std::string given;
        if (!value(name, attached, given))
            return;
        long number = 0;
        if (!parseInteger(given, number) || number < kLowestSampleRate ||
            number > kHighestSampleRate)
            fail("--sample-rate " + quoted(given) + " is not a whole number of Hz from " +
                 std::to_string(kLowestSampleRate) + " to " + std::to_string(kHighestSampleRate));
        else
            result.options.sampleRate = static_cast<int>(number);
    }

    void placeFiles(const std::vector<std::string>& files)
    {
        RenderOptions& options = result.options;
        if (options.help || options.version)
            return;
        if (options.list) {
            if (!files.empty())
                fail("--list takes no files, only --plugin, --program, --param and "
                     "--sample-rate");
            return;
        }
        if (options.demo) {
            if (files.empty())
                fail("missing OUTPUT: give --demo OUTPUT (see --help)");
            else if (files.size() > 1)
                fail("--demo renders the built-in demo, so it takes only OUTPUT, not " +
                     quoted(files.front()) + " as INPUT");
            else
                options.outputPath = files.front();
            return;
        }
        if (files.empty()) {
            fail("missing INPUT and OUTPUT: give INPUT OUTPUT, or --demo OUTPUT (see --help)");
            return;
        }
        if (files.size() == 1) {
            // Never take a lone name as the output: it may well be the input, forgotten.
            fail("missing OUTPUT: give INPUT OUTPUT, or --demo OUTPUT for the built-in demo; "
                 "nothing was written");
            return;
        }
        if (files.size() > 2) {
            fail("too many files: give INPUT and OUTPUT");
            return;
        }
        options.inputPath = files[0];
        options.outputPath = files[1];
        if (options.sampleRate)
            fail("--sample-rate is only for the demo signal; an input file keeps its own rate");
    }

    void checkOutputs()
    {
        RenderOptions& options = result.options;
        if (options.help || options.version || options.list)
            return;
        if (options.type.empty() && options.outputPath != "-") {
            const std::string extension = extensionOf(options.outputPath);
            if (!extension.empty() && !containerFor(extension)) {
                fail("output " + quoted(options.outputPath) + ": unknown extension '." +
                     extension + "'; give one of " + writableExtensions() +
                     " (or --type EXT to choose)");
                return;
            }
        }
        if (!options.plotPath.empty()) {
            if (!endsWithPng(options.plotPath))
                fail("--plot " + quoted(options.plotPath) + " must name a .png file");
            else if (options.plotPath == options.outputPath)
                fail("--plot " + quoted(options.plotPath) + " names OUTPUT itself");
        }
    }

    void fail(const std::string& message)
    {
        if (result.error.empty())
            result.error = message;
    }

    const std::vector<std::string>& arguments;
    size_t position = 0;
    ParseResult result;
};

} // namespace

ParseResult parseCommandLine(const std::vector<std::string>& arguments)
{
    return Parser(arguments).run();
}
