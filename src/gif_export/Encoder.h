#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gif_export/ColorMap.h"
#include "gif_export/ExportFrame.h"

namespace GifExport {

// Everything one GIF file needs between the checked arguments and the bytes
// on disk, written through giflib in a fixed order.
class Encoder {
public:
    Encoder() = default;
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;
    virtual ~Encoder();

    // Every frame covers the whole screen.
    void setSize(std::uint32_t frames, std::uint32_t height, std::uint32_t width);
    void setChannels(int channels) { channels_ = channels; }
    // Creates or truncates the file: later failures leave it on disk.
    void open(const std::string &fileName);
    // Appends the non-empty pieces of a separator-joined list.
    void addComments(std::string_view joined);

    void setBackgroundColor(const GifColorType &color) { background_ = color; }
    void setDither(bool dither) { dither_ = dither; }
    void setLoopCount(std::uint32_t loops) { loopCount_ = loops; }
    void setInterlace(bool interlace) { interlace_ = interlace; }
    // One caller's map for every frame.
    void setGlobalMap(ColorMapOwner map);

    std::vector<ExportFrame> &frames() noexcept { return frames_; }
    std::uint32_t frameCount() const noexcept { return frameCount_; }
    int channels() const noexcept { return channels_; }
    const std::vector<std::string> &comments() const noexcept { return comments_; }

    // Indices and maps from 8-bit samples, `channels` per pixel, frame after frame.
    void buildColorMaps(const std::uint8_t *samples);
    void resolveBackground();
    void resolveTransparency();
    // 0, or -9 when giflib failed, -10 for any other failure.
    signed char write();

    bool usesGlobalMap() const noexcept { return useGlobalMap_; }
    const ColorMapObject *globalMap() const noexcept { return globalMap_; }
    int backgroundIndex() const noexcept { return backgroundIndex_; }

private:
    struct StreamCloser {
        void operator()(std::FILE *stream) const noexcept { std::fclose(stream); }
    };

    void buildRgbMaps(const std::uint8_t *samples);
    void buildGreyMap(const std::uint8_t *samples);
    void writeBlocks(GifFileType *gif);
    void writeLoopBlock(GifFileType *gif);
    void writeFrame(GifFileType *gif, const ExportFrame &frame);
    void writeRows(GifFileType *gif, const ExportFrame &frame);

    std::unique_ptr<std::FILE, StreamCloser> stream_;
    std::vector<ExportFrame> frames_;
    std::optional<GifColorType> background_;
    bool useGlobalMap_ = false;
    bool interlace_ = false;
    bool dither_ = true;
    std::vector<std::string> comments_;
    ColorMapOwner ownedGlobalMap_;
    ColorMapObject *globalMap_ = nullptr;
    int backgroundIndex_ = -1;
    std::uint32_t height_ = 0;
    std::uint32_t width_ = 0;
    std::uint32_t frameCount_ = 0;
    int channels_ = 3;
    std::uint32_t loopCount_ = 0;
};

}  // namespace GifExport
