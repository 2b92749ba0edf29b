// The host interface layer on its own: arguments, kernel arrays, ownership and
// dispatch, against the reference host's real callback tables.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "host/ImageDispatch.h"
#include "host/LibraryData.h"
#include "host/MArgumentManager.h"
#include "refhost/refhost.h"

using namespace OstrelUtils;

namespace {

class ArgumentLayer : public ::testing::Test {
protected:
    void SetUp() override { setLibraryData(rh_library_data(RH_TABLE_FULL)); }
    void TearDown() override {
        rh_clear_faults();
        setLibraryData(nullptr);
    }
    static QuorbelImageFunctions images() { return rh_library_data(RH_TABLE_FULL)->imageFunctions; }
};

// The code and message of the OstrelError that `f` throws.
template <typename F>
std::pair<OTErrorCode, std::string> failureOf(F &&f) {
    try {
        f();
    } catch (const OstrelError &e) {
        return {e.id(), e.what()};
    }
    ADD_FAILURE() << "no OstrelError";
    return {};
}

template <typename F>
OTErrorCode codeOf(F &&f) {
    return failureOf(f).first;
}

template <typename F>
std::string runtimeMessageOf(F &&f) {
    try {
        f();
    } catch (const std::runtime_error &e) {
        return e.what();
    }
    return "no error";
}

MImage newImage(MImage_Data_Type type, mint channels, mbool interleaved = 1, mbool alpha = 0,
                mint slices = 0) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(slices, 4, 3, channels, type, MImage_CS_Automatic, interleaved, alpha,
                           &image),
              0);
    return image;
}

MRawArray newRawArray(MRawArray_Data_Type type, std::initializer_list<mint> dims) {
    MRawArray array = nullptr;
    EXPECT_EQ(rh_library_data(RH_TABLE_FULL)
                  ->rawArrayFunctions->create(type, static_cast<mint>(dims.size()), dims.begin(),
                                              &array),
              0);
    return array;
}

TEST_F(ArgumentLayer, ErrorMessagesAreFixedTexts) {
    EXPECT_STREQ(OstrelError(RawArrayNewError).what(), "Error -202 (see vorlet documentation for details)");
    EXPECT_STREQ(OstrelError(DimensionError).what(), "Error 3 (see vorlet documentation for details)");
    EXPECT_STREQ(OstrelError(ImageTypeError, "custom").what(), "custom");
}

TEST_F(ArgumentLayer, ManagerRefusesToWorkBeforeInitialisation) {
    setLibraryData(nullptr);
    mint value = 1;
    MArgument arg{.integer = &value};
    EXPECT_EQ(codeOf([&] { MArgumentManager m(1, &arg, arg); }), ArgumentInitError);
}

TEST_F(ArgumentLayer, IndexAtOrBeyondTheCountIsRefusedWithItsMessage) {
    mint values[2] = {7, 8};
    MArgument args[2] = {{.integer = &values[0]}, {.integer = &values[1]}};
    MArgumentManager manager(2, args, args[0]);
    EXPECT_EQ(manager.getInteger(1), 8);
    EXPECT_EQ(failureOf([&] { manager.getInteger(2); }),
              std::pair(ArgumentIndexError, std::string("Index 2 out-of-bound when accessing Ostrel argument")));
}

// A table that counts string releases, so the test owns the strings it sends.
int releases = 0;
void countingRelease(char *s) {
    ++releases;
    std::free(s);
}

// One kernel string as an argument, under a table that counts its release.
struct CountedString {
    st_QuorbelLibraryData table = *rh_library_data(RH_TABLE_FULL);
    char *text;
    MArgument arg{.utf8String = &text};

    explicit CountedString(const char *value) : text(strdup(value)) {
        table.releaseUTF8String = countingRelease;
        setLibraryData(&table);
        releases = 0;
    }
    CountedString(const CountedString &) = delete;
};

TEST_F(ArgumentLayer, StringIsCopiedOnceAndGivenBackOnce) {
    CountedString string("caf\xc3\xa9");
    {
        MArgumentManager manager(1, &string.arg, string.arg);
        const std::string &first = manager.getString(0);
        const std::string &second = manager.getString(0);
        EXPECT_EQ(first, "caf\xc3\xa9");
        EXPECT_EQ(&first, &second);
    }
    EXPECT_EQ(releases, 1);
}

// Running out of memory while the manager is being made must not keep the
// kernel's strings: no destructor would give them back.
TEST_F(ArgumentLayer, StringsAreGivenBackWhenTheManagerCannotBeMade) {
    CountedString string("name.gif");
    static constexpr unsigned kStrings[] = {0};
    // A count no string table can have: its resize throws before allocating,
    // standing for an allocation failure (which a sanitizer would abort on).
    const mint tooMany = std::numeric_limits<mint>::max();
    EXPECT_ANY_THROW(MArgumentManager(tooMany, &string.arg, string.arg, kStrings));
    EXPECT_EQ(releases, 1);
}

