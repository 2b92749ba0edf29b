// WriteFrames through the reference host on 100 RGB frames of 640 x 480 cut
// from a photograph, with and without diffusion, beside the floor: giflib
// encoding the very indices and maps that WriteFrames chose, nothing else.
//
// The frames come from bench/photo_frames.py (scikit-image's astronaut), or
// from the raw file named by TARVEX_BENCH_FRAMES.
#include <gif_lib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "BenchPlugin.h"
#include "refhost/refhost.h"

namespace {

constexpr mint kFrames = 100, kWidth = 640, kHeight = 480;

[[noreturn]] void fail(const std::string &why) {
    std::fprintf(stderr, "write_frames_benchmark: %s\n", why.c_str());
    std::exit(1);
}

RhPlugin *plugin() { return tarvex_bench::benchPlugin(); }

QuorbelLibraryData host() { return rh_library_data(RH_TABLE_FULL); }

std::vector<std::uint8_t> photoFrames() {
    std::string path;
    if (const char *given = std::getenv("TARVEX_BENCH_FRAMES")) {
        path = given;
    } else {
        path = "/tmp/tarvex-bench-frames.rgb";
        const std::string command = "/usr/bin/python3 " TARVEX_BENCH_DIR "/photo_frames.py " + path;
        if (std::system(command.c_str()) != 0)
            fail("cannot cut the frames (needs python3-skimage): " + command);
    }
    std::ifstream in(path, std::ios::binary);
    std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    if (bytes.size() != std::size_t(kFrames * kWidth * kHeight * 3)) fail("wrong frame file " + path);
    return bytes;
}

struct Inputs {
    MImage image = nullptr;
    MTensor durations = nullptr, empty = nullptr, disposal = nullptr;

    Inputs() {
        const std::vector<std::uint8_t> samples = photoFrames();
        rh_image_new(kFrames, kWidth, kHeight, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image);
        std::memcpy(host()->imageFunctions->getRawData(image), samples.data(), samples.size());
        const mint one = 1, none = 0;
        host()->tensorNew(MTensor_Type_Real, 1, &one, &durations);
        host()->tensorGetRealData(durations)[0] = 0.1;
        host()->tensorNew(MTensor_Type_Integer, 1, &none, &empty);
        host()->tensorNew(MTensor_Type_Integer, 1, &one, &disposal);
        host()->tensorGetIntegerData(disposal)[0] = 0;
    }
    ~Inputs() {
        host()->imageFunctions->free(image);
        for (MTensor t : {durations, empty, disposal}) host()->tensorFree(t);
    }
};

const Inputs &inputs() {
    static const Inputs made;
    return made;
}

int writeFrames(const char *method, const char *file) {
    const Inputs &in = inputs();
    const RhValue args[10] = {{RH_IMAGE, {.image = in.image}, 0},
                              {RH_STRING, {.string = file}, 0},
                              {RH_STRING, {.string = ""}, 0},
                              {RH_TENSOR, {.tensor = in.durations}, 0},
                              {RH_STRING, {.string = method}, 0},
                              {RH_INTEGER, {.integer = 0}, 0},
                              {RH_BOOLEAN, {.boolean = 0}, 0},
                              {RH_TENSOR, {.tensor = in.empty}, 0},
                              {RH_TENSOR, {.tensor = in.empty}, 0},
                              {RH_TENSOR, {.tensor = in.disposal}, 0}};
    RhValue result{RH_STRING, {}, 0};
    return rh_call(plugin(), "WriteFrames", 10, args, &result);
}

void setRate(benchmark::State &state) {
    state.counters["frames/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kFrames, benchmark::Counter::kIsRate);
}

void writeFramesBenchmark(benchmark::State &state, const char *method) {
    inputs();
    for (auto _ : state)
        if (writeFrames(method, "/tmp/tarvex-bench-out.gif") != 0) {
            state.SkipWithError("WriteFrames failed");
            break;
        }
    setRate(state);
}

// The file WriteFrames wrote with diffusion, decoded once: what the floor
// encodes again.
GifFileType *decodedOutput() {
    static GifFileType *decoded = [] {
        if (writeFrames("FloydSteinberg", "/tmp/tarvex-bench-floor.gif") != 0) fail("WriteFrames failed");
        int error = 0;
        GifFileType *gif = DGifOpenFileName("/tmp/tarvex-bench-floor.gif", &error);
        if (gif == nullptr || DGifSlurp(gif) != GIF_OK) fail("cannot decode the written file");
        return gif;
    }();
    return decoded;
}

int discard(GifFileType *, const GifByteType *, int length) { return length; }

void giflibFloor(benchmark::State &state) {
    GifFileType *source = decodedOutput();
    std::vector<GifPixelType> line(kWidth);
    for (auto _ : state) {
        int error = 0;
        GifFileType *gif = EGifOpen(nullptr, discard, &error);
        EGifSetGifVersion(gif, true);
        EGifPutScreenDesc(gif, kWidth, kHeight, 8, 0, source->SColorMap);
        for (int k = 0; k < source->ImageCount; ++k) {
            const SavedImage &image = source->SavedImages[k];
            EGifPutImageDesc(gif, 0, 0, kWidth, kHeight, false, image.ImageDesc.ColorMap);
            for (mint y = 0; y < kHeight; ++y) {
                std::memcpy(line.data(), image.RasterBits + y * kWidth, kWidth);
                EGifPutLine(gif, line.data(), kWidth);
            }
        }
        EGifCloseFile(gif, &error);
    }
    setRate(state);
}

}  // namespace

BENCHMARK_CAPTURE(writeFramesBenchmark, FloydSteinberg, "FloydSteinberg")
    ->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(writeFramesBenchmark, None, "None")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(giflibFloor)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
