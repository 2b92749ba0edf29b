#include "gif_import/ExtensionScan.h"

namespace GifImport {
namespace {

bool isLoopSubBlock(const ExtensionBlock &block) {
    // Bytes 1 and 2 hold the count; a shorter sub-block has none to read.
    return block.Function == CONTINUE_EXT_FUNC_CODE && block.ByteCount >= 3;
}

std::int32_t loopCountOf(const ExtensionBlock &subBlock) {
    const int repetitions = subBlock.Bytes[1] | (subBlock.Bytes[2] << 8);
    // Zero asks for endless looping; otherwise the first showing counts too.
    return repetitions == 0 ? 0 : repetitions + 1;
}

}  // namespace

void scanExtensions(const ExtensionBlock *blocks, int blockCount, std::int32_t &loopCount,
                    std::vector<std::string> &comments) {
    for (int i = 0; i < blockCount; ++i) {
        const ExtensionBlock &block = blocks[i];
        if (block.Function == APPLICATION_EXT_FUNC_CODE) {
            // The application name is not compared: any application block
            // followed by a sub-block is read as a loop count, the last winning.
            if (i + 1 < blockCount && isLoopSubBlock(blocks[i + 1]))
                loopCount = loopCountOf(blocks[i + 1]);
        } else if (block.Function == COMMENT_EXT_FUNC_CODE) {
            // Continuation sub-blocks of a long comment are not appended.
            if (block.ByteCount > 0)
                comments.emplace_back(reinterpret_cast<const char *>(block.Bytes),
                                      static_cast<std::size_t>(block.ByteCount));
            else
                comments.emplace_back();
        }
    }
}

}  // namespace GifImport
