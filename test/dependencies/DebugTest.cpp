#include <limits>
#include <sstream>
#include <string>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <gtest/gtest.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::Optional;
using Utility::Debug;
using Utility::Error;
using Utility::Warning;

namespace {

enum class Weekday { Monday = 1 };

Debug& operator<<(Debug& debug, Weekday value) {
    return debug << "Weekday(" << Debug::nospace << int(value) << Debug::nospace << ")";
}

struct ValueRow {
    const char* name;
    void (*print)(Debug&);
    std::string expected;
};

const ValueRow valueRows[]{
    {"one blank between items", [](Debug& out) { out << "a" << 3 << true; }, "a 3 true\n"},
    {"an empty text is an item",
     [](Debug& out) {
         out << "a"
             << ""
             << ""_s
             << "b";
     },
     "a   b\n"},
    {"nothing", [](Debug&) {}, ""},
    {"a null C string", [](Debug& out) { out << "a" << static_cast<char*>(nullptr); }, "a \n"},
    {"a zero inside a text", [](Debug& out) { out << "a\0b"_s; }, {"a\0b\n", 4}},
    {"an owned string", [](Debug& out) { out << Containers::String{"own"}; }, "own\n"},
    {"characters as numbers", [](Debug& out) { out << 'A' << (unsigned char)(255); }, "65 255\n"},
    {"limits of the integers",
     [](Debug& out) {
         out << std::numeric_limits<long>::min() << std::numeric_limits<unsigned long long>::max();
     },
     "-9223372036854775808 18446744073709551615\n"},
    {"six digits of a float", [](Debug& out) { out << 3.14159265f << 1.0e6f; }, "3.14159 1e+06\n"},
    {"fifteen digits of a double", [](Debug& out) { out << 1.0 / 3.0; }, "0.333333333333333\n"},
    {"no blank",
     [](Debug& out) {
         out << "a" << Debug::nospace << "b"
             << "c";
     },
     "ab c\n"},
    {"operators of other types", [](Debug& out) { out << Weekday::Monday << 2; }, "Weekday(1) 2\n"},
    {"optional", [](Debug& out) { out << Optional<int>{} << Optional<int>{3}; },
     "Containers::NullOpt 3\n"},
};

TEST(Debug, PrintsValues) {
    for (const ValueRow& row : valueRows) {
        SCOPED_TRACE(row.name);
        std::ostringstream out;
        {
            Debug debug{&out};
            row.print(debug);
        }
        EXPECT_EQ(out.str(), row.expected);
    }
}

TEST(Debug, RedirectsOneChannelAndRestoresIt) {
    std::ostringstream outer, inner, debug, warning;
    {
        Debug redirectDebug{&debug};
        Warning redirectWarning{&warning};
        Error redirectOuter{&outer};
        Error{} << "one";
        {
            Error redirectInner{&inner};
            Error{} << "two";
            Error{&outer} << "three";
            Error{Debug::Flag::NoNewlineAtTheEnd} << "four";
        }
        {
            Error mute{nullptr};
            Error{} << "unheard" << 1.5;
        }
        Error{} << "five";
        Warning{} << "six";
        Debug{} << Weekday::Monday;
    }
    EXPECT_EQ(outer.str(), "one\nthree\nfive\n");
    EXPECT_EQ(inner.str(), "two\nfour");
    EXPECT_EQ(warning.str(), "six\n");
    EXPECT_EQ(debug.str(), "Weekday(1)\n");
    testing::internal::CaptureStderr();
    Error{Error::defaultOutput()} << "seven";
    Error{} << "eight";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "seven\neight\n");
}

} // namespace
