// Every program we ship answers --version with its name and the project's version, and --help
// with a text that explains every option, both with exit status 0.
#include <gtest/gtest.h>

#include "tests/render/RenderSupport.h"

namespace {

TEST(RenderTools, EveryProgramAnswersVersionAndHelp)
{
    struct Row {
        std::string program, name;
        std::vector<std::string> options; // each must be explained in --help
    };
    const Row rows[] = {
        {HVT_RENDER_PROGRAM, "hvtremolo-render",
         {"--demo", "--plot", "--type", "-t EXT", "--bits", "--plugin", "--program", "--param",
          "--keep-rate", "--block", "--sample-rate", "--quiet", "-q", "--list", "--help", "-h",
          "--version", "INPUT", "OUTPUT", "Exit status"}},
        {HVT_EDITOR_PROGRAM, "hvtremolo-editor", {"--plugin", "--help", "--version"}},
        {HVT_PANEL_PROGRAM, "hvtremolo-panel",
         {"--program", "--param", "--scale", "OUT.png", "--help", "--version"}},
        {HVT_PICTURES_PROGRAM, "hvtremolo-pictures", {"OUTPUT-FOLDER", "--help", "--version"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Ran version = shell(quote(row.program) + " --version");
        EXPECT_EQ(version.status, 0);
        EXPECT_EQ(version.out, row.name + " " HVT_PROJECT_VERSION "\n");
        EXPECT_EQ(version.err, "");

        const Ran help = shell(quote(row.program) + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_NE(help.out.find("Usage: " + row.name), npos) << help.out;
        for (const std::string& option : row.options)
            EXPECT_NE(help.out.find(option), npos) << option;
        // An option the program does not know is a usage error, pointing to --help.
        const Ran wrong = shell(quote(row.program) + " --no-such-option");
        EXPECT_EQ(wrong.status, 2);
        EXPECT_NE(wrong.err.find("--help"), npos) << wrong.err;
    }
}

} // namespace
