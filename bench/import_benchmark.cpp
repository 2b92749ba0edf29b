// ReadAllFrames through the reference host beside giflib's bare DGifSlurp of
// the same file, named by TARVEX_IMPORT_GIF (bench/compare_import.sh builds
// one). Every ReadAllFrames call decodes afresh: the file is cleared from the
// cache after each. TARVEX_PLUGIN names another build of the plug-in.
#include <algorithm>
#include <cstdlib>

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

// Every frame through ReadOneFrame, last to first, as a viewer stepping
// backwards asks for them: each one is drawn from an earlier state.
void readFramesBackwards(benchmark::State &state) {
    const RhValue name{RH_STRING, {.string = gifPath()}, 0};
    RhValue metadata{RH_IMAGE, {}, 0};
    if (rh_call(tarvex_bench::benchPlugin(), "ReadAllFrames", 1, &name, &metadata) != 0) {
        state.SkipWithError("ReadAllFrames failed: set TARVEX_IMPORT_GIF to a GIF file");
        return;
    }
    const QuorbelImageFunctions images = rh_library_data(RH_TABLE_FULL)->imageFunctions;
    const mint count = std::max<mint>(1, images->getSliceCount(metadata.value.image));
    images->free(metadata.value.image);
    for (auto _ : state) {
        for (mint frame = count; frame >= 1; --frame) {
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
    const RhValue name{RH_STRING, {.string = gifPath()}, 0};
    RhValue answer{RH_IMAGE, {}, 0};
    if (rh_call(tarvex_bench::benchPlugin(), "ReadAllFrames", 1, &name, &answer) != 0) {
        state.SkipWithError("ReadAllFrames failed: set TARVEX_IMPORT_GIF to a GIF file");
        return;
    }
    const QuorbelImageFunctions images = rh_library_data(RH_TABLE_FULL)->imageFunctions;
    const mint slices = images->getSliceCount(answer.value.image), width = images->getColumnCount(answer.value.image),
               height = images->getRowCount(answer.value.image), channels = images->getChannels(answer.value.image);
    images->free(answer.value.image);
    for (auto _ : state) {
        MImage image = nullptr;
        images->new3D(slices, width, height, channels, MImage_Type_Bit8, MImage_CS_RGB, 1, &image);
        auto *bytes = static_cast<volatile unsigned char *>(images->getRawData(image));
        for (mint at = 0; at < slices * width * height * channels; at += 4096) bytes[at] = 1;
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
