// Images: zero-filled sample buffers with the geometry the SDK describes.

#include <memory>

#include "Books.h"
#include "Faults.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

struct ImageShape {
    MImage_Data_Type type = MImage_Type_Undefined;
    mint rank = 2;
    mint slices = 1;
    mint rows = 0;
    mint columns = 0;
    mint channels = 0;
    MImage_CS_Type colorSpace = MImage_CS_Automatic;
    bool interleaved = true;
    bool alpha = false;
};

struct ImageObject : ImageShape {
    std::size_t byteCount = 0;
    SampleBuffer data;
};

Registry<ImageObject> &images() { return registryOf<ImageObject>(); }

ImageObject *lookUp(MImage image) { return images().find(image); }

MImage handOut(std::unique_ptr<ImageObject> image) {
    return static_cast<MImage>(const_cast<void *>(images().add(std::move(image))));
}

// Channels of the colour space without alpha; 0 when it can be either.
mint colorChannels(MImage_CS_Type colorSpace) {
    switch (colorSpace) {
    case MImage_CS_Gray: return 1;
    case MImage_CS_CMYK: return 4;
    default: return colorSpace < 0 ? 0 : 3;
    }
}

bool impliesAlpha(mint channels, MImage_CS_Type colorSpace) {
    const mint needed = colorChannels(colorSpace);
    if (needed == 0) return channels == 2 || channels == 4;
    return channels == needed + 1;
}

int create(mint slices, mint width, mint height, mint channels, MImage_Data_Type type,
           MImage_CS_Type colorSpace, mbool interleaved, mbool alpha, MImage *result) {
    if (result == nullptr) return QUORBEL_FUNCTION_ERROR;
    const std::size_t sampleSize = rh_image_sample_size(type);
    if (sampleSize == 0 || colorSpace > MImage_CS_LCH) return QUORBEL_TYPE_ERROR;
    if (width < 1 || height < 1 || channels < 1) return QUORBEL_DIMENSION_ERROR;
    auto image = std::make_unique<ImageObject>();
    image->type = type;
    image->rank = slices > 0 ? 3 : 2;
    image->slices = slices > 0 ? slices : 1;
    image->rows = height;
    image->columns = width;
    image->channels = channels;
    image->colorSpace = colorSpace < 0 ? MImage_CS_Automatic : colorSpace;
    image->interleaved = interleaved != 0;
    image->alpha = alpha != 0;
    const auto bytes = checkedProduct({std::size_t(image->slices), std::size_t(height),
                                       std::size_t(width), std::size_t(channels), sampleSize});
    if (!bytes) return QUORBEL_MEMORY_ERROR;
    image->byteCount = *bytes;
    image->data = zeroedBuffer(*bytes);
    if (image->data == nullptr) return QUORBEL_MEMORY_ERROR;
    *result = handOut(std::move(image));
    return QUORBEL_NO_ERROR;
}

int new2D(mint width, mint height, mint channels, MImage_Data_Type type,
          MImage_CS_Type colorSpace, mbool interleaved, MImage *result) {
    if (const int code = takeCreationFault(Creation::Image)) return code;
    return create(0, width, height, channels, type, colorSpace, interleaved,
                  impliesAlpha(channels, colorSpace), result);
}

int new3D(mint slices, mint width, mint height, mint channels, MImage_Data_Type type,
          MImage_CS_Type colorSpace, mbool interleaved, MImage *result) {
    if (const int code = takeCreationFault(Creation::Image)) return code;
    if (slices < 1) return QUORBEL_DIMENSION_ERROR;
    return create(slices, width, height, channels, type, colorSpace, interleaved,
                  impliesAlpha(channels, colorSpace), result);
}

int clone(MImage image, MImage *result) {
    if (const int code = takeCreationFault(Creation::Image)) return code;
    const ImageObject *original = lookUp(image);
    if (original == nullptr || result == nullptr) return QUORBEL_FUNCTION_ERROR;
    auto copy = std::make_unique<ImageObject>();
    static_cast<ImageShape &>(*copy) = *original;
    copy->byteCount = original->byteCount;
    copy->data = copiedBuffer(original->data.get(), original->byteCount);
    if (copy->data == nullptr) return QUORBEL_MEMORY_ERROR;
    *result = handOut(std::move(copy));
    return QUORBEL_NO_ERROR;
}

void freeImage(MImage image) { images().remove(image); }

// Every query answers neutrally for a handle that is not a live image.
template <class Answer, class Read>
Answer query(MImage image, Answer neutral, Read read) {
    return images().query(image, neutral, read);
}

MImage_Data_Type getDataType(MImage image) {
    return query(image, MImage_Type_Undefined, [](const ImageObject &i) { return i.type; });
}
mint getRowCount(MImage image) {
    return query(image, mint{0}, [](const ImageObject &i) { return i.rows; });
}
mint getColumnCount(MImage image) {
    return query(image, mint{0}, [](const ImageObject &i) { return i.columns; });
}
mint getSliceCount(MImage image) {
    return query(image, mint{0}, [](const ImageObject &i) { return i.slices; });
}
mint getRank(MImage image) {
    return query(image, mint{0}, [](const ImageObject &i) { return i.rank; });
}
mint getChannels(MImage image) {
    return query(image, mint{0}, [](const ImageObject &i) { return i.channels; });
}
mbool alphaChannelQ(MImage image) {
    return query(image, mbool{0}, [](const ImageObject &i) { return mbool(i.alpha); });
}
mbool interleavedQ(MImage image) {
    return query(image, mbool{0}, [](const ImageObject &i) { return mbool(i.interleaved); });
}
MImage_CS_Type getColorSpace(MImage image) {
    return query(image, MImage_CS_Automatic, [](const ImageObject &i) { return i.colorSpace; });
}
void *getRawData(MImage image) { return query(image, static_cast<void *>(nullptr), dataOf); }

}  // namespace

const st_QuorbelImageFunctions &imageFunctions() {
    static const st_QuorbelImageFunctions table{
        new2D,         new3D,         clone,        freeImage,      getDataType,
        getRowCount,   getColumnCount, getSliceCount, getRank,      getChannels,
        alphaChannelQ, interleavedQ,  getColorSpace, getRawData};
    return table;
}

long liveImageCount() { return images().size(); }

}  // namespace refhost

extern "C" {

int rh_image_new(mint slices, mint width, mint height, mint channels, MImage_Data_Type type,
                 MImage_CS_Type colorSpace, mbool interleaved, mbool alpha, MImage *result) {
    return refhost::create(slices, width, height, channels, type, colorSpace, interleaved,
                           alpha, result);
}

size_t rh_image_sample_size(MImage_Data_Type type) {
    switch (type) {
    case MImage_Type_Bit:
    case MImage_Type_Bit8: return 1;
    case MImage_Type_Bit16: return 2;
    case MImage_Type_Real32: return 4;
    case MImage_Type_Real64: return 8;
    default: return 0;
    }
}

mbool rh_image_is_live(MImage image) { return refhost::images().contains(image); }

}  // extern "C"
