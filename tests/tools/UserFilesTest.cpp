// What users meet around every command: file formats by name, standard
// streams, error messages that keep their reason, and the terminal kept safe.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Progress.h"
#include "Support.h"
#include "ToolRun.h"

using namespace tarvex_cli;
using namespace tarvex_test;

namespace {

bool startsWith(const std::string &text, const std::string &prefix) { return text.rfind(prefix, 0) == 0; }

const std::string kPngSignature = "\x89PNG\r\n\x1a\n";

class UserFiles : public ScratchTest {
protected:
    std::string gradient() const {
        return writeTestPng(path("in.png"), 16, 8, 3, 8, [](int i, int k) { return std::uint16_t(i * 2 + k * 40); });
    }
};

}  // namespace

TEST_F(UserFiles, TheOutputNameChoosesTheFormat) {
    const std::string in = gradient();
    ASSERT_EQ(runTool({"dither", in, "-o", path("out.png"), "--palette", "bw"}).status, 0);
    EXPECT_TRUE(startsWith(fileContents(path("out.png")), kPngSignature));
    const ProgramRun gif = runTool({"dither", in, "-o", path("OUT.GIF"), "--palette", "web"});
    ASSERT_EQ(gif.status, 0) << gif.err;
    EXPECT_TRUE(startsWith(fileContents(path("OUT.GIF")), "GIF89a"));
    // The GIF holds the very pixels of the PNG that the same call writes.
    ASSERT_EQ(runTool({"dither", in, "-o", path("same.png"), "--palette", "web"}).status, 0);
    ASSERT_EQ(runTool({"frames", path("OUT.GIF"), "-o", path("back")}).status, 0);
    EXPECT_EQ(readTestPng(path("back/frame-001.png")).samples, readTestPng(path("same.png")).samples);

    for (const auto &args : std::vector<std::vector<std::string>>{
             {"dither", in, "-o", path("out.jpg"), "--palette", "bw"},
             {"quantize", in, "-o", path("out")},
             {"frames", path("OUT.GIF"), "-o", path("f"), "--name", "f-%d.tif"}}) {
        expectToolMessage(runTool(args), 2, "the tool writes PNG (.png) and GIF (.gif) files");
        EXPECT_FALSE(std::filesystem::exists(path("out.jpg")));
    }
    // A device's name says nothing of the format: it gets what "-" gets.
    EXPECT_EQ(runTool({"quantize", in, "-o", "/dev/null"}).status, 0);
    EXPECT_EQ(runTool({"gif", "-o", "/dev/null", in}).status, 0);
    expectToolMessage(runTool({"quantize", in, "-o", path("many.gif"), "--colors", "257"}), 2, "at most 256 colours");
    expectToolMessage(runTool({"gif", "-o", path("anim.png"), in}), 2, "gif: writes GIF files");
    expectToolMessage(runTool({"sample-gif", path("anim.png")}), 2, "sample-gif: writes a GIF file");
    EXPECT_FALSE(std::filesystem::exists(path("anim.png")));
}

TEST_F(UserFiles, DashIsStandardInputAndOutput) {
    const ProgramRun png = runTool({"dither", "-", "-o", "-", "--palette", "grey4"}, PluginArgument::Added,
                                   fileContents(gradient()));
    ASSERT_EQ(png.status, 0) << png.err;
    ASSERT_TRUE(startsWith(png.out, kPngSignature));
    std::ofstream(path("piped.png"), std::ios::binary) << png.out;
    EXPECT_EQ(readTestPng(path("piped.png")).width, 16);

    const ProgramRun gif = runTool({"sample-gif", "-"});
    ASSERT_EQ(gif.status, 0);
    ASSERT_TRUE(startsWith(gif.out, "GIF89a"));
    const ProgramRun info = runTool({"info", "-"}, PluginArgument::Added, gif.out);
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("24x24 canvas, 5 frames"), std::string::npos) << info.out;
    const ProgramRun animation = runTool({"gif", "-o", "-", "-", "--delay", "0.5"}, PluginArgument::Added, gif.out);
    ASSERT_EQ(animation.status, 0) << animation.err;
    EXPECT_TRUE(startsWith(animation.out, "GIF89a"));

    // Failures name what the user gave, not the copy the tool reads it through.
    expectToolMessage(runTool({"info", "-"}, PluginArgument::Added, "GIF89a"), 1,
                      "tarvex: standard input: not a GIF file that can be decoded");
    expectToolMessage(runTool({"colors", "-"}, PluginArgument::Added, gif.out), 1,
                      "tarvex: standard input: a GIF file; give a PNG or JPEG picture here");
}

