#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "refhost/refhost.hpp"

namespace {

const st_QuorbelLibraryData &table() { return *rh_library_data(RH_TABLE_FULL); }
const st_QuorbelImageFunctions &images() { return *table().imageFunctions; }
const st_QuorbelRawArrayFunctions &rawArrays() { return *table().rawArrayFunctions; }

rh::Image newImage(mint channels, MImage_CS_Type colorSpace) {
    MImage image = nullptr;
    EXPECT_EQ(images().new2D(5, 3, channels, MImage_Type_Bit8, colorSpace, 1, &image), 0);
    return rh::Image(image);
}

long badHandles() { return rh_counters().badHandles; }

TEST(Objects, AlphaFollowsTheChannelCountOfTheColorSpace) {
    const struct {
        MImage_CS_Type colorSpace;
        mint channels;
        bool alpha;
    } cases[] = {{MImage_CS_Gray, 1, false},      {MImage_CS_Gray, 2, true},       {MImage_CS_RGB, 3, false},
                 {MImage_CS_RGB, 4, true},        {MImage_CS_HSB, 4, true},        {MImage_CS_CMYK, 4, false},
                 {MImage_CS_CMYK, 5, true},       {MImage_CS_Automatic, 1, false}, {MImage_CS_Automatic, 2, true},
                 {MImage_CS_Automatic, 3, false}, {MImage_CS_Automatic, 4, true}};
    for (const auto &c : cases)
        EXPECT_EQ(images().alphaChannelQ(newImage(c.channels, c.colorSpace).get()) != 0, c.alpha)
            << "colour space " << c.colorSpace << ", " << c.channels << " channels";
}

TEST(Objects, ACloneIsAnIndependentCopyOfAStack) {
    MImage stack = nullptr;
    ASSERT_EQ(images().new3D(2, 5, 3, 3, MImage_Type_Bit16, MImage_CS_RGB, 0, &stack), 0);
    const rh::Image original(stack);
    auto *samples = static_cast<unsigned short *>(images().getRawData(stack));
    for (int i = 0; i < 2 * 3 * 5 * 3; ++i) ASSERT_EQ(samples[i], 0);
    samples[89] = 4242;
    MImage copy = nullptr;
    ASSERT_EQ(images().clone(stack, &copy), 0);
    const rh::Image owned(copy);
    EXPECT_EQ((std::vector<mint>{images().getRank(copy), images().getSliceCount(copy), images().getRowCount(copy),
                                 images().getColumnCount(copy), images().getDataType(copy), images().interleavedQ(copy)}),
              (std::vector<mint>{3, 2, 3, 5, MImage_Type_Bit16, 0}));
    auto *copied = static_cast<unsigned short *>(images().getRawData(copy));
    EXPECT_EQ(copied[89], 4242);
    copied[89] = 1;
    EXPECT_EQ(samples[89], 4242);
    EXPECT_EQ(images().getSliceCount(newImage(1, MImage_CS_Gray).get()), 1);
}

TEST(Objects, BadShapesAreRefusedWithoutCreating) {
    const RhCounters before = rh_counters();
    MImage image = nullptr;
    EXPECT_EQ(images().new2D(0, 3, 1, MImage_Type_Bit8, MImage_CS_Gray, 1, &image), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(images().new3D(0, 3, 3, 1, MImage_Type_Bit8, MImage_CS_Gray, 1, &image), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(images().new2D(3, 3, 1, MImage_Data_Type(5), MImage_CS_Gray, 1, &image), QUORBEL_TYPE_ERROR);
    EXPECT_EQ(image, nullptr);

    MRawArray array = nullptr;
    const mint threeByZero[] = {3, 0}, zeroByThree[] = {0, 3};
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 2, threeByZero, &array), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 2, zeroByThree, &array), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(rh_raw_array_new(MRawArray_Type_UBit8, 0, zeroByThree, &array), QUORBEL_RANK_ERROR);
    EXPECT_EQ(rh_raw_array_new(MRawArray_Type_UBit8, 1, nullptr, &array), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Data_Type(13), 1, threeByZero, &array), QUORBEL_TYPE_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 0, threeByZero, &array), QUORBEL_RANK_ERROR);
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 1, nullptr, &array), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(array, nullptr);

    MTensor tensor = nullptr;
    const mint huge[] = {mint(1) << 40, mint(1) << 40, -1};
    EXPECT_EQ(table().tensorNew(MTensor_Type_Integer, 1, huge + 2, &tensor), QUORBEL_DIMENSION_ERROR);
    EXPECT_EQ(table().tensorNew(MTensor_Type_Integer, 2, huge, &tensor), QUORBEL_MEMORY_ERROR);
    EXPECT_EQ(table().tensorNew(MTensor_Type_Integer, -1, huge, &tensor), QUORBEL_RANK_ERROR);
    EXPECT_EQ(tensor, nullptr);

    const RhCounters after = rh_counters();
    EXPECT_EQ(after.liveImages, before.liveImages);
    EXPECT_EQ(after.liveRawArrays, before.liveRawArrays);
    EXPECT_EQ(after.liveTensors, before.liveTensors);
}

