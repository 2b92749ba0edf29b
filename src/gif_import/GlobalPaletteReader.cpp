#include <array>

#include "gif_import/DecodedFile.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "gif_import/NamedFileReader.h"

namespace GifImport {
namespace {

int createPaletteTensor(OstrelUtils::IntegerTensor &tensor, const Palette &palette) {
    if (palette.empty()) {
        const std::array<mint, 1> empty{0};
        return tensor.create(empty);
    }
    const std::array<mint, 2> rows{static_cast<mint>(palette.size()), 3};
    if (int code = tensor.create(rows); code != 0) return code;
    mint *out = tensor.data();
    for (PackedColor color : palette) {
        *out++ = red(color);
        *out++ = green(color);
        *out++ = blue(color);
    }
    return 0;
}

int globalPalette(OstrelUtils::MArgumentManager &arguments, const std::string &fileName) {
    Decoder *decoder = nullptr;
    if (int code = decodedWithFrames(fileName, decoder); code != Success) return code;
    OstrelUtils::IntegerTensor tensor;
    if (int code = createPaletteTensor(tensor, decoder->globalPalette); code != 0) return code;
    arguments.setTensor(tensor);
    return Success;
}

}  // namespace

int readGlobalPalette(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, result, 1, globalPalette);
}

}  // namespace GifImport