TEST_F(UserFiles, FailuresKeepTheirReason) {
    const std::string missing = path("missing.gif"), in = gradient();
    std::filesystem::create_directory(path("dir"));
    const std::vector<std::pair<std::vector<std::string>, std::string>> failures = {
        {{"info", missing}, "cannot open " + missing + ": No such file or directory"},
        {{"palette", missing}, "cannot open " + missing + ": No such file or directory"},
        {{"frames", missing, "-o", path("f")}, "cannot open " + missing + ": No such file or directory"},
        {{"colors", missing}, "cannot open " + missing + ": No such file or directory"},
        {{"dither", in, "-o", path("x.png"), "--palette", path("none.txt")}, "cannot open " + path("none.txt")},
        {{"info", path("dir")}, path("dir") + ": is a directory"},
        {{"quantize", path("dir"), "-o", path("x.png")}, path("dir") + ": is a directory"},
        {{"info", in}, "not a GIF file that can be decoded"},
        {{"quantize", in, "-o", path("none/x.gif")}, "cannot write " + path("none/x.gif") + ": No such file"},
        {{"gif", "-o", path("none/x.gif"), in}, "cannot write " + path("none/x.gif") + ": No such file"},
        {{"dither", in, "-o", "gif:" + path("dir"), "--palette", "bw"}, "cannot write " + path("dir") + ": is a directory"},
    };
    for (const auto &[args, message] : failures) expectToolMessage(runTool(args), 1, message);

    const std::vector<std::pair<std::vector<std::string>, std::string>> usage = {
        {{"info", in, "--jsn"}, "info: unknown option --jsn"},
        {{"frames", in, "-o", "a", "--frame", "1", "--frame", "2"}, "--frame is given more than once"},
        {{"dither", in, "--output=a.png", "-o", "b.png", "--palette", "bw"}, "--output is given more than once"},
    };
    for (const auto &[args, message] : usage) expectToolMessage(runTool(args), 2, message);

    if (geteuid() != 0) {  // the superuser reads any file
        std::ofstream(path("locked.gif")) << "GIF89a";
        std::filesystem::permissions(path("locked.gif"), std::filesystem::perms::none);
        expectToolMessage(runTool({"info", path("locked.gif")}), 1, "Permission denied");
    }
}

