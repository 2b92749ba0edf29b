// DitherImage through the reference host: a 2048 x 2048 photo-like RGB image
// mapped to 256 colours taken from it, with both methods.
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "DitherSampleImage.h"
#include "BenchPlugin.h"

namespace {

constexpr mint kSide = 2048;
constexpr mint kColors = 256;

QuorbelLibraryData host() { return rh_library_data(RH_TABLE_FULL); }

struct Inputs {
    MImage image = nullptr;
    MRawArray palette = nullptr;

    Inputs() {
        const std::vector<std::uint8_t> samples = tarvex_sample::samplePicture(kSide, kSide);
        rh_image_new(0, kSide, kSide, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image);
        std::memcpy(host()->imageFunctions->getRawData(image), samples.data(), samples.size());
        const mint dimensions[] = {kColors, 3};
        host()->rawArrayFunctions->create(MRawArray_Type_UBit8, 2, dimensions, &palette);
        auto *colors = static_cast<std::uint8_t *>(host()->rawArrayFunctions->getData(palette));
        std::uint64_t state = 2024;
        for (mint i = 0; i < kColors; ++i) {
            state = state * 6364136223846793005ULL + 1442695040888963407ULL;
            const std::size_t pixel = (state >> 24) % (kSide * kSide);
            std::memcpy(colors + i * 3, samples.data() + pixel * 3, 3);
        }
    }
    ~Inputs() {
        host()->imageFunctions->free(image);
        host()->rawArrayFunctions->free(palette);
    }
};

void ditherImage(benchmark::State &state, const char *method) {
    static const Inputs inputs;
    const RhValue args[5] = {{RH_IMAGE, {.image = inputs.image}, 0},
                             {RH_RAW_ARRAY, {.rawArray = inputs.palette}, 0},
                             {RH_STRING, {.string = method}, 0},
                             {RH_BOOLEAN, {.boolean = 0}, 0},
                             {RH_BOOLEAN, {.boolean = 0}, 0}};
    for (auto _ : state) {
        RhValue result{RH_IMAGE, {}, 0};
        if (rh_call(tarvex_bench::benchPlugin(), "DitherImage", 5, args, &result) != 0) {
            state.SkipWithError("DitherImage failed");
            break;
        }
        host()->imageFunctions->free(result.value.image);
    }
    state.counters["Mpixel/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kSide * kSide / 1e6, benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK_CAPTURE(ditherImage, None, "None")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(ditherImage, FloydSteinberg, "FloydSteinberg")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

BENCHMARK_MAIN();
