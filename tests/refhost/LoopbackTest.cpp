#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "refhost/loopback.h"

namespace {

struct LinkCloser {
    void operator()(ZvLINK link) const { ZvClose(link); }
};
using Link = std::unique_ptr<ZvLink_st, LinkCloser>;

Link openLink() { return Link(ZvOpenLoopback()); }

TEST(Loopback, EveryKindOfTokenComesBackInOrder) {
    const Link link = openLink();
    const unsigned char withNul[] = {'a', 0, 'b'};
    const unsigned char bytes[] = {0, 1, 2, 253, 254, 255};
    const int dimensions[] = {3, 2};
    const char *heads[] = {"List", "Row"};
    ASSERT_TRUE(ZvPutFunction(link.get(), "List", 6));
    ASSERT_TRUE(ZvPutSymbol(link.get(), "None"));
    ASSERT_TRUE(ZvPutString(link.get(), "h\xC3\xA9"));
    ASSERT_TRUE(ZvPutUTF8String(link.get(), withNul, 3));
    ASSERT_TRUE(ZvPutInteger64(link.get(), INT64_MIN));
    ASSERT_TRUE(ZvPutReal64(link.get(), 0.07));
    ASSERT_TRUE(ZvPutInteger8Array(link.get(), bytes, dimensions, heads, 2));

    int count = 0;
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_FUNCTION);
    ASSERT_TRUE(ZvTestHead(link.get(), "List", &count));
    EXPECT_EQ(count, 6);
    const char *symbol = nullptr;
    ASSERT_TRUE(ZvGetSymbol(link.get(), &symbol));
    const unsigned char *first = nullptr, *second = nullptr;
    int firstBytes = 0, firstChars = 0, secondBytes = 0, secondChars = 0;
    ASSERT_TRUE(ZvGetUTF8String(link.get(), &first, &firstBytes, &firstChars));
    ASSERT_TRUE(ZvGetUTF8String(link.get(), &second, &secondBytes, &secondChars));
    // The first string must stay valid while later ones are read.
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(first), firstBytes), "h\xC3\xA9");
    EXPECT_EQ(firstChars, 2);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(second), secondBytes),
              std::string("a\0b", 3));
    EXPECT_STREQ(symbol, "None");
    ZvReleaseUTF8String(link.get(), first, firstBytes);
    ZvReleaseSymbol(link.get(), symbol);

    int64_t integer = 0;
    double real = 0;
    ASSERT_TRUE(ZvGetInteger64(link.get(), &integer));
    ASSERT_TRUE(ZvGetReal64(link.get(), &real));
    EXPECT_EQ(integer, INT64_MIN);
    EXPECT_EQ(real, 0.07);

    unsigned char *data = nullptr;
    int *dims = nullptr;
    char **names = nullptr;
    int depth = 0;
    ASSERT_TRUE(ZvGetInteger8Array(link.get(), &data, &dims, &names, &depth));
    ASSERT_EQ(depth, 2);
    EXPECT_EQ(dims[0], 3);
    EXPECT_EQ(dims[1], 2);
    EXPECT_STREQ(names[1], "Row");
    EXPECT_EQ(std::memcmp(data, bytes, sizeof bytes), 0);
    ZvReleaseInteger8Array(link.get(), data, dims, names, depth);

    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_ERROR);
    EXPECT_EQ(ZvLoopbackTokensRead(link.get()), 7);
}

TEST(Loopback, AWrongKindFailsAndTheLinkStaysFailed) {
    const Link link = openLink();
    ZvPutString(link.get(), "name");
    ZvPutInteger64(link.get(), 1);
    const char *symbol = nullptr;
    EXPECT_FALSE(ZvGetSymbol(link.get(), &symbol));
    int64_t integer = 0;
    EXPECT_FALSE(ZvGetInteger64(link.get(), &integer));
    EXPECT_FALSE(ZvPutInteger64(link.get(), 2));
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_ERROR);
    EXPECT_TRUE(ZvLoopbackFailed(link.get()));

    const Link other = openLink();
    ZvPutFunction(other.get(), "Rule", 2);
    int count = 0;
    EXPECT_FALSE(ZvTestHead(other.get(), "List", &count));
}

TEST(Loopback, APacketIsReadableOnlyOnceEnded) {
    const Link link = openLink();
    ASSERT_TRUE(ZvNewPacket(link.get()));
    ASSERT_TRUE(ZvPutInteger64(link.get(), 5));
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_ERROR);
    ASSERT_TRUE(ZvEndPacket(link.get()));
    EXPECT_EQ(ZvGetNext(link.get()), ZVTK_INTEGER);

    const Link unopened = openLink();
    EXPECT_FALSE(ZvEndPacket(unopened.get()));
    const Link nested = openLink();
    ASSERT_TRUE(ZvNewPacket(nested.get()));
    EXPECT_FALSE(ZvNewPacket(nested.get()));
}

TEST(Loopback, WritesBeyondTheAllowanceFail) {
    for (int allowed = 0; allowed < 4; ++allowed) {
        const Link link = openLink();
        ZvLoopbackFailAfter(link.get(), allowed);
        int succeeded = 0;
        while (succeeded < 10 && ZvPutReal64(link.get(), 1.0)) ++succeeded;
        EXPECT_EQ(succeeded, allowed);
        EXPECT_FALSE(ZvFlush(link.get()));
        EXPECT_TRUE(ZvLoopbackFailed(link.get()));
    }
    const Link lifted = openLink();
    ZvLoopbackFailAfter(lifted.get(), 0);
    ZvLoopbackFailAfter(lifted.get(), -1);
    EXPECT_TRUE(ZvNewPacket(lifted.get()) && ZvEndPacket(lifted.get()) && ZvFlush(lifted.get()));
}

TEST(Loopback, MalformedWritesAreRefused) {
    static const unsigned char bytes[2] = {1, 2};
    static const int negative[] = {2, -1};
    static const int two[] = {2};
    static const char *missingHead[] = {nullptr};
    for (auto write : {+[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, negative, nullptr, 2); },
                       +[](ZvLINK l) { return ZvPutInteger8Array(l, nullptr, two, nullptr, 1); },
                       +[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, two, missingHead, 1); },
                       +[](ZvLINK l) { return ZvPutInteger8Array(l, bytes, two, nullptr, 0); },
                       +[](ZvLINK l) { return ZvPutUTF8String(l, nullptr, 3); },
                       +[](ZvLINK l) { return ZvPutFunction(l, "List", -1); },
                       +[](ZvLINK l) { return ZvPutSymbol(l, ""); }}) {
        const Link link = openLink();
        EXPECT_FALSE(write(link.get()));
        EXPECT_TRUE(ZvLoopbackFailed(link.get()));
    }
}

}  // namespace
