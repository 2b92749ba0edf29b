#include <array>

#include "gif_import/DecodedFile.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "gif_import/NamedFileReader.h"

namespace GifImport {
namespace {

// A host tensor freed unless handed to the kernel.
class OwnedTensor {
public:
    explicit OwnedTensor(QuorbelLibraryData library) : library_(library) {}
    ~OwnedTensor() {
        if (tensor_ != nullptr) library_->tensorFree(tensor_);
    }
    OwnedTensor(const OwnedTensor &) = delete;
    OwnedTensor &operator=(const OwnedTensor &) = delete;

    int create(mint rank, const mint *dimensions) {
        return library_->tensorNew(MTensor_Type_Integer, rank, dimensions, &tensor_);
    }
    mint *data() const { return library_->tensorGetIntegerData(tensor_); }
    void passToResult(MArgument result) {
        MArgument_setMTensor(result, tensor_);
        tensor_ = nullptr;
    }

private:
    QuorbelLibraryData library_;
    MTensor tensor_ = nullptr;
};

int createPaletteTensor(OwnedTensor &tensor, const Palette &palette) {
    if (palette.empty()) {
        const std::array<mint, 1> empty{0};
        return tensor.create(1, empty.data());
    }
    const std::array<mint, 2> rows{static_cast<mint>(palette.size()), 3};
    if (int code = tensor.create(2, rows.data()); code != 0) return code;
    mint *out = tensor.data();
    for (PackedColor color : palette) {
        *out++ = red(color);
        *out++ = green(color);
        *out++ = blue(color);
    }
    return 0;
}

int globalPalette(QuorbelLibraryData library, const std::string &fileName, MArgument result) {
    Decoder *decoder = nullptr;
    if (int code = decodedWithFrames(fileName, decoder); code != Success) return code;
    OwnedTensor tensor(library);
    if (int code = createPaletteTensor(tensor, decoder->globalPalette); code != 0) return code;
    tensor.passToResult(result);
    return Success;
}

}  // namespace

int readGlobalPalette(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, 1, [&](QuorbelLibraryData library, const std::string &fileName) {
        return globalPalette(library, fileName, result);
    });
}

}  // namespace GifImport
