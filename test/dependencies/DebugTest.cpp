#include "Corrade/Utility/Debug.h"

#include <cmath>
#include <iostream>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/DebugStl.h"

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

struct Streamed {};

std::ostream& operator<<(std::ostream& stream, Streamed) {
    return stream << "streamed";
}

struct ValueRow {
    const char* name;
    void (*print)(Debug&);
    std::string expected;
};

const ValueRow ValueRows[]{
    {"one blank between items",
     [](Debug& out) {
         out << "a"
             << "b"_s << 3 << true;
     },
     "a b 3 true"},
    {"an empty text is an item",
     [](Debug& out) {
         out << "a"
             << ""
             << ""_s
             << "b";
     },
     "a   b"},
    {"a null C string", [](Debug& out) { out << "a" << static_cast<const char*>(nullptr); }, "a "},
    {"a zero inside a text", [](Debug& out) { out << "a\0b"_s; }, std::string{"a\0b", 3}},
    {"owned and standard strings",
     [](Debug& out) { out << Containers::String{"own"} << std::string{"std"}; }, "own std"},
    {"a mutable array of characters",
     [](Debug& out) {
         char text[]{"text"};
         out << text << Containers::MutableStringView{text};
     },
     "text text"},
    {"characters as numbers", [](Debug& out) { out << 'A' << char(-1) << (unsigned char)(255); },
     "65 -1 255"},
    {"limits of the integers",
     [](Debug& out) {
         out << std::numeric_limits<int>::min() << std::numeric_limits<long>::min()
             << std::numeric_limits<unsigned long long>::max();
     },
     "-2147483648 -9223372036854775808 18446744073709551615"},
    {"hexadecimal for one value", [](Debug& out) { out << Debug::hex << 255 << 255; }, "0xff 255"},
    {"hexadecimal of a negative", [](Debug& out) { out << Debug::hex << -1; }, "0xffffffff"},
    {"pointers", [](Debug& out) { out << reinterpret_cast<const void*>(0xabc) << nullptr; },
     "0xabc nullptr"},
    {"six digits of a float", [](Debug& out) { out << 3.14159265f << 1.0f << 1.0e6f << 0.1f; },
     "3.14159 1 1e+06 0.1"},
    {"fifteen digits of a double", [](Debug& out) { out << 0.1 << 1.0 / 3.0 << 1.0e20; },
     "0.1 0.333333333333333 1e+20"},
    {"eighteen digits of a long double", [](Debug& out) { out << 1.0l / 3.0l; },
     "0.333333333333333333"},
    {"not finite", [](Debug& out) { out << std::nan("") << -HUGE_VAL; }, "nan -inf"},
    {"no blank before the next",
     [](Debug& out) {
         out << "a" << Debug::nospace << "b"
             << "c";
     },
     "ab c"},
    {"a line end has no blank around", [](Debug& out) { out << "a" << Debug::newline << "b"; },
     "a\nb"},
    {"a blank at the start", [](Debug& out) { out << Debug::space << "a"; }, " a"},
    {"containers",
     [](Debug& out) {
         const int numbers[]{1, 2};
         out << Containers::Array<int>{InPlaceInit, {1, 2}} << Containers::arrayView(numbers)
             << std::vector<std::string>{"a", "b"} << Containers::Array<int>{};
     },
     "{1, 2} {1, 2} {a, b} {}"},
    {"containers of containers",
     [](Debug& out) {
         out << std::vector<std::vector<int>>{{1, 2}, {3}};
     },
     "{{1, 2},\n {3}}"},
    {"a packed container in hexadecimal, and back",
     [](Debug& out) {
         const std::vector<int> numbers{10, 11};
         out << "a" << Debug::packed << Debug::hex << numbers << numbers;
     },
     "a 0xa0xb {10, 11}"},
    {"no blank before a container",
     [](Debug& out) {
         out << "a" << Debug::nospace << std::vector<int>{1, 2};
     },
     "a{1, 2}"},
    {"operators of other types", [](Debug& out) { out << Weekday::Monday << Streamed{}; },
     "Weekday(1) streamed"},
};

TEST(DebugTest, Values) {
    for (const ValueRow& row : ValueRows) {
        SCOPED_TRACE(row.name);
        std::ostringstream out;
        {
            Debug debug{&out};
            row.print(debug);
        }
        EXPECT_EQ(out.str(), row.expected + '\n');
    }
}

TEST(DebugTest, LineEnds) {
    std::ostringstream out;
    { Debug redirect{&out}; }
    EXPECT_EQ(out.str(), "");
    Debug{&out} << "";
    EXPECT_EQ(out.str(), "\n");
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd} << "a"
                                                << "b";
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd | Debug::Flag::NoSpace} << "c" << 1;
    EXPECT_EQ(out.str(), "\na bc1");
}

TEST(DebugTest, FlagsOfOneValue) {
    Debug out{nullptr, Debug::Flag::Hex};
    EXPECT_EQ(out.immediateFlags(), Debug::Flag::Hex | Debug::Flag::NoSpace);
    out.setFlags({});
    out.setImmediateFlags(Debug::Flag::Packed);
    EXPECT_EQ(out.flags(), Debug::Flags{});
    EXPECT_EQ(out.immediateFlags(), Debug::Flags{Debug::Flag::Packed});
}

TEST(DebugTest, DefaultOutputs) {
    EXPECT_EQ(Debug::defaultOutput(), &std::cout);
    EXPECT_EQ(Warning::defaultOutput(), &std::cerr);
    EXPECT_EQ(Error::defaultOutput(), &std::cerr);
    EXPECT_EQ(Debug::output(), &std::cout);
    EXPECT_EQ(Warning::output(), &std::cerr);
    EXPECT_EQ(Error::output(), &std::cerr);
}

TEST(DebugTest, RedirectsOneChannelAndRestoresIt) {
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
            Error{} << "four";
        }
        {
            Error mute{nullptr};
            Error{} << "unheard" << 1.5 << std::string{"unseen"} << Debug::newline;
        }
        Error{} << "five";
        Warning{} << "six";
        Debug{} << "seven";
    }
    EXPECT_EQ(outer.str(), "one\nthree\nfive\n");
    EXPECT_EQ(inner.str(), "two\nfour\n");
    EXPECT_EQ(warning.str(), "six\n");
    EXPECT_EQ(debug.str(), "seven\n");
    EXPECT_EQ(Error::output(), Error::defaultOutput());
}

TEST(DebugTest, RedirectsToString) {
    Containers::String out{"before\n"};
    {
        Warning redirect{&out};
        Warning{} << "a line" << 1;
        EXPECT_EQ(out, "before\na line 1\n");
        out = "changed "_s;
        Warning{Debug::Flag::NoNewlineAtTheEnd} << "no line end";
    }
    EXPECT_EQ(out, "changed no line end");
}

TEST(DebugTest, FatalExits) {
    EXPECT_EXIT(Utility::Fatal{7} << "the end" << 1, testing::ExitedWithCode(7), "^the end 1\n$");
}

} // namespace