TEST(Objects, RawArraysAndTensorsReportTheirShape) {
    MRawArray array = nullptr;
    const mint dimensions[] = {2, 3, 4};
    ASSERT_EQ(rawArrays().create(MRawArray_Type_Complex_Real64, 3, dimensions, &array), 0);
    const rh::RawArray ownedArray(array);
    EXPECT_EQ(rawArrays().getRank(array), 3);
    EXPECT_EQ(rawArrays().getDimensions(array)[2], 4);
    EXPECT_EQ(rawArrays().getFlattenedLength(array), 24);
    std::memset(rawArrays().getData(array), 0xFF, 24 * 16);  // all of it is ours

    // An empty list as the kernel passes one: no element, but a shape.
    MRawArray emptyList = nullptr;
    const mint zeroByThree[] = {0, 3};
    ASSERT_EQ(rh_raw_array_new(MRawArray_Type_Real64, 2, zeroByThree, &emptyList), 0);
    const rh::RawArray ownedList(emptyList);
    ASSERT_EQ(rawArrays().getRank(emptyList), 2);
    EXPECT_EQ(std::vector<mint>(rawArrays().getDimensions(emptyList), rawArrays().getDimensions(emptyList) + 2),
              (std::vector<mint>{0, 3}));
    EXPECT_EQ(rawArrays().getFlattenedLength(emptyList), 0);
    EXPECT_NE(rawArrays().getData(emptyList), nullptr);

    MTensor empty = nullptr, scalar = nullptr;
    const mint zero[] = {0};
    ASSERT_EQ(table().tensorNew(MTensor_Type_Integer, 1, zero, &empty), 0);
    ASSERT_EQ(table().tensorNew(MTensor_Type_Real, 0, nullptr, &scalar), 0);
    const rh::Tensor ownedEmpty(empty), ownedScalar(scalar);
    EXPECT_EQ(table().tensorGetFlattenedLength(empty), 0);
    EXPECT_NE(table().tensorGetIntegerData(empty), nullptr);
    EXPECT_EQ(table().tensorGetRealData(empty), nullptr);
    EXPECT_EQ(table().tensorGetRank(scalar), 0);
    EXPECT_EQ(table().tensorGetFlattenedLength(scalar), 1);
    EXPECT_EQ(*table().tensorGetRealData(scalar), 0.0);
}

TEST(Objects, UnknownHandlesGetNeutralAnswersAndAreCounted) {
    MRawArray array = nullptr;
    const mint four[] = {4};
    ASSERT_EQ(rawArrays().create(MRawArray_Type_UBit8, 1, four, &array), 0);
    const rh::RawArray owned(array);
    const auto asImage = reinterpret_cast<MImage>(array);
    long expected = badHandles();
    EXPECT_EQ(images().getDataType(asImage), MImage_Type_Undefined);
    EXPECT_EQ(images().getChannels(asImage), 0);
    EXPECT_EQ(images().getRawData(asImage), nullptr);
    EXPECT_EQ(badHandles(), expected += 3);
    images().free(asImage);
    EXPECT_TRUE(rh_raw_array_is_live(array));

    MImage freed = newImage(1, MImage_CS_Gray).release();
    images().free(freed);
    EXPECT_FALSE(rh_image_is_live(freed));
    EXPECT_EQ(images().getRowCount(freed), 0);
    images().free(freed);
    MImage copy = nullptr;
    EXPECT_NE(images().clone(freed, &copy), 0);
    EXPECT_EQ(copy, nullptr);

    int notAnObject = 0;
    EXPECT_EQ(rawArrays().getType(reinterpret_cast<MRawArray>(&notAnObject)), MRawArray_Type_Undefined);
    EXPECT_EQ(table().tensorGetRank(reinterpret_cast<MTensor>(&notAnObject)), 0);
    EXPECT_EQ(badHandles(), expected += 6);
}

TEST(Objects, CreationFaultsHitOnceAndOnlyTheirKind) {
    rh_fail_next_raw_array_creation(-7);
    rh_fail_next_tensor_creation(9);
    EXPECT_NE(newImage(1, MImage_CS_Gray), nullptr);
    const mint one[] = {1};
    MTensor tensor = nullptr;
    EXPECT_EQ(table().tensorNew(MTensor_Type_Real, 1, one, &tensor), 9);
    ASSERT_EQ(table().tensorNew(MTensor_Type_Real, 1, one, &tensor), 0);
    table().tensorFree(tensor);
    MRawArray argument = nullptr;
    ASSERT_EQ(rh_raw_array_new(MRawArray_Type_UBit8, 1, one, &argument), 0);  // the kernel's own
    rawArrays().free(argument);
    MRawArray array = nullptr;
    EXPECT_EQ(rawArrays().create(MRawArray_Type_UBit8, 1, one, &array), -7);
    ASSERT_EQ(rawArrays().create(MRawArray_Type_UBit8, 1, one, &array), 0);
    rawArrays().free(array);
    rh_clear_faults();
}

}  // namespace
