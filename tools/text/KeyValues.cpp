#include "KeyValues.h"

#include <limits>
#include <stdexcept>

#include "NumberText.h"

namespace tarvex_cli {

std::vector<KeyValue> splitKeyValues(std::string_view text) {
    std::vector<KeyValue> items;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(',', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view item = text.substr(start, end - start);
        if (item.empty()) throw std::invalid_argument("empty option in '" + std::string(text) + "'");
        std::size_t equals = item.find('=');
        KeyValue option{std::string(item.substr(0, equals)),
                        equals == std::string_view::npos ? "" : std::string(item.substr(equals + 1)),
                        equals != std::string_view::npos};
        for (const KeyValue &earlier : items)
            if (earlier.key == option.key) throw std::invalid_argument("option '" + option.key + "' given twice");
        items.push_back(std::move(option));
        start = end + 1;
    }
    return items;
}

mint parseCount(const KeyValue &option, mint minimum) {
    auto value = parseInt64(option.value);
    if (!option.hasValue || !value || *value < minimum)
        throw std::invalid_argument("'" + option.key + "' needs a whole number of at least " +
                                    std::to_string(minimum) + " (" + option.key + "=N)");
    return *value;
}

std::vector<mint> parseDimensions(std::string_view text) {
    std::vector<mint> extents;
    std::size_t start = 0;
    while (true) {
        std::size_t end = text.find('x', start);
        auto extent = parseInt64(text.substr(start, end == std::string_view::npos ? end : end - start));
        if (!extent || *extent < 0)
            throw std::invalid_argument("dimensions must look like 2x3x4, not '" + std::string(text) + "'");
        extents.push_back(*extent);
        if (end == std::string_view::npos) return extents;
        start = end + 1;
    }
}

std::size_t checkedByteCount(const std::vector<mint> &extents, std::size_t elementSize) {
    std::size_t total = elementSize;
    for (mint extent : extents) {
        if (extent < 0 || __builtin_mul_overflow(total, static_cast<std::size_t>(extent), &total) ||
            total > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()))
            throw std::invalid_argument("the array is too large");
    }
    return total;
}

}  // namespace tarvex_cli
