#include <cmath>
#include <limits>

#include <Corrade/Utility/Format.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Corrade::Containers::String;
using Corrade::Utility::format;

TEST(Format, Results) {
    const struct {
        String result;
        std::string expected;
    } rows[]{
        {format("<{}>{}", "a\0b"_s, "{}{0}"), {"<a\0b>{}{0}", 10}},
        {format("{{{}}} }}{{", 1), "{1} }{"},
        {format("{2}{0}{}", "a", "b", "c"), "cab"},
        {format("{}{}{5:.3f}", 1), "1{}{5:.3f}"},
        {format("{} {}", std::numeric_limits<long>::min(), 'A'), "-9223372036854775808 65"},
        {format("{} {}", 3.14159265f, 3.14159265358979323), "3.14159 3.14159265358979"},
        {format("{:.0f} {:.2f} {:.4f}", 2.5, 1.005, -1.0e-60), "2 1.00 -0.0000"},
        {format("{:.1f} {:.4f}", 0x1p110, HUGE_VAL), "1298074214633706907132624082305024.0 inf"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(row.result), row.expected);
}

TEST(FormatDeathTest, BrokenFormatsAbort) {
    EXPECT_DEATH(format("a}"), "^Utility::format\\(\\): mismatched }\n$");
    EXPECT_DEATH(format("a{", 1), "^Utility::format\\(\\): unexpected end of format string\n$");
    EXPECT_DEATH(format("{:.1f}", 1), "^Utility::format\\(\\): floating-point type used for an ");
}

} // namespace
} // namespace VespermoorEngine::Test
