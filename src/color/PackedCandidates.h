#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TARVEX_WIDE_VECTORS 1
#else
#define TARVEX_WIDE_VECTORS 0
#endif

namespace ColorUtilities {

// The colours of a palette of at most 256 colours of byte samples (one to
// four channels), each packed into four bytes: its samples as offsets from
// the type's lowest value, unused channels 0. A few candidates, named by
// their indices in one 64-bit word, are then compared with a target packed
// the same way all at once, in a few vector instructions and without a
// branch that depends on the colours. The table stays in the processor's
// nearest cache.
class PackedCandidates {
public:
    // Seven indices in the low seven bytes of a word; the top byte is the
    // caller's. A shorter list repeats its first index.
    static constexpr std::uint32_t kCapacity = 7;

    // Wide vectors, where the processor has them, take all seven colours
    // in one register and fetch them in one instruction.
    explicit PackedCandidates(bool wide = wideVectors()) : wide_(wide && wideVectors()) {}

    static bool wideVectors() {
#if TARVEX_WIDE_VECTORS
        return __builtin_cpu_supports("avx2");
#else
        return false;
#endif
    }

    void add(std::uint32_t packedColor) { colors_[size_++] = packedColor; }

    static std::uint64_t candidates(const std::uint32_t *indices, std::uint32_t count) {
        std::uint64_t word = 0;
        for (std::uint32_t lane = kCapacity; lane-- > 0;) word = word << 8 | indices[lane < count ? lane : 0];
        return word;
    }

    // The index that the exhaustive search answers among the candidates:
    // least distance, then nearer in the first channel that differs, then
    // the lower index.
    [[gnu::always_inline]] std::uint32_t nearest(std::uint64_t candidates, std::uint32_t target) const {
#if TARVEX_WIDE_VECTORS
        if (wide_) return nearestWide(candidates, target);
#endif
#if defined(__SSE2__)
        const auto lane = [&](int i) { return static_cast<int>(colors_[candidates >> (8 * i) & 0xFF]); };
        const __m128i wanted = _mm_set1_epi32(static_cast<int>(target));
        const __m128i low = keysOf(_mm_setr_epi32(lane(0), lane(1), lane(2), lane(3)), wanted,
                                   _mm_setr_epi32(index(candidates, 0), index(candidates, 1),
                                                  index(candidates, 2), index(candidates, 3)));
        const __m128i high = keysOf(_mm_setr_epi32(lane(4), lane(5), lane(6), lane(0)), wanted,
                                    _mm_setr_epi32(index(candidates, 4), index(candidates, 5),
                                                   index(candidates, 6), index(candidates, 0)));
        __m128i least = smaller(low, high);
        least = smaller(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(1, 0, 3, 2)));
        least = smaller(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(2, 3, 0, 1)));
        // Another colour at the same distance leaves the choice to the
        // channels, which the keys do not hold.
        const __m128i distance = _mm_srli_epi32(least, kIndexBits);
        const auto rival = [&](__m128i keys) {
            return _mm_andnot_si128(_mm_cmpeq_epi32(keys, least),
                                    _mm_cmpeq_epi32(_mm_srli_epi32(keys, kIndexBits), distance));
        };
        if (_mm_movemask_epi8(_mm_or_si128(rival(low), rival(high))) == 0) [[likely]]
            return static_cast<std::uint32_t>(_mm_cvtsi128_si32(least)) & 0xFF;
#endif
        return nearestOneByOne(candidates, target);
    }

    // The same answer, one candidate after the other.
    std::uint32_t nearestOneByOne(std::uint64_t candidates, std::uint32_t target) const {
        std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
        for (std::uint32_t i = 0; i < kCapacity; ++i)
            least = std::min(least, orderOf(static_cast<std::uint32_t>(index(candidates, i)), target));
        return static_cast<std::uint32_t>(least & 0xFF);
    }

