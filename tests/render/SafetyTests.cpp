// hvtremolo-render never loses a file: what it refuses, how it writes through links, into
// devices and FIFOs, and what a failure or an interrupt leaves behind (the old file, nothing else).
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>

#include <chrono>
#include <functional>
#include <thread>

#include "tests/render/RenderSupport.h"

namespace {

namespace fs = std::filesystem;

struct Row {
    std::string name;
    std::string setup;     // shell text run in the folder first
    std::string command;   // shell text; {R} is hvtremolo-render
    int status;
    std::string message;   // in standard error
    std::function<void(const Scratch&)> check;
};

bool isCharacterDevice13(const std::string& path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
           major(status.st_rdev) == 1 && minor(status.st_rdev) == 3;
}

bool isFifo(const std::string& path)
{
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

TEST(RenderSafety, RefusesWritesThroughLinksAndIntoDevicesAndLeavesNothingBehind)
{
    const std::string old = "an earlier render\n";
    const auto untouched = [old](const char* name) {
        return [old, name](const Scratch& dir) { EXPECT_EQ(readText(dir / name), old) << name; };
    };
    // The reference: what a plain render of in.wav writes.
    const auto isTheRender = [](const Scratch& dir, const std::string& path) {
        const Sound got = readSound(path), expected = readSound(dir / "reference.wav");
        EXPECT_EQ(std::tuple(got.format, got.rate, got.channels),
                  std::tuple(expected.format, expected.rate, expected.channels))
            << path;
        EXPECT_EQ(firstDifference(got.samples, expected.samples), npos) << path;
        EXPECT_FALSE(expected.samples.empty());
    };
    const Row rows[] = {
        {"a lone argument is no output", "", "{R} -q in.wav", 2,
         "missing OUTPUT: give INPUT OUTPUT, or --demo OUTPUT", untouched("out.wav")},
        {"the same file", "", "{R} in.wav in.wav", 2,
         "OUTPUT 'in.wav' is the same file as INPUT 'in.wav'", untouched("out.wav")},
        {"the same file through a symlink", "ln -s in.wav alias.wav", "{R} in.wav alias.wav", 2,
         "is the same file as INPUT", untouched("out.wav")},
        {"the same file through a hard link", "ln in.wav hard.wav", "{R} hard.wav in.wav", 2,
         "is the same file as INPUT", untouched("out.wav")},
        {"the same file as standard input", "", "{R} - in.wav <in.wav", 2,
         "OUTPUT 'in.wav' is the same file as INPUT '-'", untouched("out.wav")},
        {"the same file as standard output", "", "{R} in.wav - >>in.wav", 2,
         "OUTPUT standard output is the same file as INPUT 'in.wav'", untouched("out.wav")},
        {"the plot is the input", "ln -s in.wav in.png", "{R} --plot in.png in.wav out.wav", 2,
         "--plot 'in.png' is the same file as INPUT", untouched("out.wav")},
        {"a symlink stays a link and its target is written",
         "mkdir takes && echo old >takes/t.wav && ln -s takes/t.wav link.wav",
         "{R} in.wav link.wav", 0, "/link.wav -> ",
         [isTheRender](const Scratch& dir) {
             EXPECT_TRUE(fs::is_symlink(dir / "link.wav"));
             EXPECT_EQ(fs::read_symlink(dir / "link.wav"), "takes/t.wav");
             isTheRender(dir, dir / "takes/t.wav");
         }},
        {"a link to a link to nothing yet: its end is made",
         "mkdir takes && ln -s takes/new.wav b.wav && ln -s b.wav a.wav", "{R} in.wav a.wav", 0,
         "", [isTheRender](const Scratch& dir) {
             EXPECT_TRUE(fs::is_symlink(dir / "a.wav"));
             EXPECT_TRUE(fs::is_symlink(dir / "b.wav"));
             isTheRender(dir, dir / "takes/new.wav");
         }},
        {"a character device stays one", "mknod null c 1 3", "{R} in.wav null", 0, "wrote null",
         [](const Scratch& dir) { EXPECT_TRUE(isCharacterDevice13(dir / "null")); }},
        {"a FIFO stays one and receives the stream",
         "mkfifo fifo && (timeout 60 cat fifo >from-fifo.wav &)", "{R} in.wav fifo && sleep 0.3",
         0, "wrote fifo",
         [isTheRender](const Scratch& dir) {
             EXPECT_TRUE(isFifo(dir / "fifo"));
             isTheRender(dir, dir / "from-fifo.wav");
         }},
        {"/dev/stdout into a pipe", "", "{R} in.wav /dev/stdout | cat >piped.wav", 0,
         "wrote /dev/stdout",
         [isTheRender](const Scratch& dir) { isTheRender(dir, dir / "piped.wav"); }},
        {"a write that fails (a file size limit) leaves the old file", "",
         "ulimit -f 64 && {R} long.wav out.wav", 1, "File too large; nothing written",
         untouched("out.wav")},
        // The shell reports the abort's signal as 128 + 6.
        {"a plug-in that crashes mid-render leaves the old file", "",
         "{R} --plugin " + quote(HVT_CRASHING_MODULE_PATH) + " long.wav out.wav", 134, "",
         untouched("out.wav")},
    };
    const Sound in = tone(44100, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const Sound longer = tone(44100, 2, kFloatWav, 441000);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Scratch dir;
        ASSERT_TRUE(writeSoundWith(dir / "in.wav", in));
        ASSERT_TRUE(writeSound(dir / "long.wav", longer));
        std::ofstream(dir / "out.wav") << old;
        std::ofstream(dir / "out.aiff") << old;
        ASSERT_EQ(render(dir, "-q in.wav reference.wav").status, 0);
        ASSERT_EQ(inFolder(dir, row.setup.empty() ? "true" : row.setup).status, 0);
        const std::string inBefore = readText(dir / "in.wav");
        std::string command = row.command;
        command.replace(command.find("{R}"), 3, renderCommand());
        const Ran run = inFolder(dir, command);
        EXPECT_EQ(run.status, row.status) << run.err;
        EXPECT_NE(run.err.find(row.message), npos) << run.err;
        EXPECT_EQ(readText(dir / "in.wav"), inBefore);
        row.check(dir);
        // No temporary file anywhere: they are hidden names starting with a dot.
        EXPECT_EQ(shell("find " + quote(dir.dir) + " -name '.*'").out, "");
    }
}

// Starts the program on a terminal of its own, so that it draws its progress bar. The test keeps
// the terminal's other side open too, so that nothing the program wrote last is lost when it ends.
struct OnTerminal {
    pid_t pid = -1;
    int terminal = -1, programSide = -1;
    std::string seen;

    OnTerminal(const Scratch& dir, const std::vector<std::string>& arguments)
    {
        if (openpty(&terminal, &programSide, nullptr, nullptr, nullptr) != 0)
            return;
        pid = fork();
        if (pid == 0) {
            setsid();
            ioctl(programSide, TIOCSCTTY, 0);
            for (int descriptor : {0, 1, 2})
                dup2(programSide, descriptor);
            if (chdir(dir.dir.c_str()) != 0)
                _exit(127);
            std::vector<char*> argv{const_cast<char*>(HVT_RENDER_PROGRAM)};
            for (const std::string& argument : arguments)
                argv.push_back(const_cast<char*>(argument.c_str()));
            argv.push_back(nullptr);
            execv(HVT_RENDER_PROGRAM, argv.data());
            _exit(127);
        }
    }

    ~OnTerminal()
    {
        close(terminal);
        close(programSide);
    }

    // Reads what the program writes until `text` appears, or for at most `seconds`.
    bool waitFor(const std::string& text, int seconds = 60)
    {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (seen.find(text) == npos && std::chrono::steady_clock::now() < until) {
            pollfd ready{terminal, POLLIN, 0};
            if (poll(&ready, 1, 100) <= 0)
                continue;
            char buffer[4096];
            const ssize_t got = read(terminal, buffer, sizeof buffer);
            if (got > 0)
                seen.append(buffer, static_cast<size_t>(got));
        }
        return seen.find(text) != npos;
    }

    int finish()
    {
        int status = 0;
        waitpid(pid, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
};

TEST(RenderSafety, CtrlCAndSigtermRemoveTheTemporaryFileKeepTheOldOutputAndClearTheBar)
{
    const std::pair<int, int> signals[] = {{SIGINT, 130}, {SIGTERM, 143}};
    for (const auto& [signal, status] : signals) {
        SCOPED_TRACE(signal);
        Scratch dir;
        // Silent and sparse: long to render (about two hours of audio), cheap to store.
        ASSERT_TRUE(writeSilence(dir / "long.rf64", 44100, 300000000));
        std::ofstream(dir / "out.wav") << "an earlier render\n";
        OnTerminal program(dir, {"--plot", "out.png", "long.rf64", "out.wav"});
        ASSERT_GT(program.pid, 0);
        // The bar is drawn, so the render is under way and its temporary files exist.
        ASSERT_TRUE(program.waitFor("] ")) << program.seen;
        EXPECT_NE(listing(dir).find(".out.wav."), npos) << listing(dir);
        kill(program.pid, signal);
        EXPECT_EQ(program.finish(), status) << program.seen;
        // The line is cleared: carriage return, blanks over the bar, carriage return, last.
        const std::string cleared = "\r" + std::string(48, ' ') + "\r";
        EXPECT_TRUE(program.waitFor(cleared, 10)) << program.seen;
        EXPECT_EQ(program.seen.rfind(cleared), program.seen.size() - cleared.size())
            << program.seen;
        EXPECT_EQ(readText(dir / "out.wav"), "an earlier render\n");
        EXPECT_EQ(listing(dir), "long.rf64\nout.wav\n");
    }
}

} // namespace
