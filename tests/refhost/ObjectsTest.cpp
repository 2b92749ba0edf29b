#include <cstring>

#include <gtest/gtest.h>

#include "refhost/refhost.hpp"

namespace {

const st_QuorbelImageFunctions &images() {
    return *rh_library_data(RH_TABLE_FULL)->imageFunctions;
}
const st_QuorbelRawArrayFunctions &rawArrays() {
    return *rh_library_data(RH_TABLE_FULL)->rawArrayFunctions;
}
const st_QuorbelLibraryData &table() { return *rh_library_data(RH_TABLE_FULL); }

rh::Image newImage(mint channels, MImage_CS_Type colorSpace,
                   MImage_Data_Type type = MImage_Type_Bit8) {
    MImage image = nullptr;
    EXPECT_EQ(images().new2D(5, 3, channels, type, colorSpace, 1, &image), 0);
    return rh::Image(image);
}

rh::RawArray newRawArray(MRawArray_Data_Type type, std::initializer_list<mint> dimensions) {
    MRawArray array = nullptr;
    EXPECT_EQ(rawArrays().create(type, mint(dimensions.size()), dimensions.begin(), &array), 0);
    return rh::RawArray(array);
}

long badHandles() { return rh_counters().badHandles; }

TEST(Objects, TheTableVariantsLeaveOutWhatTheySay) {
    EXPECT_NE(rh_library_data(RH_TABLE_FULL)->imageFunctions, nullptr);
    EXPECT_EQ(rh_library_data(RH_TABLE_WITHOUT_IMAGES)->imageFunctions, nullptr);
    EXPECT_NE(rh_library_data(RH_TABLE_WITHOUT_IMAGES)->rawArrayFunctions, nullptr);
    const QuorbelLibraryData neither =
        rh_library_data(RH_TABLE_WITHOUT_IMAGES | RH_TABLE_WITHOUT_RAW_ARRAYS);
    EXPECT_EQ(neither->imageFunctions, nullptr);
    EXPECT_EQ(neither->rawArrayFunctions, nullptr);
    EXPECT_NE(neither, rh_library_data(RH_TABLE_FULL));
    EXPECT_EQ(rh_library_data(4), nullptr);
}

TEST(Objects, AlphaFollowsTheChannelCountOfTheColorSpace) {
    const struct {
        MImage_CS_Type colorSpace;
        mint channels;
        bool alpha;
    } cases[] = {{MImage_CS_Gray, 1, false}, {MImage_CS_Gray, 2, true},
                 {MImage_CS_RGB, 3, false},  {MImage_CS_RGB, 4, true},
                 {MImage_CS_HSB, 4, true},   {MImage_CS_CMYK, 4, false},
                 {MImage_CS_CMYK, 5, true},  {MImage_CS_Automatic, 2, true},
                 {MImage_CS_Automatic, 3, false}, {MImage_CS_Automatic, 4, true},
                 {MImage_CS_Automatic, 1, false}};
    for (const auto &c : cases) {
        const rh::Image image = newImage(c.channels, c.colorSpace);
        EXPECT_EQ(images().alphaChannelQ(image.get()) != 0, c.alpha)
            << "colour space " << c.colorSpace << ", " << c.channels << " channels";
    }
}

TEST(Objects, ImagesHaveTheirGeometryAndZeroedSamples) {
    MImage stack = nullptr;
    ASSERT_EQ(images().new3D(2, 5, 3, 3, MImage_Type_Real64, MImage_CS_RGB, 0, &stack), 0);
    const rh::Image owned(stack);
    EXPECT_EQ(images().getRank(stack), 3);
    EXPECT_EQ(images().getSliceCount(stack), 2);
    EXPECT_EQ(images().getRowCount(stack), 3);
    EXPECT_EQ(images().getColumnCount(stack), 5);
    EXPECT_FALSE(images().interleavedQ(stack));
    const auto *samples = static_cast<const double *>(images().getRawData(stack));
    for (int i = 0; i < 2 * 3 * 5 * 3; ++i) ASSERT_EQ(samples[i], 0.0);

    const rh::Image flat = newImage(1, MImage_CS_Gray, MImage_Type_Bit);
    EXPECT_EQ(images().getRank(flat.get()), 2);
    EXPECT_EQ(images().getSliceCount(flat.get()), 1);
}

TEST(Objects, ACloneIsAnIndependentCopy) {
    const rh::Image original = newImage(3, MImage_CS_RGB, MImage_Type_Bit16);
    static_cast<unsigned short *>(images().getRawData(original.get()))[44] = 4242;
    MImage copy = nullptr;
    ASSERT_EQ(images().clone(original.get(), &copy), 0);
    const rh::Image owned(copy);
    auto *copied = static_cast<unsigned short *>(images().getRawData(copy));
    EXPECT_EQ(copied[44], 4242);
    copied[44] = 1;
    EXPECT_EQ(static_cast<unsigned short *>(images().getRawData(original.get()))[44], 4242);
    EXPECT_EQ(images().getDataType(copy), MImage_Type_Bit16);
}

TEST(Objects, BadShapesAreRefusedWithoutCreating) {
    const RhCounters before = rh_counters();
    MImage image = nullptr;
    EXPECT_EQ(images().new2D(0, 3, 1, MImage_Type_Bit8, MImage_CS_Gray, 1, &image),
              QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(images().new3D(0, 3, 3, 1, MImage_Type_Bit8, MImage_CS_Gray, 1, &image),
              QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(images().new2D(3, 3, 1, MImage_Data_Type(5), MImage_CS_Gray, 1, &image),
              QUORBEL_TYPE_ERROR);
    EXPECT_EQ(image, nullptr);

    MRawArray array = nullptr;
    const mint threeByZero[] = {3, 0};
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 2, threeByZero, &array),
              QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Data_Type(13), 1, threeByZero, &array),
              QUORBEL_TYPE_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 0, threeByZero, &array),
              QUORBEL_RANK_ERROR);
    EXPECT_EQ(array, nullptr);

    MTensor tensor = nullptr;
    const mint negative[] = {-1};
    EXPECT_EQ(table().tensorNew(MTensor_Type_Integer, 1, negative, &tensor),
              QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(tensor, nullptr);

    const RhCounters after = rh_counters();
    EXPECT_EQ(after.liveImages, before.liveImages);
    EXPECT_EQ(after.liveRawArrays, before.liveRawArrays);
    EXPECT_EQ(after.liveTensors, before.liveTensors);
}

