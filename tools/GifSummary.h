#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarvex_cli {

// What the plug-in's import readers say about a GIF file, gathered for the
// import commands.
struct GifFrameFacts {
    long width = 0, height = 0, left = 0, top = 0;
    std::optional<double> delaySeconds;  // none: the file gives no delay
    std::string disposal;                // "None", "Background", "Previous" or "" (unspecified)
    std::optional<std::vector<int>> transparentColor;
    long channels = 3;
    long localPaletteSize = 0;  // 0: the frame uses the global palette
    bool userInput = false;
};

struct GifFacts {
    long width = 0, height = 0, frameCount = 0;
    std::optional<std::vector<int>> background;  // none: no global palette
    std::optional<long> repetitions;             // none: loops forever
    std::vector<std::string> comments;
    long globalPaletteSize = 0;
    std::vector<GifFrameFacts> frames;
    // The readers' answers as they were written.
    std::string fileMetadata, frameMetadata, palettes;
};

GifFacts readGifFacts(const std::string &file);

}  // namespace tarvex_cli
