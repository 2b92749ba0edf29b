#include <cmath>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "refhost/refhost.hpp"

namespace {

TEST(Expr, TextReadsBackInCanonicalForm) {
    // An empty expectation means the text is canonical already.
    const std::pair<const char *, const char *> cases[] = {
        {R"({1, -2, 1., 0.07, -0.0025, 1e+20, 1.5e-10})", ""},
        {R"({"ImageSize" -> {3, 2}, "Background" -> RGBColor[0., 0.5, 1.]})", ""},
        {"a -> b -> c", ""},
        {"(a -> b) -> c", ""},
        {R"(f[x$1, {}, g[], Missing["NotAvailable"]])", ""},
        {R"("q\"b\\s\n\t\r\000\001\037\177é")", ""},
        {R"({"comment" -> None, "Delay" -> Infinity})", ""},
        {"  Rule [ \"a\" ,\n{ 1 ,2 } ]  ", R"("a" -> {1, 2})"},
        {"(a) -> (b -> c)", "a -> b -> c"},
        {"{-3,x->-1.}", "{-3, x -> -1.}"},
        {"2.50E-1", "0.25"},
    };
    for (const auto &[text, canonical] : cases)
        EXPECT_EQ(rh::format(rh::parse(text).get()), *canonical ? canonical : text);

    const rh::Expr rule = rh::parse("a -> b -> c");
    EXPECT_STREQ(rh_expr_text(rh_expr_part(rule.get(), 0)), "a");
    EXPECT_STREQ(rh_expr_text(rh_expr_part(rule.get(), 1)), "Rule");
    EXPECT_EQ(rh_expr_length(rule.get()), 2u);
    EXPECT_EQ(rh_expr_part(rule.get(), 2), nullptr);
}

TEST(Expr, RealsPrintShortestAndKeepTheirKind) {
    const struct {
        double value;
        const char *text;
    } cases[] = {{1.0, "1."}, {0.07, "0.07"}, {-0.0, "-0."}, {1e-10, "1e-10"},
                 {0.1 + 0.2, "0.30000000000000004"}, {1e21, "1e+21"}};
    for (const auto &c : cases) {
        const rh::Expr real(rh_expr_new_real(c.value));
        const std::string text = rh::format(real.get());
        EXPECT_EQ(text, c.text);
        const rh::Expr back = rh::parse(text);
        ASSERT_EQ(rh_expr_kind(back.get()), RH_EXPR_REAL) << text;
        EXPECT_EQ(std::signbit(rh_expr_real(back.get())), std::signbit(c.value));
        EXPECT_EQ(rh_expr_real(back.get()), c.value);
    }
    EXPECT_EQ(rh_expr_kind(rh::parse("7").get()), RH_EXPR_INTEGER);
}

TEST(Expr, EveryByteOfAStringSurvives) {
    std::string bytes;
    for (int b = 0; b < 0x80; ++b) bytes += static_cast<char>(b);
    bytes += "\xC3\xA9\xE2\x82\xAC";
    const rh::Expr string(rh_expr_new_string(bytes.data(), bytes.size()));
    const rh::Expr back = rh::parse(rh::format(string.get()));
    ASSERT_EQ(rh_expr_kind(back.get()), RH_EXPR_STRING);
    EXPECT_EQ(std::string(rh_expr_text(back.get()), rh_expr_text_length(back.get())), bytes);
}

TEST(Expr, MalformedInputIsRefusedWithAReason) {
    for (const char *text : {"", "{1,", "{1 2}", "f[", "\"open", R"("\q")", R"("\400")", "2e",
                             "-x", "a ->", "(a", "99999999999999999999", "1e999", "a] "}) {
        char error[128] = {};
        RhExpr *expr = rh_expr_parse(text, error, sizeof error);
        EXPECT_EQ(expr, nullptr) << text;
        EXPECT_NE(error[0], '\0') << text;
        rh_expr_free(expr);
    }
    std::string deep(5000, '{');
    deep += std::string(5000, '}');
    EXPECT_EQ(rh_expr_parse(deep.c_str(), nullptr, 0), nullptr);
}

}  // namespace