TEST(Objects, RawArraysAndTensorsReportTheirShape) {
    const rh::RawArray array = newRawArray(MRawArray_Type_Complex_Real64, {2, 3, 4});
    EXPECT_EQ(rawArrays().getRank(array.get()), 3);
    EXPECT_EQ(rawArrays().getDimensions(array.get())[2], 4);
    EXPECT_EQ(rawArrays().getFlattenedLength(array.get()), 24);
    EXPECT_EQ(rh_raw_array_element_size(MRawArray_Type_Complex_Real64), 16u);
    std::memset(rawArrays().getData(array.get()), 0xFF, 24 * 16);  // all of it is ours

    MTensor empty = nullptr;
    const mint zero[] = {0};
    ASSERT_EQ(table().tensorNew(MTensor_Type_Integer, 1, zero, &empty), 0);
    const rh::Tensor owned(empty);
    EXPECT_EQ(table().tensorGetFlattenedLength(empty), 0);
    EXPECT_NE(table().tensorGetIntegerData(empty), nullptr);
    EXPECT_EQ(table().tensorGetRealData(empty), nullptr);
}

TEST(Objects, UnknownHandlesGetNeutralAnswersAndAreCounted) {
    const rh::RawArray array = newRawArray(MRawArray_Type_UBit8, {4});
    const auto asImage = reinterpret_cast<MImage>(array.get());
    long expected = badHandles();
    EXPECT_EQ(images().getDataType(asImage), MImage_Type_Undefined);
    EXPECT_EQ(images().getChannels(asImage), 0);
    EXPECT_EQ(images().getRawData(asImage), nullptr);
    EXPECT_EQ(badHandles(), expected += 3);
    images().free(asImage);
    EXPECT_TRUE(rh_raw_array_is_live(array.get()));

    MImage freed = newImage(1, MImage_CS_Gray).release();
    images().free(freed);
    EXPECT_FALSE(rh_image_is_live(freed));
    EXPECT_EQ(images().getRowCount(freed), 0);
    images().free(freed);
    MImage copy = nullptr;
    EXPECT_NE(images().clone(freed, &copy), 0);
    EXPECT_EQ(copy, nullptr);

    int notAnObject = 0;
    EXPECT_EQ(rawArrays().getType(reinterpret_cast<MRawArray>(&notAnObject)),
              MRawArray_Type_Undefined);
    EXPECT_EQ(table().tensorGetRank(reinterpret_cast<MTensor>(&notAnObject)), 0);
    EXPECT_EQ(badHandles(), expected += 6);
}

TEST(Objects, CreationFaultsHitOnceAndOnlyTheirKind) {
    rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
    rh_fail_next_raw_array_creation(-7);
    MRawArray array = nullptr;
    const mint one[] = {1};
    MTensor tensor = nullptr;
    ASSERT_EQ(table().tensorNew(MTensor_Type_Real, 1, one, &tensor), 0);
    table().tensorFree(tensor);
    MImage image = nullptr;
    EXPECT_EQ(images().new2D(2, 2, 1, MImage_Type_Bit8, MImage_CS_Gray, 1, &image),
              QUORBEL_MEMORY_ERROR);
    EXPECT_EQ(image, nullptr);
    const rh::Image second = newImage(1, MImage_CS_Gray);
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 1, one, &array), -7);
    EXPECT_EQ(array, nullptr);

    rh_fail_next_image_creation(3);
    MImage copy = nullptr;
    EXPECT_EQ(images().clone(second.get(), &copy), 3);
    rh_fail_next_tensor_creation(9);
    rh_clear_faults();
    ASSERT_EQ(table().tensorNew(MTensor_Type_Real, 1, one, &tensor), 0);
    table().tensorFree(tensor);
}

}  // namespace
