// Damaged files and host failures: every one ends in a defined code with the
// host's books balanced.
#include <climits>
#include <stdexcept>

#ifdef __linux__
#include <unistd.h>
#endif

#include <gtest/gtest.h>

#include "ImportCalls.h"

namespace gif_test {
namespace {

class Robustness : public ::testing::Test {
    tarvex_test::HostBooksGuard books;
    ScopedDecodeBudget budget{std::uint64_t{1} << 30};
};

// Every reader's code for the file; the file is dropped from the cache by
// each -3, so every call decodes it afresh.
std::vector<int> allCodes(const std::string &path) {
    std::vector<int> codes{readOneFrame(path, 1).code, readAllFrames(path).code,
                           readGlobalPalette(path).code};
    for (const char *name : kLinkReaders) {
        int code = 0;
        linkAnswer(name, path, &code);
        codes.push_back(code);
    }
    return codes;
}

std::string writeHugeScreen() {
    GifBuilder gif(65535, 65535, {kRed, kGreen});
    for (int frame = 0; frame < 32; ++frame) gif.image(frame, 0, 2, 1, {1, 0});
    return gif.write("huge.gif");
}

RawGif twoByTwo() { return RawGif(2, 2, {kRed, kGreen}).image(0, 0, 2, 2, {0, 1, 1, 0}); }

TEST_F(Robustness, UndecodableFilesAreReportedAndDropped) {
    const std::vector<std::uint8_t> garbage{0xff, 0xff, 0xff, 0xff};
    std::vector<std::string> paths{
        RawGif(2, 2, {kRed, kGreen}).imageWithData(0, 0, 2, 2, 2, garbage).write("lzw.gif"),
        RawGif(2, 2, {kRed, kGreen}).imageWithData(0, 0, 2, 2, 12, garbage).write("code-size.gif"),
        GifBuilder(2, 2, {kRed, kGreen}).write("no-images.gif"),
        writeFile("text.gif", {'h', 'e', 'l', 'l', 'o'}),
        scratchPath(""),  // a directory opens but does not read
        // A screen too large to composite is refused, not allocated: its
        // canvas alone takes 16 GiB.
        writeHugeScreen()};
    for (std::size_t length : {3ul, 12ul, 20ul, twoByTwo().bytes().size() - 1})
        paths.push_back(twoByTwo().write("cut" + std::to_string(length) + ".gif", length));
    for (const std::string &path : paths) {
        EXPECT_EQ(allCodes(path), std::vector<int>(7, -3)) << path;
        bool removed = true;
        clearCache(path, &removed);
        EXPECT_FALSE(removed) << path;
    }
}

TEST_F(Robustness, AFileDecodesAfreshAfterItWasFoundUndecodable) {
    const std::string path = twoByTwo().write("repaired.gif", 20);
    ASSERT_EQ(readOneFrame(path, 1).code, -3);
    twoByTwo().write("repaired.gif");
    EXPECT_EQ(readOneFrame(path, 1).rows(), (std::vector<std::string>{"RG", "GR"}));
    clearCache(path);
}

#ifdef __linux__
// A pipe holding the bytes, named as the kernel would name it; the pipe
// cannot be rewound, so its bytes can be read only once.
class PipedFile {
public:
    explicit PipedFile(const std::vector<std::uint8_t> &bytes) {
        int ends[2];
        if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
        if (::write(ends[1], bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("pipe too small");
        ::close(ends[1]);
        readEnd_ = ends[0];
    }
    ~PipedFile() { ::close(readEnd_); }
    PipedFile(const PipedFile &) = delete;
    PipedFile &operator=(const PipedFile &) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(readEnd_); }

private:
    int readEnd_ = -1;
};

TEST_F(Robustness, AFileThatCannotBeRewoundDecodesAndIsStillMeasured) {
    const PipedFile piped(twoByTwo().bytes());
    EXPECT_EQ(readOneFrame(piped.path(), 1).rows(), (std::vector<std::string>{"RG", "GR"}));
    EXPECT_EQ(readOneFrame(piped.path(), 1).rows(), (std::vector<std::string>{"RG", "GR"}));
    clearCache(piped.path());

    // Its canvas alone would take 16 GiB.
    const std::string hugeBytes = tarvex_test::fileContents(writeHugeScreen());
    const PipedFile huge(std::vector<std::uint8_t>(hugeBytes.begin(), hugeBytes.end()));
    EXPECT_EQ(readOneFrame(huge.path(), 1).code, -3);
}

// Each byte of a pipe is kept until giflib has read it again, and a pipe need
// never end: what is kept counts in the budget, and measuring stops past it.
TEST_F(Robustness, TheBytesKeptOfAPipeCountInTheBudget) {
    // 4 bytes of raster and a 16-byte canvas behind 50,000 bytes of application data.
    const std::vector<std::string> data(200, std::string(250, 'a'));
    const std::vector<std::uint8_t> bytes =
        RawGif(2, 2, {kRed, kGreen}).application("LONGDATA", data).image(0, 0, 2, 2, {0, 1, 1, 0}).bytes();
    {
        ScopedDecodeBudget budget(20'000);
        const PipedFile piped(bytes);
        EXPECT_EQ(readOneFrame(piped.path(), 1).code, -3);
    }
    ScopedDecodeBudget budget(100'000);
    const PipedFile piped(bytes);
    EXPECT_EQ(readOneFrame(piped.path(), 1).rows(), (std::vector<std::string>{"RG", "GR"}));
    clearCache(piped.path());
}
#endif

TEST_F(Robustness, FilesWithoutUsableFramesReportNoFrames) {
    const std::vector<int> noFrames(7, -1);
    EXPECT_EQ(allCodes(RawGif(2, 2, {kRed, kGreen}).solid(1, 1, 2, 2, 0).write("past-screen.gif")), noFrames);
    EXPECT_EQ(allCodes(RawGif(2, 2).solid(0, 0, 2, 2, 0).write("no-colors.gif")), noFrames);
    // A zero-sized screen takes its size from the images.
    const std::string zeroScreen = RawGif(0, 0, {kRed, kGreen}).image(0, 0, 2, 1, {1, 0}).write("zero.gif");
    EXPECT_EQ(readOneFrame(zeroScreen, 1).rows(), std::vector<std::string>{"GR"});
}

TEST_F(Robustness, FrameNumbersOutsideTheFileReportNoFrames) {
    const std::string path = twoByTwo().write("frame-numbers.gif");
    for (long frameNumber : {0L, -1L, 2L, LONG_MIN, LONG_MAX})
        EXPECT_EQ(readOneFrame(path, frameNumber).code, -1) << frameNumber;
    clearCache(path);
}

TEST_F(Robustness, HostCreationFailuresAreReturnedWithNothingLeftAlive) {
    const std::string path = GifBuilder(2, 2, {kRed, kGreen}).image(0, 0, 2, 2, {0, 1, 1, 0}).write("faults.gif");
    rh_fail_next_image_creation(5);
    EXPECT_EQ(readOneFrame(path, 1).code, 5);
    rh_fail_next_image_creation(5);
    EXPECT_EQ(readAllFrames(path).code, 5);
    rh_fail_next_tensor_creation(7);
    const Tensor palette = readGlobalPalette(path);
    EXPECT_EQ(palette.code, 7);
    EXPECT_FALSE(palette.written);
    rh_clear_faults();
}

TEST_F(Robustness, ALinkFailingAtAnyPutEndsTheAnswerWithMinusOne) {
    const std::string path = GifBuilder(2, 1, {kRed, kGreen})
                                 .control(1, 0, 3)
                                 .comment({"x"})
                                 .image(0, 0, 2, 1, {0, 1}, {kBlue, kRed})
                                 .image(0, 0, 1, 1, {1})
                                 .comment({"y"})
                                 .write("link-faults.gif");
    for (const char *name : kLinkReaders) {
        int code = 0;
        const std::string full = linkAnswer(name, path, &code);
        ASSERT_EQ(code, 0);
        int puts = 0;
        for (;; ++puts) {
            rh_fail_link_after(puts);
            linkAnswer(name, path, &code);
            if (code == 0) break;
            ASSERT_EQ(code, -1) << name << " failing after " << puts << " puts";
        }
        EXPECT_GE(puts, 4) << name;  // packet, list and two frames at least
        // Ending the packet is not a put: with only the end failing, the code
        // is 0 though the kernel gets no answer.
        rh_fail_link_after(puts + 2);
        EXPECT_EQ(linkAnswer(name, path, &code), full);
        rh_clear_faults();
    }
    clearCache(path);
}

}  // namespace
}  // namespace gif_test
