// The text forms of `tarvex call`: arguments in, values out.

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "ArgumentSyntax.h"
#include "Escapes.h"
#include "NestedList.h"
#include "NumberText.h"
#include "TypeNames.h"

using namespace tarvex_cli;

namespace {

template <typename T>
T parsed(const std::string &text) {
    Argument argument = parseArgument(text);
    EXPECT_TRUE(std::holds_alternative<T>(argument)) << text;
    return std::get<T>(argument);
}

std::string rejection(const std::string &text) {
    try {
        parseArgument(text);
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    ADD_FAILURE() << text << " was accepted";
    return {};
}

template <typename T>
std::vector<T> elementsOf(const ArrayElements &elements) {
    std::vector<T> values(elements.inlineBytes.size() / sizeof(T));
    std::memcpy(values.data(), elements.inlineBytes.data(), elements.inlineBytes.size());
    return values;
}

}  // namespace

TEST(ArgumentSyntax, ScalarsAndStrings) {
    EXPECT_EQ(parsed<mint>("int:-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(parsed<mint>("+7"), 7);
    EXPECT_EQ(parsed<mreal>("real:5"), 5.0);
    EXPECT_EQ(parsed<mreal>("1e-3"), 1e-3);
    EXPECT_TRUE(parsed<bool>("true"));
    EXPECT_FALSE(parsed<bool>("bool:0"));
    // A bare 1 is an integer, not a boolean.
    EXPECT_EQ(parsed<mint>("1"), 1);

    // Escapes reach every byte but NUL.
    EXPECT_EQ(parsed<StringValue>("str:").bytes, "");
    EXPECT_EQ(parsed<StringValue>("str:a:b").bytes, "a:b");
    EXPECT_EQ(parsed<StringValue>(R"(str:one\|two)").bytes, "one\x02\x07\x07\x07\x03two");
    EXPECT_EQ(parsed<StringValue>(R"(str:\x41\101\1010\n\\\")").bytes, "AAA0\n\\\"");
    EXPECT_EQ(parsed<StringValue>(R"(str:\377\xff)").bytes, "\xff\xff");
}

TEST(ArgumentSyntax, QuotedStringsAreUnambiguous) {
    EXPECT_EQ(quoteString(kListSeparator), R"("\002\007\007\007\003")");
    EXPECT_EQ(quoteString("say \"hi\"\\\n\t"), R"("say \"hi\"\\\n\t")");
    // Valid UTF-8 stays readable; stray bytes, overlong forms and surrogates do not pass as text.
    EXPECT_EQ(quoteString("gr\xc3\xbc\xc3\x9f"), "\"gr\xc3\xbc\xc3\x9f\"");
    EXPECT_EQ(quoteString("\xff\xc3"), R"("\377\303")");
    EXPECT_EQ(quoteString("\xc0\xaf"), R"("\300\257")");
    EXPECT_EQ(quoteString("\xed\xa0\x80"), R"("\355\240\200")");
    // An octal escape followed by a digit keeps its three digits.
    EXPECT_EQ(quoteString("\x01" "7"), R"("\0017")");
}

TEST(ArgumentSyntax, ArraysInlineFromFilesAndAsTensors) {
    RawArrayValue bytes = parsed<RawArrayValue>("raw:uint8:{{255, 0, 0}, {0,0,255}}");
    EXPECT_EQ(bytes.type, MRawArray_Type_UBit8);
    EXPECT_EQ(bytes.elements.dimensions, (std::vector<mint>{2, 3}));
    EXPECT_EQ(elementsOf<std::uint8_t>(bytes.elements), (std::vector<std::uint8_t>{255, 0, 0, 0, 0, 255}));
    EXPECT_EQ(elementsOf<std::int8_t>(parsed<RawArrayValue>("raw:Integer8:{-128,127}").elements),
              (std::vector<std::int8_t>{-128, 127}));
    EXPECT_EQ(elementsOf<std::uint64_t>(parsed<RawArrayValue>("raw:8:{18446744073709551615}").elements),
              (std::vector<std::uint64_t>{UINT64_MAX}));
    const RawArrayValue deep = parsed<RawArrayValue>("raw:real32:{{{0.5}}}");
    EXPECT_EQ(elementsOf<float>(deep.elements), (std::vector<float>{0.5f}));
    EXPECT_EQ(deep.elements.dimensions, (std::vector<mint>{1, 1, 1}));
    const auto complex = elementsOf<double>(parsed<RawArrayValue>("raw:complex-real64:{1.5-2i, 3i, -4, i, 1e-3+1e+2i}").elements);
    EXPECT_EQ(complex, (std::vector<double>{1.5, -2, 0, 3, -4, 0, 0, 1, 1e-3, 1e2}));
    RawArrayValue empty = parsed<RawArrayValue>("raw:uint16:{{}, {}}");
    EXPECT_EQ(empty.elements.dimensions, (std::vector<mint>{2, 0}));
    EXPECT_TRUE(empty.elements.inlineBytes.empty());

    RawArrayValue fromFile = parsed<RawArrayValue>("raw:real64:@dir/a:b.bin:dims=2x0x3");
    EXPECT_EQ(fromFile.elements.file, "dir/a:b.bin");
    EXPECT_EQ(fromFile.elements.dimensions, (std::vector<mint>{2, 0, 3}));
    EXPECT_TRUE(parsed<RawArrayValue>("raw:int16:@x.bin").elements.dimensions.empty());

    TensorValue integers = parsed<TensorValue>("tensor:int:{{1,-2},{3,4}}");
    EXPECT_EQ(integers.type, MTensor_Type_Integer);
    EXPECT_EQ(elementsOf<mint>(integers.elements), (std::vector<mint>{1, -2, 3, 4}));
    EXPECT_EQ(elementsOf<mreal>(parsed<TensorValue>("tensor:real:{0.25, 2}").elements), (std::vector<mreal>{0.25, 2}));
}

TEST(ArgumentSyntax, RawImageLayouts) {
    RawImage plain = parsed<RawImage>("raw-image:c:/img.bin:type=byte,width=4,height=2,channels=3");
    EXPECT_EQ(plain.path, "c:/img.bin");
    EXPECT_EQ(plain.layout.type, MImage_Type_Bit8);
    EXPECT_EQ(plain.layout.slices, 0);
    EXPECT_FALSE(plain.layout.planar);
    EXPECT_EQ(plain.layout.colorSpace, MImage_CS_RGB);

    RawImage full = parsed<RawImage>("raw-image:f:type=Real64,width=1,height=1,channels=2,slices=3,planar,alpha");
    EXPECT_EQ(full.layout.type, MImage_Type_Real64);
    EXPECT_EQ(full.layout.slices, 3);
    EXPECT_TRUE(full.layout.planar && full.layout.alpha);
    EXPECT_EQ(full.layout.colorSpace, MImage_CS_Gray);
    EXPECT_EQ(rawImageByteCount(full.layout), 3u * 2 * 8);
    EXPECT_EQ(parsed<RawImage>("raw-image:f:type=bit,width=1,height=1,channels=5").layout.colorSpace,
              MImage_CS_Automatic);
    EXPECT_EQ(parsed<RawImage>("raw-image:f:type=bit16,width=1,height=1,cs=7").layout.colorSpace, MImage_CS_LCH);

    // What the tool prints for a saved image reads back to the same layout.
    const std::string printed = formatRawImageLayout(full.layout);
    EXPECT_EQ(formatRawImageLayout(parsed<RawImage>("raw-image:f:" + printed).layout), printed);
}

TEST(ArgumentSyntax, EveryRefusalNamesTheProblem) {
    const std::pair<const char *, const char *> cases[] = {
        {"int:9223372036854775808", "not a whole number"},
        {"int:1.5", "'1.5'"},
        {"bool:yes", "not a boolean"},
        {"inf", "str:TEXT"},
        {"photo.png", "str:TEXT"},
        {R"(str:\0)", "NUL"},
        {R"(str:\x00)", "NUL"},
        {R"(str:\x4)", "two hex digits"},
        {R"(str:\400)", "above"},
        {R"(str:\q)", "\\q"},
        {R"(str:end\)", "lone backslash"},
        {"raw:int8:{128}", "'128' is not a valid int8"},
        {"raw:uint32:{-1}", "uint32"},
        {"raw:uint8:{{1,2},{3}}", "not rectangular"},
        {"raw:uint8:{{1,2},3}", "mixes"},
        {"raw:uint8:{1,,2}", "empty element"},
        {"raw:uint8:{1,2", "expected '}'"},
        {"raw:uint8:{1}}", "after its closing brace"},
        {"raw:bit:{1}", "unknown raw-array element type"},
        {"raw:uint8:5", "{...} or @FILE"},
        {"raw:int16:@x.bin:dims=2xx", "2x3x4"},
        {"raw:int16:@x.bin:size=2", "unknown option 'size'"},
        {"raw:int16:@", "file name"},
        {"tensor:int:{1.5}", "integer tensor"},
        {"tensor:complex:{1}", "tensor:int"},
        {"raw-image:f:type=byte,width=1", "'height' is missing"},
        {"raw-image:f:type=int8,width=1,height=1", "type must be"},
        {"raw-image:f:type=byte,width=1,height=1,alpha", "at least 2 channels"},
        {"raw-image:f:type=byte,width=1,height=1,depth=2", "unknown option 'depth'"},
        {"raw-image:f:type=byte,width=1,height=1,width=2", "given twice"},
        {"raw-image:f:type=byte,width=1,height=1,planar=1", "takes no value"},
        {"raw-image:type=byte,width=1,height=1", "raw-image:FILE:"},
    };
    for (const auto &[text, problem] : cases) EXPECT_NE(rejection(text).find(problem), std::string::npos) << text;
}

TEST(ValueText, RealsReadBackExactly) {
    EXPECT_EQ(formatReal(1.0), "1.");
    EXPECT_EQ(formatReal(-0.0), "-0.");
    EXPECT_EQ(formatReal(0.1), "0.1");
    EXPECT_EQ(formatReal(0.1f), "0.1");
    EXPECT_EQ(formatReal(1e-10), "1e-10");
    EXPECT_EQ(formatReal(std::numeric_limits<double>::infinity()), "Infinity");
    for (double value : {0.1 + 0.2, 1.0 / 3, 6.02214076e23, 5e-324})
        EXPECT_EQ(parseReal(formatReal(value)), value);
}

TEST(ValueText, NestedListsKeepTheirShape) {
    const std::uint16_t samples[] = {1, 2, 3, 4, 5, 6};
    auto format = [](const void *element) { return formatElement(MRawArray_Type_UBit16, element); };
    EXPECT_EQ(formatNestedList({2, 3}, samples, 2, format), "{{1, 2, 3}, {4, 5, 6}}");
    EXPECT_EQ(formatNestedList({3, 1, 2}, samples, 2, format), "{{{1, 2}}, {{3, 4}}, {{5, 6}}}");
    EXPECT_EQ(formatNestedList({2, 0}, samples, 2, format), "{{}, {}}");

    const float complex[] = {1.5f, -2.0f};
    EXPECT_EQ(formatElement(MRawArray_Type_Complex_Real32, complex), "Complex[1.5, -2.]");
    const std::int8_t negative = -128;
    EXPECT_EQ(formatElement(MRawArray_Type_Bit8, &negative), "-128");
}