TEST_F(ArgumentLayer, ElementTypesMustMatchTheRequest) {
    MImage image = newImage(MImage_Type_Bit16, 3);
    MArgument arg{.image = &image};
    MArgumentManager manager(1, &arg, arg);
    EXPECT_EQ(codeOf([&] { manager.getImage<unsigned char>(0); }), ImageTypeError);
    EXPECT_EQ(manager.getImage<unsigned short>(0).dimensions(), (std::vector<mint>{3, 4, 3}));
    images()->free(image);

    MRawArray array = newRawArray(MRawArray_Type_UBit8, {2, 3});
    MArgument rawArg{.rawArray = &array};
    MArgumentManager rawManager(1, &rawArg, rawArg);
    EXPECT_EQ(codeOf([&] { rawManager.getRawArray<float>(0); }), RawArrayTypeError);
    RawArray<unsigned char> wrapped = rawManager.getRawArray<unsigned char>(0);
    EXPECT_EQ(wrapped.size(), 6);
    EXPECT_EQ(wrapped.offsets(), (std::vector<mint>{3, 1}));
    EXPECT_EQ(codeOf([&] { wrapped.at(6); }), RawArrayIndexError);
    rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->free(array);
}

TEST_F(ArgumentLayer, DimensionsBelowOneOrTooLargeToMultiplyAreRefused) {
    const long live = rh_counters().liveRawArrays;
    // The kernel may pass an empty array; the plug-in never makes one.
    for (const std::vector<mint> &dimensions : {std::vector<mint>{3, 0}, std::vector<mint>{0, 3}})
        EXPECT_EQ(failureOf([&] { RawArray<unsigned char> array(dimensions); }),
                  std::pair(DimensionError, std::string("Invalid input vector with array dimensions")));
    EXPECT_EQ(codeOf([] { Image<float> image(0, 0, 5, 3, MImage_CS_RGB, true); }), DimensionError);
    // A palette of LONG_MAX rows: the host refuses what no memory holds.
    constexpr mint kLargest = std::numeric_limits<mint>::max();
    EXPECT_EQ(codeOf([] { RawArray<unsigned char> array({kLargest, 3}); }), RawArrayNewError);
    EXPECT_EQ(codeOf([] { Image<float> image(kLargest, 2, 2, 3, MImage_CS_RGB, true); }), ImageNewError);
    EXPECT_EQ(rh_counters().liveRawArrays, live);
}

TEST_F(ArgumentLayer, MissingTablesAreRefused) {
    MImage image = newImage(MImage_Type_Bit8, 3);
    MRawArray array = newRawArray(MRawArray_Type_UBit8, {2});
    MArgument imageArg{.image = &image}, rawArg{.rawArray = &array};

    setLibraryData(rh_library_data(RH_TABLE_WITHOUT_IMAGES));
    EXPECT_EQ(codeOf([&] { MArgumentManager(1, &imageArg, imageArg).getImage<unsigned char>(0); }),
              ImageInitError);
    EXPECT_EQ(codeOf([] { RawArray<unsigned char> a({2}); }), FunctionError);

    setLibraryData(rh_library_data(RH_TABLE_WITHOUT_RAW_ARRAYS));
    EXPECT_EQ(codeOf([&] { MArgumentManager(1, &rawArg, rawArg).getRawArray<unsigned char>(0); }),
              RawArrayInitError);
    EXPECT_EQ(codeOf([] { Image<unsigned char> i(0, 2, 2, 1, MImage_CS_Gray, true); }),
              FunctionError);

    images()->free(image);
    rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->free(array);
}

TEST_F(ArgumentLayer, FailedCreationsLeaveNothingAlive) {
    const RhCounters before = rh_counters();
    rh_fail_next_raw_array_creation(QUORBEL_MEMORY_ERROR);
    EXPECT_EQ(codeOf([] { RawArray<double> a({2, 2}); }), RawArrayNewError);
    rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
    EXPECT_EQ(codeOf([] { Image<double> i(2, 2, 2, 1, MImage_CS_Gray, true); }), ImageNewError);
    {
        Image<unsigned char> original(0, 2, 2, 3, MImage_CS_RGB, true);
        rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
        EXPECT_EQ(codeOf([&] { original.clone(); }), ImageCloneError);
    }
    EXPECT_EQ(rh_counters().liveImages, before.liveImages);
    EXPECT_EQ(rh_counters().liveRawArrays, before.liveRawArrays);
}

