#include <cmath>
#include <limits>
#include <string>

#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Format.h>
#include <gtest/gtest.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Corrade::Containers::String;
using Corrade::Containers::StringView;
using Corrade::Utility::format;

enum Level : unsigned char { High = 200 };

TEST(Format, Results) {
    const struct {
        const char* name;
        String result;
        std::string expected;
    } rows[]{
        {"texts", format("{}, {}{}", "a", "b"_s, String{"c"}), "a, bc"},
        {"a zero inside a text", format("<{}>", "a\0b"_s), {"<a\0b>", 5}},
        {"braces in a value stay", format("{}", "{}{0}"), "{}{0}"},
        {"doubled braces", format("{{{}}} }}{{", 1), "{1} }{"},
        {"counts on from a number", format("{2}{0}{}", "a", "b", "c"), "cab"},
        {"without an argument as it stands", format("{}{}{5:.3f}", 1), "1{}{5:.3f}"},
        {"limits",
         format("{} {}", std::numeric_limits<long>::min(), std::numeric_limits<std::size_t>::max()),
         "-9223372036854775808 18446744073709551615"},
        {"small integers as numbers", format("{} {} {}", char(65), true, High), "65 1 200"},
        {"default digits", format("{} {}", 3.14159265f, 3.14159265358979323),
         "3.14159 3.14159265358979"},
        {"no zeros at the end", format("{} {} {}", 2.5, 100000.0, -0.0), "2.5 100000 -0"},
        {"fixed", format("{:.4f} {:.0f} {0:.1f}", 2.5, 2.5), "2.5000 2 2.5"},
        {"fixed rounds the exact value", format("{:.2f} {:.4f}", 1.005, -1.0e-60), "1.00 -0.0000"},
        {"many digits", format("{:.1f}", 0x1p110), "1298074214633706907132624082305024.0"},
        {"not finite", format("{} {:.4f}", HUGE_VAL, -HUGE_VAL), "inf -inf"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(text(row.result), row.expected);
        EXPECT_EQ(row.result[row.result.size()], '\0');
    }
}

TEST(FormatDeathTest, BrokenFormatsAbort) {
    EXPECT_DEATH(format("a}"), "^Utility::format\\(\\): mismatched }\n$");
    EXPECT_DEATH(format("a{", 1), "^Utility::format\\(\\): unexpected end of format string\n$");
    EXPECT_DEATH(format("{:.1f}", 1), "^Utility::format\\(\\): floating-point type used for an ");
}

} // namespace
} // namespace VespermoorEngine::Test
