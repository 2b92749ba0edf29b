#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

namespace GifImport {

// The palette indices of one image, row-major, taken over from giflib's
// decode (which allocates them with malloc) instead of being copied.
class Raster {
public:
    Raster() = default;
    Raster(std::uint8_t *bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::size_t size() const { return size_; }
    const std::uint8_t *data() const { return bytes_.get(); }
    std::span<const std::uint8_t> bytes() const { return {bytes_.get(), size_}; }

private:
    struct Free {
        void operator()(std::uint8_t *bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::uint8_t, Free> bytes_;
    std::size_t size_ = 0;
};

}  // namespace GifImport