private:
#if TARVEX_WIDE_VECTORS
    // Lane 7 repeats lane 0, as shorter lists do.
    [[gnu::target("avx2"), gnu::noinline]] std::uint32_t nearestWide(std::uint64_t candidates,
                                                                   std::uint32_t target) const {
        const auto eight = static_cast<long long>(candidates | candidates << 56);
        const __m256i indices = _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(eight));
        const auto lane = [&](int i) { return static_cast<int>(colors_[candidates >> (8 * (i % 7)) & 0xFF]); };
        const __m256i colors =
            _mm256_setr_epi32(lane(0), lane(1), lane(2), lane(3), lane(4), lane(5), lane(6), lane(0));
        const __m256i wanted = _mm256_set1_epi32(static_cast<int>(target));
        const __m256i apart =
            _mm256_or_si256(_mm256_subs_epu8(colors, wanted), _mm256_subs_epu8(wanted, colors));
        const __m256i even = _mm256_and_si256(apart, _mm256_set1_epi16(0xFF));
        const __m256i odd = _mm256_srli_epi16(apart, 8);
        const __m256i distances = _mm256_add_epi32(_mm256_madd_epi16(even, even), _mm256_madd_epi16(odd, odd));
        const __m256i keys = _mm256_or_si256(_mm256_slli_epi32(distances, kIndexBits), indices);
        __m128i least = _mm_min_epu32(_mm256_castsi256_si128(keys), _mm256_extracti128_si256(keys, 1));
        least = _mm_min_epu32(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(1, 0, 3, 2)));
        least = _mm_min_epu32(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(2, 3, 0, 1)));
        const __m256i best = _mm256_broadcastd_epi32(least);
        const __m256i rivals = _mm256_andnot_si256(
            _mm256_cmpeq_epi32(keys, best),
            _mm256_cmpeq_epi32(_mm256_srli_epi32(keys, kIndexBits), _mm256_srli_epi32(best, kIndexBits)));
        if (_mm256_testz_si256(rivals, rivals)) [[likely]]
            return static_cast<std::uint32_t>(_mm_cvtsi128_si32(least)) & 0xFF;
        // Among the colours at the least distance: the channel differences,
        // first channel highest, then the index.
        const __m256i nearest = _mm256_cmpeq_epi32(_mm256_srli_epi32(keys, kIndexBits), _mm256_srli_epi32(best, kIndexBits));
        const __m256i firstHighest = _mm256_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12,
                                                      3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
        const __m256i channels = _mm256_or_si256(_mm256_shuffle_epi8(apart, firstHighest),
                                                 _mm256_andnot_si256(nearest, _mm256_set1_epi32(-1)));
        const __m256i fewest = _mm256_set1_epi32(static_cast<int>(leastOf(channels)));
        const __m256i alike = _mm256_cmpeq_epi32(channels, fewest);
        const __m256i others = _mm256_andnot_si256(alike, _mm256_set1_epi32(-1));
        return leastOf(_mm256_or_si256(_mm256_and_si256(indices, alike), others)) & 0xFF;
    }

    [[gnu::target("avx2"), gnu::always_inline]] static std::uint32_t leastOf(__m256i values) {
        __m128i least = _mm_min_epu32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
        least = _mm_min_epu32(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(1, 0, 3, 2)));
        least = _mm_min_epu32(least, _mm_shuffle_epi32(least, _MM_SHUFFLE(2, 3, 0, 1)));
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(least));
    }
#endif

    // A key is the squared distance (at most 18 bits) above the index.
    static constexpr int kIndexBits = 8;

    static int index(std::uint64_t candidates, int lane) {
        return static_cast<int>(candidates >> (8 * lane) & 0xFF);
    }

    // The exhaustive search's whole order in one number: distance, the four
    // channel differences, the index.
    std::uint64_t orderOf(std::uint32_t i, std::uint32_t target) const {
        std::uint64_t distance = 0, differences = 0;
        for (int k = 0; k < 4; ++k) {
            const std::int32_t d = static_cast<std::int32_t>(colors_[i] >> (8 * k) & 0xFF) -
                                   static_cast<std::int32_t>(target >> (8 * k) & 0xFF);
            distance += static_cast<std::uint64_t>(d * d);
            differences = differences << 8 | static_cast<std::uint64_t>(std::abs(d));
        }
        return (distance << 32 | differences) << 8 | i;
    }

#if defined(__SSE2__)
    // Four squared distances, each above its colour's index. The channels'
    // differences are bytes of their colour's lane: the even and the odd
    // ones, widened in place, are squared and summed pairwise within it.
    static __m128i keysOf(__m128i colors, __m128i wanted, __m128i indices) {
        const __m128i apart = _mm_or_si128(_mm_subs_epu8(colors, wanted), _mm_subs_epu8(wanted, colors));
        const __m128i even = _mm_and_si128(apart, _mm_set1_epi16(0xFF));
        const __m128i odd = _mm_srli_epi16(apart, 8);
        const __m128i distances = _mm_add_epi32(_mm_madd_epi16(even, even), _mm_madd_epi16(odd, odd));
        return _mm_or_si128(_mm_slli_epi32(distances, kIndexBits), indices);
    }

    // Keys are positive, so the signed comparison orders them.
    static __m128i smaller(__m128i a, __m128i b) {
        const __m128i greater = _mm_cmpgt_epi32(a, b);
        return _mm_or_si128(_mm_and_si128(greater, b), _mm_andnot_si128(greater, a));
    }
#endif

    std::array<std::uint32_t, 256> colors_{};
    std::size_t size_ = 0;
    bool wide_;
};

}  // namespace ColorUtilities
