#include "Corrade/Utility/Format.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/String.h"

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::String;
using Containers::StringView;
using Utility::format;

namespace {

std::string text(StringView view) {
    return {view.data(), view.size()};
}

enum Level : unsigned char { High = 200 };

struct FormatRow {
    const char* name;
    String result;
    std::string expected;
};

TEST(FormatTest, Results) {
    const FormatRow rows[]{
        {"no placeholder", format("plain"), "plain"},
        {"empty", format(""), ""},
        {"texts", format("{}, {}{}", "a", "b"_s, String{"c"}), "a, bc"},
        {"a zero inside a text", format("<{}>", "a\0b"_s), std::string{"<a\0b>", 5}},
        {"an empty text", format("<{}{}>", ""_s, StringView{}), "<>"},
        {"braces in a value stay", format("{}", "{}{0}"), "{}{0}"},
        {"doubled braces", format("{{{}}} }}{{", 1), "{1} }{"},
        {"numbered", format("{1}{0}{1}", 'a' - 'a', 1), "101"},
        {"counts on from a number", format("{2}{0}{}", "a", "b", "c"), "cab"},
        {"without an argument as it stands", format("{}{}{5:.3x}", 1), "1{}{5:.3x}"},
        {"limits",
         format("{} {} {}", std::numeric_limits<int>::min(), std::numeric_limits<long long>::min(),
                std::numeric_limits<unsigned long>::max()),
         "-2147483648 -9223372036854775808 18446744073709551615"},
        {"small integers as numbers", format("{} {} {} {}", char(65), short(-2), true, High),
         "65 -2 1 200"},
        {"bases", format("{:d} {:x} {:X} {:o}", 255, 255, 255, 8), "255 ff FF 10"},
        {"negative outside of base 10", format("{:x} {:x} {:o}", -1, -1ll, short(-1)),
         "ffffffff ffffffffffffffff 37777777777"},
        {"least digits", format("{:.4d} {:.4d} {:.4x} {:.2}", 42, -42, 0xab, 12345),
         "0042 -0042 00ab 12345"},
        {"no digits of a zero", format("<{:.0}{:.0d}{:.0}>", 0, 0, 7), "<7>"},
        {"a character", format("{:c}{:c}", 'x', 65), "xA"},
        {"shortest digits of a text", format("{:.2}{:.0}{:.9}", "abc", "abc", "abc"), "ababc"},
        {"default digits", format("{} {} {}", 3.14159265f, 3.14159265358979323, 1.0l / 3.0l),
         "3.14159 3.14159265358979 0.333333333333333333"},
        {"no zeros at the end", format("{} {} {} {}", 2.5, 1.0, 100000.0, 0.1f),
         "2.5 1 100000 0.1"},
        {"large and small", format("{} {} {}", 1.0e6f, 1.0e15, 1.0e-5), "1e+06 1e+15 1e-05"},
        {"fixed", format("{:.4f} {:.0f} {:f}", 2.5, 2.5, 1.5f), "2.5000 2 1.500000"},
        {"fixed rounds the exact value", format("{:.2f} {:.1f} {:.4f}", 1.005, 0.25, -0.00001),
         "1.00 0.2 -0.0000"},
        {"nothing left of a tiny one", format("{:.4f} {:.1f}", 1.0e-60, 1.0e-60l), "0.0000 0.0"},
        {"exponent", format("{:.2e} {:.3G} {:.3g}", 12345.678, 1.0e-10, 1234.5),
         "1.23e+04 1E-10 1.23e+03"},
        {"not finite", format("{} {} {:.4f} {:F}", HUGE_VAL, -HUGE_VAL, std::nan(""), HUGE_VAL),
         "inf -inf nan INF"},
        {"negative zero", format("{} {:.1f}", -0.0, -0.0), "-0 -0.0"},
    };
    for (const FormatRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(text(row.result), row.expected);
        EXPECT_EQ(row.result.data()[row.result.size()], '\0');
    }
}

TEST(FormatTest, BrokenFormatsAbort) {
    const struct {
        void (*call)();
        const char* message;
    } rows[]{
        {[] { format("a}"); }, "mismatched }"},
        {[] { format("a{", 1); }, "unexpected end of format string"},
        {[] { format("{0:.2", 1); }, "unexpected end of format string"},
        {[] { format("{name}", 1); }, "unknown placeholder content: n"},
        {[] { format("{:dd}", 1); }, "unknown placeholder content: d"},
        {[] { format("{:q}", 1); }, "invalid type specifier: q"},
        {[] { format("{:.x}", 1); }, "invalid character in precision specifier: x"},
        {[] { format("{:f}", 1); }, "floating-point type used for an integral value"},
        {[] { format("{:x}", 1.0); }, "integral type used for a floating-point value"},
        {[] { format("{:c}", 1.0f); }, "character type used for a floating-point value"},
        {[] { format("{:c}", 1ll); }, "character type used for a 64-bit value"},
        {[] { format("{:c}", true); }, "character type used for a boolean value"},
        {[] { format("{:d}", "text"); }, "type specifier can't be used for a string value"},
    };
    for (const auto& row : rows)
        EXPECT_EXIT(row.call(), testing::KilledBySignal(SIGABRT),
                    "^Utility::format\\(\\): " + std::string{row.message} + "\n$");
}

TEST(FormatTest, IntoBuffer) {
    char buffer[]{"????????"};
    EXPECT_EQ(Utility::formatInto(buffer, "{}-{}", 12, "ab"), 5u);
    EXPECT_STREQ(buffer, "12-ab???");
    EXPECT_EQ(Utility::formatInto(Containers::MutableStringView{}, "{}-{}", 12, "ab"), 5u);
}

TEST(FormatTest, IntoFile) {
    char buffer[16]{};
    std::FILE* const file = fmemopen(buffer, sizeof(buffer), "w");
    ASSERT_TRUE(file);
    Utility::formatInto(file, "{}\n{:.1f}", "a\0b"_s, 2.0);
    std::fclose(file);
    EXPECT_EQ(std::string(buffer, 7), std::string("a\0b\n2.0", 7));
}

TEST(FormatTest, AsciiCase) {
    const StringView mixed = "aZ@[`{\xc3\x84\x80 09"_s;
    EXPECT_EQ(Utility::String::lowercase(mixed), "az@[`{\xc3\x84\x80 09"_s);
    EXPECT_EQ(Utility::String::uppercase(mixed), "AZ@[`{\xc3\x84\x80 09"_s);
    String owned{mixed};
    Utility::String::lowercaseInPlace(owned.exceptPrefix(1));
    EXPECT_EQ(owned, "az@[`{\xc3\x84\x80 09"_s);

    /* What the view looks at is someone else's. */
    const char foreign[]{"ABC"};
    EXPECT_EQ(Utility::String::lowercase(String::nullTerminatedView(foreign)), "abc");
    EXPECT_STREQ(foreign, "ABC");
}

TEST(FormatTest, Replace) {
    const struct {
        const char *string, *search, *replace, *first, *all;
    } rows[]{
        {"abcabc", "b", "xy", "axycabc", "axycaxyc"},
        {"abab", "ab", "", "ab", ""},
        {"aaa", "aa", "b", "ba", "ba"},
        {"a", "a", "aa", "aa", "aa"},
        {"", "a", "b", "", ""},
        {"abc", "d", "e", "abc", "abc"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.string);
        EXPECT_EQ(Utility::String::replaceFirst(row.string, row.search, row.replace), row.first);
        EXPECT_EQ(Utility::String::replaceAll(row.string, row.search, row.replace), row.all);
    }
    EXPECT_EQ(Utility::String::replaceFirst("abc", "", "x"), "xabc");
    EXPECT_EQ(Utility::String::replaceAll(String{"a/b/"}, '/', '\\'), "a\\b\\");
}

} // namespace
