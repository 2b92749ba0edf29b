// What a decoded file may hold: the budget that refuses a file before giflib
// allocates, counted over the cached files and the frame readers' answers;
// hostile files answered without the memory their screens declare; streams
// closed after failed decodes; frames composited on demand in any order.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "ImportCalls.h"

namespace gif_test {
namespace {

class DecodeMemory : public ::testing::Test {
protected:
    // Every test starts with nothing cached, so that only its own files count.
    void SetUp() override {
        rh_plugin_uninitialize(tarvex_test::plugin());
        rh_plugin_initialize(tarvex_test::plugin(), nullptr);
    }

private:
    tarvex_test::HostBooksGuard books;
};

int metadataCode(const std::string &path) {
    int code = 99;
    linkAnswer("ReadFileMetadata", path, &code);
    return code;
}

bool isCached(const std::string &path) {
    bool removed = false;
    clearCache(path, &removed);
    return removed;
}

TEST_F(DecodeMemory, TheBudgetCountsEveryRasterAndTheCanvasBeforeDecoding) {
    // Extensions, local and global colour tables and interlaced data to be
    // skipped; an image wider than the screen widens the canvas to 8 x 4.
    const std::string path = GifBuilder(6, 4, kEight)
                                 .loop(0).comment({"x", "yz"})
                                 .control(2, 0, 5)
                                 .image(1, 1, 2, 2, {1, 2, 3, 4}, kEight, true)
                                 .solid(0, 0, 6, 4, 1)
                                 .solid(0, 0, 8, 1, 3)
                                 .write("demand.gif");
    const std::uint64_t rasters = 4 + 24 + 8, canvas = 8 * 4 * 4;
    {
        ScopedDecodeBudget budget(rasters + canvas - 1);
        EXPECT_EQ(metadataCode(path), -3);
        EXPECT_FALSE(isCached(path));
    }
    ScopedDecodeBudget budget(rasters + canvas);
    EXPECT_EQ(metadataCode(path), 0);
    EXPECT_TRUE(isCached(path));
}

TEST_F(DecodeMemory, CachedFilesAndTheAnswerImageShareTheBudget) {
    // One 100 x 100 frame: 10,000 bytes of raster and a 40,000-byte canvas.
    const std::string first = GifBuilder(100, 100, kEight).solid(0, 0, 100, 100, 2).write("first.gif");
    const std::string second = GifBuilder(100, 100, kEight).solid(0, 0, 100, 100, 3).write("second.gif");
    {
        ScopedDecodeBudget budget(55'000);
        EXPECT_EQ(metadataCode(first), 0);
        EXPECT_EQ(metadataCode(second), -3);  // the first one's raster is still held
        EXPECT_TRUE(isCached(first));
        EXPECT_EQ(metadataCode(second), 0);
        // The answer needs 30,000 bytes and the compositor's canvas 40,000.
        EXPECT_EQ(readAllFrames(second).code, -3);
        EXPECT_FALSE(isCached(second));
    }
    {
        ScopedDecodeBudget budget(200'000);
        EXPECT_EQ(readAllFrames(second).rows()[99], std::string(100, 'B'));
    }
    // The canvas is given back after the last frame: a third file's raster
    // and canvas fit beside the one raster still held, but not beside a canvas.
    const std::string third = GifBuilder(100, 100, kEight).solid(0, 0, 100, 100, 1).write("third.gif");
    ScopedDecodeBudget budget(80'000);
    EXPECT_EQ(metadataCode(third), 0);
    EXPECT_TRUE(isCached(second));
}

// Snapshots of a replay take only what is spare: whatever the budget let
// through without them, a frame or another file, it still lets through.
TEST_F(DecodeMemory, CanvasSnapshotsNeverTurnAnAnswerAway) {
    // Forty 20 x 20 frames kept on show: 16,000 bytes of rasters, 32 of
    // palette and a 1,600-byte canvas; a snapshot after every four frames.
    GifBuilder builder(20, 20, kEight);
    for (int frame = 0; frame < 40; ++frame) builder.control(1).solid(0, 0, 20, 20, std::uint8_t(frame % 8));
    const std::string path = builder.write("forty.gif");
    const std::string other = GifBuilder(10, 10, kEight).solid(0, 0, 10, 10, 2).write("other.gif");
    const std::uint64_t held = 16'000 + 32 + 1'600;
    // Room for one picture of 1,200 bytes and a little more, enough for one
    // snapshot of 1,600.
    ScopedDecodeBudget budget(held + 1'600);
    const auto topRow = [&](long frame) {
        const Picture picture = readOneFrame(path, frame);
        return picture.code == 0 ? picture.rows()[0] : "code " + std::to_string(picture.code);
    };
    const auto solidRow = [](long frame) { return std::string(20, "KRGBWYCM"[(frame - 1) % 8]); };
    // 29 replays from the start and keeps a snapshot; each later one needs
    // room for its picture.
    for (long frame : {33, 29, 27, 25, 1, 30, 26})
        EXPECT_EQ(topRow(frame), solidRow(frame)) << "frame " << frame;
    EXPECT_TRUE(isCached(path));
    // 100 bytes of raster and a 400-byte canvas fit beside the cached file.
    EXPECT_EQ(readOneFrame(path, 29).code, 0);
    EXPECT_EQ(readOneFrame(path, 21).code, 0);
    EXPECT_EQ(metadataCode(other), 0);
}

// What a file holds between calls, and so what the budget lets through
// beside it, is the same whatever frames were read before.
TEST_F(DecodeMemory, TheBudgetAnswersTheSameWhateverOrderFramesWereRead) {
    // A small and a whole-screen restore-previous frame, then one more, so
    // that neither is the last frame (which gives the canvas back).
    const std::string path = GifBuilder(20, 20, kEight)
                                 .control(3).solid(0, 0, 2, 2, 1)
                                 .control(3).solid(0, 0, 20, 20, 2)
                                 .solid(0, 0, 1, 1, 3)
                                 .write("restores.gif");
    const std::string other = GifBuilder(10, 10, kEight).solid(0, 0, 10, 10, 2).write("other.gif");
    const auto otherCodeAfter = [&](std::initializer_list<long> frames, std::uint64_t budget) {
        rh_plugin_uninitialize(tarvex_test::plugin());
        rh_plugin_initialize(tarvex_test::plugin(), nullptr);
        {
            ScopedDecodeBudget roomy(std::uint64_t{1} << 30);
            for (long frame : frames) EXPECT_EQ(readOneFrame(path, frame).code, 0);
        }
        ScopedDecodeBudget tight(budget);
        return metadataCode(other);
    };
    // Rasters, canvas and the whole-screen restore buffer, then the other
    // file's raster and canvas: the margin lies inside this range.
    const std::uint64_t least = 4 + 400 + 1 + 1'600 + 1'600, most = least + 100 + 400 + 64;
    for (std::uint64_t budget = least; budget <= most; budget += 4)
        EXPECT_EQ(otherCodeAfter({2, 1}, budget), otherCodeAfter({1}, budget)) << budget;
    EXPECT_EQ(otherCodeAfter({1}, least), -3);
    EXPECT_EQ(otherCodeAfter({1}, most), 0);
}

long openDescriptors() {
    std::error_code error;
    const std::filesystem::directory_iterator entries("/proc/self/fd", error);
    if (error) return -1;
    return std::distance(std::filesystem::begin(entries), std::filesystem::end(entries));
}

TEST_F(DecodeMemory, UndecodableReadsCloseTheirStreams) {
    ScopedDecodeBudget budget(std::uint64_t{1} << 30);
    const std::string bad = RawGif(2, 2, {kRed, kGreen})
                                .imageWithData(0, 0, 2, 2, 2, {0xff, 0xff, 0xff, 0xff})
                                .write("undecodable.gif");
    const std::string good = GifBuilder(2, 1, {kRed, kGreen}).image(0, 0, 2, 1, {0, 1}).write("good.gif");
    const long before = openDescriptors();
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(readOneFrame(bad, 1).code, -3) << "read " << i;
    if (before >= 0) { EXPECT_EQ(openDescriptors(), before); }
    EXPECT_EQ(readOneFrame(good, 1).rows(), std::vector<std::string>{"RG"});
    if (before >= 0) { EXPECT_EQ(openDescriptors(), before) << "a decoded file keeps its stream open"; }
}

// Runs `calls` in a child process whose address space may grow by `headroom`
// bytes only, and returns the codes it collected; empty when the limit cannot
// be set (sanitizers reserve terabytes of address space, so they cannot run
// under such a limit).
std::vector<int> codesUnderAddressLimit(std::uint64_t headroom,
                                        const std::function<std::vector<int>()> &calls) {
#if defined(__SANITIZE_ADDRESS__)
    (void)headroom, (void)calls;
    return {};
#else
    std::array<int, 2> pipeEnds{};
    if (::pipe(pipeEnds.data()) != 0) return {};
    const pid_t child = ::fork();
    if (child == 0) {
        long pages = 0;
        std::FILE *statm = std::fopen("/proc/self/statm", "r");
        const bool measured = statm != nullptr && std::fscanf(statm, "%ld", &pages) == 1;
        if (statm != nullptr) std::fclose(statm);
        const rlim_t size = static_cast<rlim_t>(pages) * static_cast<rlim_t>(::sysconf(_SC_PAGE_SIZE));
        const rlimit limit{size + headroom, size + headroom};
        std::vector<int> codes;
        if (measured && ::setrlimit(RLIMIT_AS, &limit) == 0) codes = calls();
        const auto bytes = static_cast<ssize_t>(codes.size() * sizeof(int));
        _exit(::write(pipeEnds[1], codes.data(), codes.size() * sizeof(int)) == bytes ? 0 : 1);
    }
    ::close(pipeEnds[1]);
    std::vector<int> codes;
    for (int code = 0; ::read(pipeEnds[0], &code, sizeof code) == sizeof code;) codes.push_back(code);
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? codes : std::vector<int>{};
#endif
}

std::vector<int> allLinkCodes(const std::string &path) {
    std::vector<int> codes;
    for (const char *name : kLinkReaders) {
        int code = 99;
        linkAnswer(name, path, &code);
        codes.push_back(code);
    }
    codes.push_back(readGlobalPalette(path).code);
    return codes;
}

TEST_F(DecodeMemory, HostileFilesAnswerWithoutTheMemoryTheirScreensDeclare) {
    // Decoding the first two needed 3 and 1 GiB, the third 8 GiB: a picture
    // of the whole screen for every one of its 1 x 1 frames.
    const std::string dropped = RawGif(28781, 25964).solid(0, 0, 1, 1, 0).write("dropped-frame.gif");
    const std::string screen = RawGif(16384, 16384, {kRed, kGreen}).solid(0, 0, 1, 1, 1).write("huge-screen.gif");
    RawGif pixels(1000, 1000, {kRed, kGreen});
    for (int i = 0; i < 2000; ++i) pixels.solid(i % 1000, 0, 1, 1, 1);
    const std::string manyFrames = pixels.write("2000-pixels.gif");

    ScopedDecodeBudget budget(std::uint64_t{1} << 40);  // only the address space limits
    const std::vector<int> codes = codesUnderAddressLimit(std::uint64_t{256} << 20, [&] {
        std::vector<int> all = allLinkCodes(dropped);
        all.push_back(readOneFrame(dropped, 1).code);
        all.push_back(readAllFrames(dropped).code);
        for (const std::string &path : {screen, manyFrames}) {
            const std::vector<int> more = allLinkCodes(path);
            all.insert(all.end(), more.begin(), more.end());
        }
        // The last frame, then the first again: one canvas, one answer each.
        for (long frame : {2000L, 1L}) {
            const Picture picture = readOneFrame(manyFrames, frame);
            all.push_back(picture.code);
            all.push_back(picture.pixel(0, frame == 1 ? 0 : 999, 0)[3]);
        }
        return all;
    });
    if (codes.empty()) GTEST_SKIP() << "cannot limit the address space here";
    const std::vector<int> expected{-1, -1, -1, -1, -1, -1, -1,  // no usable frame
                                    0,  0,  0,  0,  0,           // metadata of a 1 x 1 frame
                                    0,  0,  0,  0,  0,           // metadata of 2000 frames
                                    0,  255, 0, 255};            // frames 2000 and 1, drawn opaque
    EXPECT_EQ(codes, expected);
}

// Frames read one by one, in any order and between whole readings, are the
// slices of ReadAllFrames.
TEST_F(DecodeMemory, FramesReadInAnyOrderAreTheSlicesOfAllFrames) {
    const std::string path = GifBuilder(4, 2, kEight, 4)
                                 .control(2).solid(0, 0, 4, 2, 1)
                                 .control(3, 0).image(1, 0, 2, 2, {2, 0, 0, 2})
                                 .control(1, 3).image(0, 1, 3, 1, {3, 5, 3})
                                 .control(3).solid(2, 0, 2, 1, 6)
                                 .control(0).solid(0, 0, 1, 2, 7)
                                 .control(2).image(3, 1, 1, 1, {0})
                                 .write("orders.gif");
    const Picture all = readAllFrames(path);
    ASSERT_EQ(all.slices, 6);
    // Frames that need no alpha come with three channels alone.
    const auto rgba = [](const Picture &picture, long slice) {
        std::vector<std::uint8_t> samples;
        for (long y = 0; y < picture.height; ++y)
            for (long x = 0; x < picture.width; ++x) {
                const std::vector<std::uint8_t> pixel = picture.pixel(slice, x, y);
                samples.insert(samples.end(), pixel.begin(), pixel.end());
            }
        return samples;
    };
    const auto readInOrders = [&](const std::string &file, const Picture &whole,
                                  const std::vector<std::vector<long>> &orders) {
        for (const std::vector<long> &order : orders) {
            for (long frame : order) {
                if (frame == 0) {  // a whole reading in between
                    EXPECT_EQ(readAllFrames(file).samples, whole.samples);
                    continue;
                }
                EXPECT_EQ(rgba(readOneFrame(file, frame), 0), rgba(whole, frame - 1)) << file << " frame " << frame;
            }
        }
        clearCache(file);
    };
    readInOrders(path, all, {{1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}, {3, 3, 1, 4, 1, 5, 2, 6, 5}, {2, 0, 4, 6}});

    // Long enough for the replays to keep snapshots, which must bring back
    // pending restore-previous rectangles as well as the canvas.
    GifBuilder builder(3, 2, kEight, 4);
    std::uint32_t seed = 7;
    const auto next = [&](std::uint32_t below) { return (seed = seed * 1103515245u + 12345u) / 65536u % below; };
    for (int frame = 0; frame < 120; ++frame) {
        const int left = int(next(3)), top = int(next(2));
        const int width = 1 + int(next(3 - left)), height = 1 + int(next(2 - top));
        std::vector<std::uint8_t> indices(std::size_t(width * height));
        for (std::uint8_t &index : indices) index = std::uint8_t(next(8));
        builder.control(int(next(4)), next(3) == 0 ? int(next(8)) : -1).image(left, top, width, height, indices);
    }
    const std::string longer = builder.write("longer.gif");
    const Picture longerAll = readAllFrames(longer);
    ASSERT_EQ(longerAll.slices, 120);
    std::vector<long> backwards, shuffled;
    for (long frame = 120; frame >= 1; --frame) backwards.push_back(frame);
    for (long i = 0; i < 300; ++i) shuffled.push_back(1 + long(next(120)));
    readInOrders(longer, longerAll, {backwards, shuffled, {120, 1, 119, 2, 0, 60, 61, 59}});
}

}  // namespace
}  // namespace gif_test
