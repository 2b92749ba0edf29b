#include <string>
#include <vector>

#include "gif_import/ImportExports.h"
#include "gif_import/LinkAnswer.h"

namespace GifImport {
namespace {

void writeSize(LinkWriter &out, std::uint32_t first, std::uint32_t second) {
    out.function("List", 2);
    out.integer(first);
    out.integer(second);
}

void writeBackground(LinkWriter &out, const Decoder &decoder) {
    if (!decoder.hasGlobalPalette()) return out.symbol("None");
    const std::int32_t index = decoder.backgroundIndex;
    out.rgbColor(index >= 0 ? decoder.globalPalette[static_cast<std::size_t>(index)]
                            : packColor(0, 0, 0, 0));
}

void writeRepetitions(LinkWriter &out, std::int32_t loopCount) {
    if (loopCount > 0) return out.integer(loopCount);
    if (loopCount == 0) return out.symbol("Infinity");
    out.integer(1);
}

std::vector<std::string> allComments(const Decoder &decoder) {
    std::vector<std::string> comments;
    for (const auto &frame : decoder.frames)
        comments.insert(comments.end(), frame->comments.begin(), frame->comments.end());
    comments.insert(comments.end(), decoder.fileComments.begin(), decoder.fileComments.end());
    return comments;
}

void writeComments(LinkWriter &out, const std::vector<std::string> &comments) {
    if (comments.empty()) return out.symbol("None");
    if (comments.size() == 1) return out.utf8(comments.front());
    out.function("List", static_cast<int>(comments.size()));
    for (const std::string &comment : comments) out.utf8(comment);
}

void writeFileMetadata(LinkWriter &out, const Decoder &decoder) {
    out.function("List", 5);
    out.rule("ImageSize");
    writeSize(out, decoder.canvasWidth, decoder.canvasHeight);
    out.rule("ImageCount");
    out.integer(decoder.frameCount);
    out.rule("Background");
    writeBackground(out, decoder);
    out.rule("AnimationRepetitions");
    writeRepetitions(out, decoder.loopCount);
    out.rule("Comments");
    writeComments(out, allComments(decoder));
}

void writeTransparentColor(LinkWriter &out, const Frame &frame, const Decoder &decoder) {
    if (!frame.hasTransparentIndex()) return out.symbol("None");
    const auto index = static_cast<std::size_t>(frame.transparentIndex);
    if (index < frame.localPalette.size()) return out.rgbColor(frame.localPalette[index]);
    if (index < decoder.globalPalette.size()) return out.rgbColor(decoder.globalPalette[index]);
    throw LinkWriteFailed();
}

void writeDisposal(LinkWriter &out, Disposal disposal) {
    switch (disposal) {
    case Keep: return out.string("None");
    case RestoreBackground: return out.string("Background");
    case RestorePrevious: return out.string("Previous");
    default:
        out.function("Missing", 1);
        out.string("NotAvailable");
    }
}

void writeDuration(LinkWriter &out, std::uint32_t delayMilliseconds) {
    // A frame without delay is reported as shown forever.
    if (delayMilliseconds == 0) return out.symbol("Infinity");
    out.real(delayMilliseconds / 1000.0);
}

void writeFrame(LinkWriter &out, const Frame &frame, const Decoder &decoder) {
    out.function("List", 7);
    out.rule("ImageSize");
    writeSize(out, frame.width, frame.height);
    out.rule("Channels");
    out.integer(frame.channels(decoder.canvasPixelCount));
    out.rule("ImageOffset");
    writeSize(out, frame.left, frame.top);
    out.rule("TransparentColor");
    writeTransparentColor(out, frame, decoder);
    out.rule("DisposalOperation");
    writeDisposal(out, frame.disposal);
    out.rule("DisplayDurations");
    writeDuration(out, frame.delayMilliseconds);
    out.rule("UserInputFlag");
    out.symbol(frame.userInputFlag == 1 ? "True" : "False");
}

void writeFrameMetadata(LinkWriter &out, const Decoder &decoder) {
    out.function("List", static_cast<int>(decoder.frames.size()));
    for (const auto &frame : decoder.frames) writeFrame(out, *frame, decoder);
}

}  // namespace

int readFileMetadata(ZvLINK link) { return answerOverLink(link, writeFileMetadata); }

int readFrameMetadata(ZvLINK link) { return answerOverLink(link, writeFrameMetadata); }

}  // namespace GifImport
