// ImageQuantize and UniqueColors through the reference host, on photographs:
// each NAME.rgb (2048 x 2048 8-bit RGB) in the directory named by
// TARVEX_BENCH_PHOTOS. Every method at 16 and 256 colours, mapped without
// and with Floyd-Steinberg, and both colour counts. bench/compare_quantize.sh
// prepares the files from Debian's sample photographs and sets the peers'
// times beside these.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "BenchPlugin.h"
#include "refhost/refhost.h"

namespace {

constexpr mint kSide = 2048;

QuorbelLibraryData host() { return rh_library_data(RH_TABLE_FULL); }

struct Photo {
    MImage image = nullptr;

    explicit Photo(const std::filesystem::path &rgbFile) {
        std::ifstream in(rgbFile, std::ios::binary);
        const std::vector<char> samples{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        if (samples.size() != kSide * kSide * 3) {
            std::fprintf(stderr, "%s: expected %lldx%lld RGB samples\n", rgbFile.c_str(),
                         static_cast<long long>(kSide), static_cast<long long>(kSide));
            std::exit(1);
        }
        rh_image_new(0, kSide, kSide, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image);
        std::memcpy(host()->imageFunctions->getRawData(image), samples.data(), samples.size());
    }
    Photo(const Photo &) = delete;
    Photo &operator=(const Photo &) = delete;
    ~Photo() { host()->imageFunctions->free(image); }
};

void reportPixels(benchmark::State &state) {
    state.counters["Mpixel/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kSide * kSide / 1e6, benchmark::Counter::kIsRate);
}

void imageQuantize(benchmark::State &state, const Photo *photo, mint method, mint colors,
                   const char *dither) {
    const RhValue args[6] = {{RH_IMAGE, {.image = photo->image}, 0},
                             {RH_INTEGER, {.integer = colors}, 0},
                             {RH_STRING, {.string = dither}, 0},
                             {RH_BOOLEAN, {.boolean = 0}, 0},
                             {RH_INTEGER, {.integer = method}, 0},
                             {RH_INTEGER, {.integer = 6}, 0}};
    for (auto _ : state) {
        RhValue result{RH_RAW_ARRAY, {}, 0};
        if (rh_call(tarvex_bench::benchPlugin(), "ImageQuantize", 6, args, &result) != 0) {
            state.SkipWithError("ImageQuantize failed");
            break;
        }
        host()->rawArrayFunctions->free(result.value.rawArray);
    }
    reportPixels(state);
}

void uniqueColors(benchmark::State &state, const Photo *photo, bool ordered) {
    const RhValue args[2] = {{RH_IMAGE, {.image = photo->image}, 0}, {RH_BOOLEAN, {.boolean = ordered}, 0}};
    for (auto _ : state) {
        RhValue result{RH_INTEGER, {}, 0};
        if (rh_call(tarvex_bench::benchPlugin(), "UniqueColors", 2, args, &result) != 0) {
            state.SkipWithError("UniqueColors failed");
            break;
        }
    }
    reportPixels(state);
}

void registerPhoto(const std::string &name, const Photo *photo) {
    const struct {
        const char *name;
        mint number;
    } methods[] = {{"median-cut", 1}, {"wu", 2}, {"octree", 3}};
    for (const auto &method : methods)
        for (mint colors : {16, 256})
            for (const char *dither : {"None", "FloydSteinberg"})
                benchmark::RegisterBenchmark(("ImageQuantize/" + name + "/" + method.name + "/" +
                                              std::to_string(colors) + "/" + dither)
                                                 .c_str(),
                                             imageQuantize, photo, method.number, colors, dither)
                    ->Unit(benchmark::kMillisecond)
                    ->UseRealTime();
    for (bool ordered : {false, true})
        benchmark::RegisterBenchmark(("UniqueColors/" + name + (ordered ? "/ordered" : "/hashed")).c_str(),
                                     uniqueColors, photo, ordered)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    const char *directory = std::getenv("TARVEX_BENCH_PHOTOS");
    if (directory == nullptr) {
        std::printf("quantize_benchmark: no photographs (set TARVEX_BENCH_PHOTOS, as "
                    "bench/compare_quantize.sh does); nothing measured\n");
        return 0;
    }
    std::vector<std::unique_ptr<Photo>> photos;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        if (entry.path().extension() != ".rgb") continue;
        registerPhoto(entry.path().stem().string(),
                      photos.emplace_back(std::make_unique<Photo>(entry.path())).get());
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
