#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "refhost/loopback.h"

namespace {

struct LinkCloser {
    void operator()(ZvLINK link) const { ZvClose(link); }
};
using Link = std::unique_ptr<ZvLink_st, LinkCloser>;

Link openLink() { return Link(ZvOpenLoopback()); }

std::string text(const unsigned char *bytes, int count) { return {reinterpret_cast<const char *>(bytes), size_t(count)}; }

TEST(Loopback, EveryKindOfTokenComesBackInOrder) {
    const Link link = openLink();
    ZvLINK l = link.get();
    const unsigned char withNul[] = {'a', 0, 'b'};
    const unsigned char bytes[] = {0, 1, 2, 253, 254, 255};
    const int dimensions[] = {3, 2};
    const char *heads[] = {"List", "Row"};
    ASSERT_TRUE(ZvPutFunction(l, "List", 6) && ZvPutSymbol(l, "None") && ZvPutString(l, "h\xC3\xA9") &&
                ZvPutUTF8String(l, withNul, 3) && ZvPutInteger64(l, INT64_MIN) && ZvPutReal64(l, 0.07) &&
                ZvPutInteger8Array(l, bytes, dimensions, heads, 2));

    int count = 0;
    EXPECT_EQ(ZvGetNext(l), ZVTK_FUNCTION);
    ASSERT_TRUE(ZvTestHead(l, "List", &count));
    EXPECT_EQ(count, 6);
    const char *symbol = nullptr;
    const unsigned char *first = nullptr, *second = nullptr;
    int firstBytes = 0, firstChars = 0, secondBytes = 0, secondChars = 0;
    ASSERT_TRUE(ZvGetSymbol(l, &symbol) && ZvGetUTF8String(l, &first, &firstBytes, &firstChars) &&
                ZvGetUTF8String(l, &second, &secondBytes, &secondChars));
    // Earlier tokens must stay valid while later ones are read.
    EXPECT_STREQ(symbol, "None");
    EXPECT_EQ(text(first, firstBytes), "h\xC3\xA9");
    EXPECT_EQ(firstChars, 2);
    EXPECT_EQ(text(second, secondBytes), std::string("a\0b", 3));
    ZvReleaseUTF8String(l, first, firstBytes);
    ZvReleaseSymbol(l, symbol);

    int64_t integer = 0;
    double real = 0;
    ASSERT_TRUE(ZvGetInteger64(l, &integer) && ZvGetReal64(l, &real));
    EXPECT_EQ(integer, INT64_MIN);
    EXPECT_EQ(real, 0.07);

    unsigned char *data = nullptr;
    int *dims = nullptr;
    char **names = nullptr;
    int depth = 0;
    ASSERT_TRUE(ZvGetInteger8Array(l, &data, &dims, &names, &depth));
    ASSERT_EQ(depth, 2);
    EXPECT_EQ(std::vector<int>(dims, dims + 2), (std::vector<int>{3, 2}));
    EXPECT_STREQ(names[1], "Row");
    EXPECT_EQ(std::memcmp(data, bytes, sizeof bytes), 0);
    ZvReleaseInteger8Array(l, data, dims, names, depth);

    EXPECT_EQ(ZvGetNext(l), ZVTK_ERROR);
    EXPECT_EQ(ZvLoopbackTokensRead(l), 7);
}

TEST(Loopback, APacketIsReadableOnlyOnceEnded) {
    const Link link = openLink();
    ASSERT_TRUE(ZvNewPacket(link.get()) && ZvPutInteger64(link.get(), 5));
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_ERROR);
    ASSERT_TRUE(ZvEndPacket(link.get()));
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_INTEGER);

    EXPECT_FALSE(ZvEndPacket(openLink().get()));
    const Link nested = openLink();
    ASSERT_TRUE(ZvNewPacket(nested.get()));
    EXPECT_FALSE(ZvNewPacket(nested.get()));
}

TEST(Loopback, WritesBeyondTheAllowanceFailUntilItIsLifted) {
    for (int allowed = -1; allowed < 4; ++allowed) {
        const Link link = openLink();
        ZvLoopbackFailAfter(link.get(), 0);
        ZvLoopbackFailAfter(link.get(), allowed);
        int succeeded = 0;
        while (succeeded < 10 && ZvPutReal64(link.get(), 1.0)) ++succeeded;
        EXPECT_EQ(succeeded, allowed < 0 ? 10 : allowed);
        EXPECT_EQ(ZvFlush(link.get()), allowed < 0);
        EXPECT_EQ(ZvLoopbackFailed(link.get()), allowed >= 0);
    }
}

// Whatever the misuse, nothing more goes in or out.
TEST(Loopback, AMisuseFailsTheLinkForGood) {
    static const unsigned char bytes[2] = {1, 2};
    static const int negative[] = {2, -1};
    static const int two[] = {2};
    static const char *missingHead[] = {nullptr};
    static const char *symbol = nullptr;
    static int64_t integer = 0;
    static int count = 0;
    for (auto misuse : {+[](ZvLINK l) { return ZvGetSymbol(l, &symbol); },
                        +[](ZvLINK l) { return ZvGetInteger64(l, &integer); },
                        +[](ZvLINK l) { return ZvTestHead(l, "List", &count); },
                        +[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, negative, nullptr, 2); },
                        +[](ZvLINK l) { return ZvPutInteger8Array(l, nullptr, two, nullptr, 1); },
                        +[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, two, missingHead, 1); },
                        +[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, two, nullptr, 0); },
                        +[](ZvLINK l) { return ZvPutUTF8String(l, nullptr, 3); },
                        +[](ZvLINK l) { return ZvPutFunction(l, "List", -1); },
                        +[](ZvLINK l) { return ZvPutSymbol(l, ""); }}) {
        const Link link = openLink();
        ASSERT_TRUE(ZvPutFunction(link.get(), "Rule", 2));
        EXPECT_FALSE(misuse(link.get()));
        EXPECT_TRUE(ZvLoopbackFailed(link.get()));
        EXPECT_FALSE(ZvPutInteger64(link.get(), 2));
        EXPECT_EQ(ZvGetNext(link.get()), ZVTK_ERROR);
    }
}

}  // namespace