// The plug-in opens the file before it finds that no frame has the
// transparent colour: the refusal must leave neither an emptied earlier file
// nor a new empty one. Files the tool writes get the usual permissions.
TEST_F(UserFiles, AFailedWriteLeavesNoBrokenFile) {
    namespace fs = std::filesystem;
    const std::string in = gradient(), kept = path("kept.gif"), fresh = path("new.gif");
    std::ofstream(kept) << "earlier";
    const fs::perms shared = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(kept, shared);
    for (const std::string &out : {kept, fresh})
        expectToolMessage(runTool({"gif", "-o", out, in, "--transparent", "#123456"}), 1, "--transparent colour");
    EXPECT_EQ(fileContents(kept), "earlier");
    EXPECT_FALSE(fs::exists(fresh));
    for (const fs::directory_entry &entry : fs::directory_iterator(path("")))
        EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path() << " is left over";

    ASSERT_EQ(runTool({"gif", "-o", kept, in}).status, 0);
    EXPECT_TRUE(startsWith(fileContents(kept), "GIF89a"));
    EXPECT_EQ(fs::status(kept).permissions(), shared);
    ASSERT_EQ(runTool({"sample-gif", fresh}).status, 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(fs::status(fresh).permissions(), fs::perms(0666 & ~mask));
}

TEST_F(UserFiles, NothingFromAFileReachesTheTerminalRaw) {
    const std::string in = writeTestPng(path("grey.png"), 2, 2, 1, 8, [](int i, int) { return std::uint16_t(i * 80); });
    ASSERT_EQ(runTool({"gif", "-o", path("c.gif"), in, "--comment", "\x1b[2Jgone\nnext\\"}).status, 0);
    const ProgramRun info = runTool({"info", path("c.gif")});
    EXPECT_EQ(info.out.find('\x1b'), std::string::npos);
    EXPECT_NE(info.out.find("comment: \\033[2Jgone\\nnext\\\\\n"), std::string::npos) << info.out;

    const ProgramRun bad = runTool({"dither", in, "-o", path("x.png"), "--palette", "#00\x1b[1m\x07"});
    expectToolMessage(bad, 2, "'#00\\033[1m\\007' is not #rrggbb");
    EXPECT_EQ(bad.err.find('\x1b'), std::string::npos);
}

TEST_F(UserFiles, SixteenBitImagesStaySixteenBit) {
    const std::string in =
        writeTestPng(path("deep.png"), 8, 4, 3, 16, [](int i, int k) { return std::uint16_t(i * 2000 + k * 300); });
    ASSERT_EQ(runTool({"dither", in, "-o", path("out.png"), "--palette", "#000000,#ffffff"}).status, 0);
    const PngSamples out = readTestPng(path("out.png"));
    EXPECT_EQ(out.bits, 16);
    for (std::uint16_t sample : out.samples) EXPECT_TRUE(sample == 0 || sample == 65535) << sample;
}

TEST_F(UserFiles, ALibraryThatIsNotThePlugInIsNamedAsSuch) {
    const ProgramRun run =
        runTool({"--plugin", TARVEX_REFHOST_LIBRARY, "info", gradient()}, PluginArgument::Omitted);
    expectToolMessage(run, 1, std::string(TARVEX_REFHOST_LIBRARY) + " is not a Tarvex plug-in");
}

namespace {

// A pseudo-terminal stands for the user's screen; its other end reads what
// the screen would show.
class PseudoTerminal {
public:
    PseudoTerminal() {
        controller_ = posix_openpt(O_RDWR | O_NOCTTY);
        if (controller_ < 0 || grantpt(controller_) != 0 || unlockpt(controller_) != 0) return;
        const int device = open(ptsname(controller_), O_RDWR | O_NOCTTY);
        if (device < 0) return;
        // The screen gets the bytes as written, without "\n" becoming "\r\n".
        termios settings{};
        tcgetattr(device, &settings);
        cfmakeraw(&settings);
        tcsetattr(device, TCSANOW, &settings);
        screen_ = fdopen(device, "w");
    }
    ~PseudoTerminal() {
        if (screen_ != nullptr) std::fclose(screen_);
        if (controller_ >= 0) close(controller_);
    }
    std::FILE *screen() const { return screen_; }
    std::string shown() const {
        std::string text;
        pollfd ready{controller_, POLLIN, 0};
        char buffer[256];
        while (poll(&ready, 1, 100) == 1) {
            const ssize_t got = read(controller_, buffer, sizeof buffer);
            if (got <= 0) break;
            text.append(buffer, std::size_t(got));
        }
        return text;
    }

private:
    int controller_ = -1;
    std::FILE *screen_ = nullptr;
};

}  // namespace

// The line is rewritten in place with \r: it is for a screen only, never for
// a log or a pipe, and never in quiet runs.
TEST(ProgressLine, ShowsOnATerminalAfterASecondUnlessQuiet) {
    using namespace std::chrono;
    steady_clock::time_point now{};
    const auto clock = [&] { return now; };
    const auto run = [&](std::FILE *out, bool quiet) {
        setQuiet(quiet);
        {
            Progress progress("gif", 3, out, clock);
            progress.advance(1);
            now += milliseconds(1500);
            progress.advance(2);
            progress.advance(3);
        }
        setQuiet(false);
        std::fflush(out);
    };
    for (bool quiet : {false, true}) {
        const PseudoTerminal terminal;
        ASSERT_NE(terminal.screen(), nullptr);
        run(terminal.screen(), quiet);
        EXPECT_EQ(terminal.shown(), quiet ? "" : "\rtarvex gif: 2 of 3\rtarvex gif: 3 of 3\n");
    }
    std::FILE *log = std::tmpfile();
    run(log, false);
    EXPECT_EQ(std::ftell(log), 0);
    std::fclose(log);
}
