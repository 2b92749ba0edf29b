#pragma once

#include <memory>
#include <stdexcept>
#include <string_view>

#include "dither/Ditherer.h"
#include "dither/FloydSteinberg.h"

namespace ColorUtilities {

namespace detail {

template <typename T, int N, typename Source>
std::unique_ptr<Ditherer<T, N>> makeDithererFrom(std::string_view methodName, Source &&source,
                                                 std::uint32_t rows, std::uint32_t cols,
                                                 bool cacheFlag, bool sortedFlag) {
    if (methodName == "None")
        return std::make_unique<Ditherer<T, N>>(std::forward<Source>(source), rows, cols, cacheFlag,
                                                sortedFlag);
    if (methodName == "FloydSteinberg")
        return std::make_unique<FloydSteinberg<T, N>>(std::forward<Source>(source), rows, cols,
                                                      cacheFlag, sortedFlag);
    throw std::runtime_error("Invalid dithering method");
}

}  // namespace detail

// The method by exact, case-sensitive name: "None" or "FloydSteinberg".
template <typename T, int N>
std::unique_ptr<Ditherer<T, N>> makeDitherer(std::string_view methodName,
                                             SharedPalette<T, N> palette, std::uint32_t rows,
                                             std::uint32_t cols, bool cacheFlag, bool sortedFlag) {
    return detail::makeDithererFrom<T, N, SharedPalette<T, N>>(methodName, std::move(palette), rows,
                                                               cols, cacheFlag, sortedFlag);
}

template <typename T, int N>
std::unique_ptr<Ditherer<T, N>> makeDitherer(std::string_view methodName,
                                             const Quant::Quantizer<T, N> &quantizer,
                                             std::uint32_t rows, std::uint32_t cols, bool cacheFlag,
                                             bool sortedFlag) {
    return detail::makeDithererFrom<T, N, const Quant::Quantizer<T, N> &>(
        methodName, quantizer, rows, cols, cacheFlag, sortedFlag);
}

}  // namespace ColorUtilities
