#include <limits>
#include <sstream>
#include <string>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <gtest/gtest.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Utility::Debug;
using Utility::Error;
using Utility::Warning;

namespace {

enum class Weekday { Monday = 1 };

Debug& operator<<(Debug& debug, Weekday value) {
    return debug << "Weekday(" << Debug::nospace << int(value) << Debug::nospace << ")";
}

TEST(Debug, PrintsValues) {
    const struct {
        void (*print)(Debug&);
        std::string expected;
    } rows[]{
        {[](Debug& out) { out << "a" << Containers::String{"b"} << 3 << true; }, "a b 3 true\n"},
        {[](Debug& out) {
             out << "a"
                 << ""_s << static_cast<char*>(nullptr) << 1;
         },
         "a   1\n"},
        {[](Debug&) {}, ""},
        {[](Debug& out) { out << "a\0b"_s; }, {"a\0b\n", 4}},
        {[](Debug& out) { out << 'A' << (unsigned char)(255); }, "65 255\n"},
        {[](Debug& out) { out << std::numeric_limits<long>::min() << ~0ull; },
         "-9223372036854775808 18446744073709551615\n"},
        {[](Debug& out) { out << 3.14159265f << 1.0 / 3.0; }, "3.14159 0.333333333333333\n"},
        {[](Debug& out) { out << 1 << Debug::nospace << Weekday::Monday << 2; }, "1Weekday(1) 2\n"},
        {[](Debug& out) { out << Containers::Optional<int>{}; }, "Containers::NullOpt\n"},
        {[](Debug& out) { out << Containers::Optional<int>{3}; }, "3\n"},
    };
    for (const auto& row : rows) {
        std::ostringstream out;
        {
            Debug debug{&out};
            row.print(debug);
        }
        EXPECT_EQ(out.str(), row.expected);
    }
}

TEST(Debug, RedirectsOneChannelAndRestoresIt) {
    std::ostringstream outer, inner, warning;
    testing::internal::CaptureStderr();
    {
        Warning redirectWarning{&warning};
        Error redirectOuter{&outer};
        Error{} << "one";
        {
            Error redirectInner{&inner};
            Error{&outer} << "two";
            Error{Debug::Flag::NoNewlineAtTheEnd} << "three";
            Error{Error::defaultOutput()} << "four";
        }
        {
            Error mute{nullptr};
            Error{} << "unheard" << 1.5;
        }
        Error{} << "five";
        Warning{} << Weekday::Monday;
    }
    Error{} << "six";
    EXPECT_EQ(outer.str(), "one\ntwo\nfive\n");
    EXPECT_EQ(inner.str(), "three");
    EXPECT_EQ(warning.str(), "Weekday(1)\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "four\nsix\n");
}

} // namespace
