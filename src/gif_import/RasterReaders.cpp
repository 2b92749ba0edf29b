#include <vector>

#include "gif_import/ImportExports.h"
#include "gif_import/LinkAnswer.h"

namespace GifImport {
namespace {

std::vector<std::uint8_t> rgbRows(const Palette &palette) {
    std::vector<std::uint8_t> rows;
    rows.reserve(palette.size() * 3);
    for (PackedColor color : palette) rows.insert(rows.end(), {red(color), green(color), blue(color)});
    return rows;
}

void writePalettes(LinkWriter &out, const Decoder &decoder) {
    out.function("List", static_cast<int>(decoder.frames.size()));
    for (const auto &frame : decoder.frames) {
        // The global palette is deliberately not substituted for a missing one.
        if (frame->localPalette.empty()) {
            out.symbol("None");
            continue;
        }
        out.byteArray(rgbRows(frame->localPalette), {static_cast<int>(frame->localPalette.size()), 3});
    }
}

void writeRasters(LinkWriter &out, const Decoder &decoder) {
    out.function("List", static_cast<int>(decoder.frames.size()));
    for (const auto &frame : decoder.frames)
        out.byteArray(frame->raster.bytes(), {static_cast<int>(frame->height), static_cast<int>(frame->width)});
}

}  // namespace

int readPalettes(ZvLINK link) { return answerOverLink(link, writePalettes); }

int readRasterBits(ZvLINK link) { return answerOverLink(link, writeRasters); }

}  // namespace GifImport
