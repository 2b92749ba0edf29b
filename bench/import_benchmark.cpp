// ReadAllFrames through the reference host beside giflib's bare DGifSlurp of
// the same file, named by TARVEX_IMPORT_GIF (bench/compare_import.sh builds
// one). Every ReadAllFrames call decodes afresh: the file is cleared from the
// cache after each. TARVEX_PLUGIN names another build of the plug-in.
#include <algorithm>
#include <cstdlib>
#include <optional>

#include <benchmark/benchmark.h>
#include <gif_lib.h>

#include "BenchPlugin.h"

namespace {

const char *gifPath() {
    const char *path = std::getenv("TARVEX_IMPORT_GIF");
    return path != nullptr ? path : "";
}

void readAllFrames(benchmark::State &state) {
    const RhValue name{RH_STRING, {.string = gifPath()}, 0};
    for (auto _ : state) {
        RhValue image{RH_IMAGE, {}, 0};
        if (rh_call(tarvex_bench::benchPlugin(), "ReadAllFrames", 1, &name, &image) != 0) {
            state.SkipWithError("ReadAllFrames failed: set TARVEX_IMPORT_GIF to a GIF file");
            break;
        }
        rh_library_data(RH_TABLE_FULL)->imageFunctions->free(image.value.image);
        RhValue cleared{RH_BOOLEAN, {}, 0};
        rh_call(tarvex_bench::benchPlugin(), "ClearCache", 1, &name, &cleared);
    }
}

// The size of ReadAllFrames' answer, read once before timing; nothing when
// the file cannot be read, which skips the benchmark.
struct AnswerShape {
    mint slices, width, height, channels;
};

std::optional<AnswerShape> allFramesShape(benchmark::State &state) {
    const RhValue name{RH_STRING, {.string = gifPath()}, 0};
    RhValue answer{RH_IMAGE, {}, 0};
    if (rh_call(tarvex_bench::benchPlugin(), "ReadAllFrames", 1, &name, &answer) != 0) {
        state.SkipWithError("ReadAllFrames failed: set TARVEX_IMPORT_GIF to a GIF file");
        return std::nullopt;
    }
    const QuorbelImageFunctions images = rh_library_data(RH_TABLE_FULL)->imageFunctions;
    const MImage image = answer.value.image;
    const AnswerShape shape{std::max<mint>(1, images->getSliceCount(image)), images->getColumnCount(image),
                            images->getRowCount(image), images->getChannels(image)};
    images->free(image);
    // Every timed iteration decodes afresh.
    RhValue cleared{RH_BOOLEAN, {}, 0};
    rh_call(tarvex_bench::benchPlugin(), "ClearCache", 1, &name, &cleared);
    return shape;
}

// Every frame through ReadOneFrame, last to first, as a viewer stepping
// backwards asks for them: each one is drawn from an earlier state.
void readFramesBackwards(benchmark::State &state) {
    const std::optional<AnswerShape> shape = allFramesShape(state);
    if (!shape) return;
    const RhValue name{RH_STRING, {.string = gifPath()}, 0};
    const QuorbelImageFunctions images = rh_library_data(RH_TABLE_FULL)->imageFunctions;
    for (auto _ : state) {
        for (mint frame = shape->slices; frame >= 1; --frame) {
            const RhValue args[2] = {name, {RH_INTEGER, {.integer = frame}, 0}};
            RhValue image{RH_IMAGE, {}, 0};
            if (rh_call(tarvex_bench::benchPlugin(), "ReadOneFrame", 2, args, &image) != 0) {
                state.SkipWithError("ReadOneFrame failed");
                return;
            }
            images->free(image.value.image);
        }
        RhValue cleared{RH_BOOLEAN, {}, 0};
        rh_call(tarvex_bench::benchPlugin(), "ClearCache", 1, &name, &cleared);
    }
}

// What an image the size of ReadAllFrames' answer costs before a sample is
// decoded: the host's allocation, the first write to each of its pages, and
// freeing it. DGifSlurp has no such cost.
void hostResultImage(benchmark::State &state) {
    const std::optional<AnswerShape> shape = allFramesShape(state);
    if (!shape) return;
    const QuorbelImageFunctions images = rh_library_data(RH_TABLE_FULL)->imageFunctions;
    const mint bytes = shape->slices * shape->width * shape->height * shape->channels;
    for (auto _ : state) {
        MImage image = nullptr;
        images->new3D(shape->slices, shape->width, shape->height, shape->channels, MImage_Type_Bit8, MImage_CS_RGB, 1,
                      &image);
        auto *samples = static_cast<volatile unsigned char *>(images->getRawData(image));
        for (mint at = 0; at < bytes; at += 4096) samples[at] = 1;
        images->free(image);
    }
}

void giflibSlurp(benchmark::State &state) {
    for (auto _ : state) {
        int error = 0;
        GifFileType *gif = DGifOpenFileName(gifPath(), &error);
        const bool decoded = gif != nullptr && DGifSlurp(gif) == GIF_OK;
        if (gif != nullptr) DGifCloseFile(gif, &error);
        if (!decoded) {
            state.SkipWithError("DGifSlurp failed: set TARVEX_IMPORT_GIF to a GIF file");
            break;
        }
    }
}

}  // namespace

BENCHMARK(readAllFrames)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readFramesBackwards)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(hostResultImage)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(giflibSlurp)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();