// The creations that answer with the kernel's code instead of throwing, for
// exports that return that code as it stands.
TEST_F(ArgumentLayer, CodeReturningCreationsGiveTheKernelsCodeAndOwnWhatTheyMade) {
    const RhCounters before = rh_counters();
    struct Case {
        int table, fault, code;
    };
    for (const Case c : {Case{RH_TABLE_FULL, 0, 0}, Case{RH_TABLE_FULL, QUORBEL_MEMORY_ERROR, QUORBEL_MEMORY_ERROR},
                         Case{RH_TABLE_WITHOUT_RAW_ARRAYS, 0, 0},
                         Case{RH_TABLE_WITHOUT_IMAGES, 0, FunctionError}}) {
        setLibraryData(rh_library_data(c.table));
        if (c.fault != 0) rh_fail_next_image_creation(c.fault);
        std::optional<Image<unsigned char>> image;
        EXPECT_EQ(Image<unsigned char>::create(image, 2, 4, 3, 3, MImage_CS_RGB, true), c.code);
        EXPECT_EQ(image.has_value(), c.code == 0);
        if (image) {
            EXPECT_EQ(image->dimensions(), (std::vector<mint>{2, 3, 4, 3}));
            EXPECT_EQ(rh_counters().liveImages, before.liveImages + 1);
        }
    }
    setLibraryData(rh_library_data(RH_TABLE_FULL));
    for (const int fault : {0, int{QUORBEL_MEMORY_ERROR}}) {
        if (fault != 0) rh_fail_next_tensor_creation(fault);
        IntegerTensor tensor;
        const mint dimensions[] = {2, 3};
        EXPECT_EQ(tensor.create(dimensions), fault);
        EXPECT_EQ(rh_counters().liveTensors, before.liveTensors + (fault == 0 ? 1 : 0));
    }
    MTensor handed = nullptr;
    MArgument result{.tensor = &handed};
    {
        IntegerTensor tensor;
        const mint dimensions[] = {1};
        ASSERT_EQ(tensor.create(dimensions), 0);
        tensor.data()[0] = 7;
        MArgumentManager(1, &result, result).setTensor(tensor);
    }
    EXPECT_EQ(rh_counters().liveTensors, before.liveTensors + 1);
    rh_library_data(RH_TABLE_FULL)->tensorFree(handed);
    EXPECT_EQ(rh_counters().liveImages, before.liveImages);
    EXPECT_EQ(rh_counters().liveTensors, before.liveTensors);
}

TEST_F(ArgumentLayer, OwnedObjectsAreFreedUnlessHandedToTheResult) {
    const long live = rh_counters().liveImages;
    MImage handed = nullptr;
    MArgument result{.image = &handed};
    {
        Image<float> kept(3, 4, 2, 1, MImage_CS_Gray, true);
        Image<float> given(0, 4, 2, 1, MImage_CS_Gray, true);
        EXPECT_EQ(kept.dimensions(), (std::vector<mint>{3, 2, 4, 1}));
        EXPECT_TRUE(kept.is3D());
        MArgumentManager manager(1, &result, result);
        manager.setImage(given);
        EXPECT_FALSE(given.ownsHostObject());
    }
    EXPECT_EQ(rh_counters().liveImages, live + 1);
    EXPECT_TRUE(rh_image_is_live(handed));
    images()->free(handed);
}

// The channel count of the instantiation the dispatch picked.
int dispatchOn(MImage image) {
    MArgument arg{.image = &image};
    MArgumentManager manager(1, &arg, arg);
    return dispatchImage(manager, []<typename T, int N>(Image<T> &, const ImageGeometry &) { return N + 1; });
}

TEST_F(ArgumentLayer, DispatchRefusesWhatThePixelLoopsCannotRead) {
    MImage five = newImage(MImage_Type_Bit8, 5);
    EXPECT_EQ(runtimeMessageOf([&] { dispatchOn(five); }), "Unsupported number of channels: 5");
    MImage planar = newImage(MImage_Type_Bit8, 3, 0);
    EXPECT_EQ(runtimeMessageOf([&] { dispatchOn(planar); }), "Input image has to be interleaved");
    MImage planarGrey = newImage(MImage_Type_Bit8, 1, 0);
    EXPECT_EQ(dispatchOn(planarGrey), 1);
    MImage alpha = newImage(MImage_Type_Real32, 4, 1, 1);
    EXPECT_EQ(runtimeMessageOf([&] { dispatchOn(alpha); }),
              "Input image must not have an alpha channel");
    for (MImage image : {five, planar, planarGrey, alpha}) images()->free(image);

    // A handle the kernel does not know as an image has no usable type.
    MRawArray notAnImage = newRawArray(MRawArray_Type_UBit8, {2});
    MImage disguised = reinterpret_cast<MImage>(notAnImage);
    EXPECT_EQ(failureOf([&] { dispatchOn(disguised); }),
              std::pair(ImageArgumentTypeError, std::string("Incorrect type of Image argument. Argument index: 0")));
    rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->free(notAnImage);
}

}  // namespace
