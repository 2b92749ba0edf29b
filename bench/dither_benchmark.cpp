// DitherImage through the reference host, on photographs: each NAME.rgb in
// the directory named by TARVEX_BENCH_PHOTOS (2048 x 2048 8-bit RGB) mapped
// to the 256 colours of NAME.pal, with both methods. bench/compare_dither.sh
// prepares the files from Debian's sample photographs. The same photographs
// widened to 16-bit samples with a fourth channel are mapped to 65,536 of
// their own colours, the largest palettes the search meets.
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

RhPlugin *plugin() { return tarvex_bench::benchPlugin(); }

QuorbelLibraryData host() { return rh_library_data(RH_TABLE_FULL); }

std::vector<std::uint8_t> readFile(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// One photograph and its palette as host objects.
struct Photo {
    MImage image = nullptr;
    MRawArray palette = nullptr;

    explicit Photo(const std::filesystem::path &rgbFile) {
        const std::vector<std::uint8_t> samples = readFile(rgbFile);
        std::filesystem::path paletteFile = rgbFile;
        const std::vector<std::uint8_t> colors = readFile(paletteFile.replace_extension(".pal"));
        if (samples.size() != kSide * kSide * 3 || colors.empty() || colors.size() % 3 != 0) {
            std::fprintf(stderr, "%s: expected %lldx%lld RGB samples and a palette beside them\n",
                         rgbFile.c_str(), static_cast<long long>(kSide),
                         static_cast<long long>(kSide));
            std::exit(1);
        }
        rh_image_new(0, kSide, kSide, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image);
        std::memcpy(host()->imageFunctions->getRawData(image), samples.data(), samples.size());
        const mint dimensions[] = {static_cast<mint>(colors.size() / 3), 3};
        host()->rawArrayFunctions->create(MRawArray_Type_UBit8, 2, dimensions, &palette);
        std::memcpy(host()->rawArrayFunctions->getData(palette), colors.data(), colors.size());
    }
    // 16 bits, four channels: red, green, blue and their mean, and a palette
    // of 65,536 pixels picked from it.
    Photo(const Photo &eightBit, std::uint32_t colorCount) {
        const auto *rgb = static_cast<const std::uint8_t *>(host()->imageFunctions->getRawData(eightBit.image));
        rh_image_new(0, kSide, kSide, 4, MImage_Type_Bit16, MImage_CS_CMYK, 1, 0, &image);
        auto *wide = static_cast<std::uint16_t *>(host()->imageFunctions->getRawData(image));
        for (mint i = 0; i < kSide * kSide; ++i) {
            for (int k = 0; k < 3; ++k) wide[i * 4 + k] = static_cast<std::uint16_t>(rgb[i * 3 + k] * 257);
            wide[i * 4 + 3] = static_cast<std::uint16_t>((wide[i * 4] + wide[i * 4 + 1] + wide[i * 4 + 2]) / 3);
        }
        const mint dimensions[] = {colorCount, 4};
        host()->rawArrayFunctions->create(MRawArray_Type_UBit16, 2, dimensions, &palette);
        auto *colors = static_cast<std::uint16_t *>(host()->rawArrayFunctions->getData(palette));
        std::uint64_t state = 2024;
        for (std::uint32_t c = 0; c < colorCount; ++c) {
            state = state * 6364136223846793005ULL + 1442695040888963407ULL;
            std::memcpy(colors + c * 4, wide + (state >> 33) % (kSide * kSide) * 4, 8);
        }
    }
    Photo(const Photo &) = delete;
    Photo &operator=(const Photo &) = delete;
    ~Photo() {
        host()->imageFunctions->free(image);
        host()->rawArrayFunctions->free(palette);
    }
};

void ditherImage(benchmark::State &state, const Photo *photo, const char *method) {
    const RhValue args[5] = {{RH_IMAGE, {.image = photo->image}, 0},
                             {RH_RAW_ARRAY, {.rawArray = photo->palette}, 0},
                             {RH_STRING, {.string = method}, 0},
                             {RH_BOOLEAN, {.boolean = 0}, 0},
                             {RH_BOOLEAN, {.boolean = 0}, 0}};
    for (auto _ : state) {
        RhValue result{RH_IMAGE, {}, 0};
        if (rh_call(plugin(), "DitherImage", 5, args, &result) != 0) {
            state.SkipWithError("DitherImage failed");
            break;
        }
        host()->imageFunctions->free(result.value.image);
    }
    state.counters["Mpixel/s"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kSide * kSide / 1e6, benchmark::Counter::kIsRate);
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    const char *directory = std::getenv("TARVEX_BENCH_PHOTOS");
    if (directory == nullptr) {
        std::printf("dither_benchmark: no photographs (set TARVEX_BENCH_PHOTOS, as "
                    "bench/compare_dither.sh does); nothing measured\n");
        return 0;
    }
    std::vector<std::unique_ptr<Photo>> photos;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        if (entry.path().extension() != ".rgb") continue;
        const Photo *photo = photos.emplace_back(std::make_unique<Photo>(entry.path())).get();
        const std::string name = entry.path().stem().string();
        const Photo *wide = photos.emplace_back(std::make_unique<Photo>(*photo, 65536)).get();
        for (const char *method : {"None", "FloydSteinberg"}) {
            benchmark::RegisterBenchmark(("DitherImage/" + name + "/" + method).c_str(), ditherImage,
                                         photo, method)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
            benchmark::RegisterBenchmark(("DitherImage/" + name + "-16bit-4ch-65536/" + method).c_str(),
                                         ditherImage, wide, method)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
