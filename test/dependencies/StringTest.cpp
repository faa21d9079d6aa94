#include <cstring>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StaticArray.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Containers/StringStlView.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::Array;
using Containers::ArrayView;
using Containers::MutableStringView;
using Containers::String;
using Containers::StringIterable;
using Containers::StringView;
using Containers::StringViewFlag;
using Containers::StringViewFlags;

namespace {

constexpr StringViewFlags Global = StringViewFlag::Global;
constexpr StringViewFlags Terminated = StringViewFlag::NullTerminated;

std::string text(StringView view) {
    return {view.begin(), view.end()};
}

std::vector<std::string> texts(const StringIterable& strings) {
    std::vector<std::string> out;
    for (const StringView string : strings)
        out.push_back(text(string));
    return out;
}

struct ViewRow {
    const char* name;
    StringView view;
    const char* data;
    std::size_t size;
    StringViewFlags flags;
};

TEST(StringView, constructionKeepsWhatIsKnownOfTheMemory) {
    const char* const literal = "abcdef";
    char buffer[]{'b', 'u', 'f', '\0'};
    const String owned = "owned";
    const std::string standard = "standard";
    const StringView global{literal, 6, Global | Terminated};

    const ViewRow rows[]{
        {"default", {}, nullptr, 0, Global},
        {"null", nullptr, nullptr, 0, Global},
        {"null C string", static_cast<const char*>(nullptr), nullptr, 0, Global},
        {"C string", literal, literal, 6, Terminated},
        {"C string known to be global", {literal, Global}, literal, 6, Global | Terminated},
        {"data and size", {literal, 3}, literal, 3, {}},
        {"mutable view", MutableStringView{buffer}, buffer, 3, Terminated},
        {"array", ArrayView<char>{buffer, 2}, buffer, 2, {}},
        {"string", owned, owned.data(), 5, Terminated},
        {"standard string", standard, standard.data(), 8, Terminated},
        {"standard view", std::string_view{standard}, standard.data(), 8, {}},
        {"slice", global.slice(1, 3), literal + 1, 2, Global},
        {"slice between pointers", global.slice(literal, literal + 6), literal, 6,
         Global | Terminated},
        {"slice of a size", global.sliceSize(2, 4), literal + 2, 4, Global | Terminated},
        {"prefix", global.prefix(5), literal, 5, Global},
        {"prefix to a pointer", global.prefix(literal + 2), literal, 2, Global},
        {"prefix to null", global.prefix(static_cast<const char*>(nullptr)), nullptr, 0, Global},
        {"suffix from a pointer", global.suffix(literal + 6), literal + 6, 0, Global | Terminated},
        {"without prefix", global.exceptPrefix(1), literal + 1, 5, Global | Terminated},
        {"without a text before", global.exceptPrefix("ab"), literal + 2, 4, Global | Terminated},
        {"without suffix", global.exceptSuffix(2), literal, 4, Global},
        {"without a text behind", global.exceptSuffix("f"), literal, 5, Global},
    };
    for (const ViewRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.view.data(), row.data);
        EXPECT_EQ(row.view.size(), row.size);
        EXPECT_EQ(row.view.flags(), row.flags);
        EXPECT_EQ(bool(row.view), row.size != 0);
    }
    static_assert("literal"_s.size() == 7 && "literal"_s.flags() == (Global | Terminated), "");
    static_assert(sizeof(StringView) == 2 * sizeof(void*), "");
}

struct FlagRow {
    StringViewFlags flags;
    const char* expected;
};

TEST(StringView, flagsArePrinted) {
    const FlagRow rows[]{
        {{}, "Containers::StringViewFlags{}\n"},
        {Global | Terminated,
         "Containers::StringViewFlag::Global|Containers::StringViewFlag::NullTerminated\n"},
    };
    for (const FlagRow& row : rows) {
        std::ostringstream out;
        Utility::Debug{&out} << row.flags;
        EXPECT_EQ(out.str(), row.expected);
    }
}

struct SearchRow {
    const char* name;
    /* -1 where nothing is found */
    std::ptrdiff_t position;
    std::size_t size;
    StringView (*search)(const String&);
};

const SearchRow SearchRows[]{
    {"character", 1, 1, [](const String& s) { return s.find('a'); }},
    {"last character", 5, 1, [](const String& s) { return s.findLast('a'); }},
    {"no character", -1, 0, [](const String& s) { return s.find('x'); }},
    {"text", 1, 3, [](const String& s) { return s.find("ana"); }},
    {"last text", 3, 3, [](const String& s) { return s.findLast("ana"_s); }},
    {"text longer than the string", -1, 0, [](const String& s) { return s.find("bananas"); }},
    {"partial match at the end", -1, 0, [](const String& s) { return s.find("nas"); }},
    {"empty text", 0, 0, [](const String& s) { return s.find(""); }},
    {"last empty text", 6, 0, [](const String& s) { return s.findLast(""); }},
    {"any character", 1, 1, [](const String& s) { return s.findAny("xna"); }},
    {"last of any character", 4, 1, [](const String& s) { return s.findLastAny("nb"); }},
    {"none of the characters", -1, 0, [](const String& s) { return s.findAny("xyz"); }},
    {"else the end", 6, 0, [](const String& s) { return s.findOr('x', s.end()); }},
    {"else the start", 0, 0, [](const String& s) { return s.findLastOr("x", s.begin()); }},
    {"else any", 6, 0, [](const String& s) { return s.findAnyOr("x", s.end()); }},
};

TEST(StringView, search) {
    const String string = "banana";
    for (const SearchRow& row : SearchRows) {
        SCOPED_TRACE(row.name);
        const StringView found = row.search(string);
        EXPECT_EQ(found.data(), row.position < 0 ? nullptr : string.data() + row.position);
        EXPECT_EQ(found.size(), row.size);
    }
    EXPECT_EQ("banana"_s.find("na").flags(), Global);
    EXPECT_EQ("banana"_s.findLast("na").flags(), Global | Terminated);
    EXPECT_EQ("banana"_s.find("x").flags(), StringViewFlags{});
    EXPECT_TRUE(string.contains("nan") && string.contains('b') && string.containsAny("xb"));
    EXPECT_FALSE(string.contains("nab") || string.contains('\0') || string.containsAny(""));
    EXPECT_FALSE(StringView{}.contains(""));
    EXPECT_EQ(StringView{}.findOr("", string.end()).data(), string.end());
    EXPECT_EQ(string.count('a'), 3);
}

struct EndRow {
    StringView string, end;
    bool prefix, suffix;
};

TEST(StringView, prefixAndSuffix) {
    const EndRow rows[]{
        {"hoho", "ho", true, true},   {"hoha", "ho", true, false}, {"haho", "ho", false, true},
        {"ho", "hoho", false, false}, {"ho", "", true, true},      {{}, {}, true, true},
    };
    for (const EndRow& row : rows) {
        SCOPED_TRACE(text(row.string) + " and " + text(row.end));
        EXPECT_EQ(row.string.hasPrefix(row.end), row.prefix);
        EXPECT_EQ(row.string.hasSuffix(row.end), row.suffix);
    }
    EXPECT_TRUE("ab"_s.hasPrefix('a') && "ab"_s.hasSuffix('b'));
    EXPECT_FALSE(""_s.hasPrefix('\0') || ""_s.hasSuffix('\0'));
}

struct TrimRow {
    StringView string;
    const char *prefix, *suffix, *both;
};

TEST(StringView, trimming) {
    const TrimRow rows[]{
        {" \t\f\v\r\n x y \n", "x y \n", " \t\f\v\r\n x y", "x y"},
        {"x", "x", "x", "x"},
        {" \n ", "", "", ""},
        {"", "", "", ""},
    };
    for (const TrimRow& row : rows) {
        SCOPED_TRACE(text(row.string));
        EXPECT_EQ(row.string.trimmedPrefix(), row.prefix);
        EXPECT_EQ(row.string.trimmedSuffix(), row.suffix);
        EXPECT_EQ(row.string.trimmed(), row.both);
    }
    EXPECT_EQ("--x-y++"_s.trimmed("-+"), "x-y");
    EXPECT_EQ(StringView{}.trimmed().data(), nullptr);
}

using Parts = std::vector<std::string>;

struct SplitRow {
    const char* name;
    const char* string;
    Parts expected;
    Array<StringView> (*split)(const String&);
};

const SplitRow SplitRows[]{
    {"character", ",a,,b,", {"", "a", "", "b", ""}, [](const String& s) { return s.split(','); }},
    {"text", "a, b,c, ", {"a", "b,c", ""}, [](const String& s) { return s.split(", "); }},
    {"delimiter only", ",", {"", ""}, [](const String& s) { return s.split(','); }},
    {"nothing", "", {}, [](const String& s) { return s.split(','); }},
    {"no empty parts",
     ",a,,b,",
     {"a", "b"},
     [](const String& s) { return s.splitWithoutEmptyParts(','); }},
    {"any character",
     ";a,;b,",
     {"a", "b"},
     [](const String& s) { return s.splitOnAnyWithoutEmptyParts(",;"); }},
    {"whitespace",
     " a\tb\r\n",
     {"a", "b"},
     [](const String& s) { return s.splitOnWhitespaceWithoutEmptyParts(); }},
};

TEST(StringView, splitting) {
    for (const SplitRow& row : SplitRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(texts(row.split(row.string)), row.expected);
    }
    const Array<StringView> parts = "a,b"_s.split(',');
    EXPECT_EQ(parts[0].flags(), Global);
    EXPECT_EQ(parts[1].flags(), Global | Terminated);
}

struct PartitionRow {
    StringView string;
    Parts first, last;
};

TEST(StringView, partitions) {
    const PartitionRow rows[]{
        {"a=b=c", {"a", "=", "b=c"}, {"a=b", "=", "c"}},
        {"abc", {"abc", "", ""}, {"", "", "abc"}},
        {"=", {"", "=", ""}, {"", "=", ""}},
        {"", {"", "", ""}, {"", "", ""}},
    };
    for (const PartitionRow& row : rows) {
        SCOPED_TRACE(text(row.string));
        EXPECT_EQ(texts(Containers::arrayView(row.string.partition('='))), row.first);
        EXPECT_EQ(texts(Containers::arrayView(row.string.partition("="))), row.first);
        EXPECT_EQ(texts(Containers::arrayView(row.string.partitionLast('='))), row.last);
        EXPECT_EQ(texts(Containers::arrayView(row.string.partitionLast("="))), row.last);
    }
}

struct JoinRow {
    const char* delimiter;
    Parts parts;
    const char *joined, *withoutEmpty;
};

TEST(StringView, joining) {
    const JoinRow rows[]{
        {", ", {"a", "", "b", ""}, "a, , b, ", "a, b"},
        {"", {"a", "b"}, "ab", "ab"},
        {",", {"", ""}, ",", ""},
        {",", {}, "", ""},
    };
    for (const JoinRow& row : rows) {
        SCOPED_TRACE(row.joined);
        const ArrayView<const std::string> parts{row.parts.data(), row.parts.size()};
        EXPECT_EQ(StringView{row.delimiter}.join(parts), row.joined);
        EXPECT_EQ(String{row.delimiter}.joinWithoutEmptyParts(parts), row.withoutEmpty);
    }
    EXPECT_EQ("a"_s + "" + String{"b"} + "c\0d"_s, "abc\0d"_s);
    EXPECT_EQ("ab"_s * 3, "ababab");
}

struct OrderRow {
    StringView a, b;
    int order;
};

TEST(StringView, comparison) {
    const OrderRow rows[]{
        {"a", "a", 0}, {"a", "b", -1}, {"a", "ab", -1},          {"\xff", "a", 1},
        {{}, "", 0},   {"", "a", -1},  {"a\0b"_s, "a\0c"_s, -1}, {"a\0"_s, "a", 1},
    };
    for (const OrderRow& row : rows) {
        SCOPED_TRACE(text(row.a) + " and " + text(row.b));
        EXPECT_EQ(row.a == row.b, row.order == 0);
        EXPECT_EQ(row.a != row.b, row.order != 0);
        EXPECT_EQ(row.a < row.b, row.order < 0);
        EXPECT_EQ(row.a <= row.b, row.order <= 0);
        EXPECT_EQ(row.a > row.b, row.order > 0);
        EXPECT_EQ(row.a >= row.b, row.order >= 0);
    }
}

struct StringRow {
    const char* name;
    String string;
    std::string expected;
};

TEST(String, constructionCopiesAndTerminates) {
    const std::string longer = "longer than its own size by far";
    const StringView unterminated{longer.data(), longer.size() - 1};
    const std::string expected = text(unterminated);
    StringRow rows[]{
        {"default", {}, ""},
        {"null", nullptr, ""},
        {"C string", "text", "text"},
        {"data and size", {unterminated.data(), 4}, "long"},
        {"larger", {unterminated.data(), unterminated.size()}, expected},
        {"view", "a\0b"_s, {"a\0b", 3}},
        {"array", Containers::arrayView(unterminated), expected},
        {"standard string", std::string{"standard"}, "standard"},
        {"zeros", String{ValueInit, 2}, {"\0\0", 2}},
        {"filled", String{DirectInit, 30, 'x'}, std::string(30, 'x')},
        {"allocated", String{Containers::AllocatedInit, "text"}, "text"},
    };
    for (StringRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto expect = [&](const String& string) {
            ASSERT_TRUE(string.data());
            EXPECT_EQ(std::string(string), row.expected);
            EXPECT_EQ(string.data()[string.size()], '\0');
            EXPECT_EQ(string.isEmpty(), row.expected.empty());
            EXPECT_EQ(string.viewFlags(), Terminated);
        };
        expect(row.string);
        String copy = row.string;
        expect(copy);
        EXPECT_NE(copy.data(), row.expected.empty() ? nullptr : row.string.data());
        const String moved = std::move(row.string);
        expect(moved);
        copy = "other";
        copy = moved;
        expect(copy);
        copy = String{copy.exceptSuffix(0)};
        expect(copy);
    }
    EXPECT_EQ(String(NoInit, 30)[30], '\0');
    EXPECT_EQ(sizeof(String), 24);
}

std::vector<std::pair<const char*, std::size_t>> freed;
void release(char* data, std::size_t size) {
    freed.emplace_back(data, size);
}

TEST(String, memoryIsTakenOverWithoutACopy) {
    char data[]{"taken over"};
    freed.clear();
    {
        String string{data, 10, release};
        const String moved = std::move(string);
        EXPECT_EQ(moved.data(), data);
        EXPECT_EQ(moved.deleter(), release);
        const String copy = moved;
        EXPECT_NE(copy.data(), data);
        EXPECT_TRUE(freed.empty());
    }
    EXPECT_THAT(freed, testing::ElementsAre(std::make_pair(data, 10)));

    freed.clear();
    String string{data, release};
    EXPECT_EQ(string.size(), 10);
    EXPECT_EQ(string.release(), data);
    EXPECT_TRUE(freed.empty());
    EXPECT_EQ(string, "");
    EXPECT_EQ(*string.data(), '\0');
}

TEST(String, growableArrayBecomesAString) {
    Array<char> array;
    for (const char c : "an array that has grown"_s)
        arrayAppend(array, c);
    arrayAppend(array, '\0');
    const char* const data = array.data();
    const std::size_t size = array.size() - 1;
    const auto deleter = array.deleter();
    String string{array.release(), size, deleter};
    EXPECT_EQ(string, "an array that has grown");
    EXPECT_EQ(string.data(), data);

    Array<char> again = std::move(string);
    EXPECT_EQ(again.data(), data);
    EXPECT_EQ(again.size(), size);
}

struct ReferenceRow {
    const char* name;
    StringView view;
    bool terminatedReferred, globalReferred;
};

TEST(String, referringToAView) {
    char buffer[]{"buffer"};
    const ReferenceRow rows[]{
        {"literal", "literal"_s, true, true},
        {"null-terminated", buffer, true, false},
        {"part", "literal"_s.prefix(3), false, false},
    };
    for (const ReferenceRow& row : rows) {
        SCOPED_TRACE(row.name);
        const String terminated = String::nullTerminatedView(row.view);
        EXPECT_EQ(terminated, row.view);
        EXPECT_EQ(terminated.data() == row.view.data(), row.terminatedReferred);
        EXPECT_EQ(terminated.viewFlags(),
                  row.terminatedReferred ? row.view.flags() : StringViewFlags{Terminated});
        EXPECT_EQ(terminated.data()[terminated.size()], '\0');
        const String global = String::nullTerminatedGlobalView(row.view);
        EXPECT_EQ(global, row.view);
        EXPECT_EQ(global.data() == row.view.data(), row.globalReferred);
        EXPECT_EQ(String{global}.viewFlags(), Terminated);
    }
}

TEST(String, partsCanBeWritten) {
    String string = "some text";
    string.prefix(4).front() = 'S';
    string.find("text")[0] = 'T';
    string.back() = '!';
    string[4] = '_';
    for (const MutableStringView part : string.split('_'))
        part[1] = '.';
    EXPECT_EQ(string, "S.me_T.x!");
    static_assert(!std::is_convertible<const String&, MutableStringView>::value, "");
}

struct IterableRow {
    const char* name;
    StringIterable strings;
};

TEST(StringIterable, iteratesOverAnyStrings) {
    const StringView views[]{"a", "", "long enough to be on the heap"};
    const char* const pointers[]{"a", "", "long enough to be on the heap"};
    const Array<String> strings{InPlaceInit, {"a", "", "long enough to be on the heap"}};
    const std::string standard[]{"a", "", "long enough to be on the heap"};

    for (const IterableRow& row : {
             IterableRow{"views", views},
             IterableRow{"C strings", pointers},
             IterableRow{"strings", strings},
             IterableRow{"view of strings", strings.prefix(3)},
             IterableRow{"standard strings", Containers::arrayView(standard)},
         }) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.strings.size(), 3);
        EXPECT_EQ(texts(row.strings), Parts(std::begin(standard), std::end(standard)));
        EXPECT_EQ(row.strings.front(), "a");
        EXPECT_EQ(row.strings.back(), standard[2].data());
        EXPECT_EQ(row.strings[1], "");
    }
    EXPECT_EQ(texts({"in"_s, "place"}), (Parts{"in", "place"}));
    EXPECT_TRUE(StringIterable{}.isEmpty() && texts(nullptr).empty());
    EXPECT_EQ(StringIterable{strings}[0].flags(), Terminated);
}

struct MisuseRow {
    const char* name;
    void (*misuse)();
    const char* message;
    bool always;
};

const MisuseRow MisuseRows[]{
    {"index", [] { ""_s.prefix(0)[1]; },
     "Containers::StringView::operator[](): index 1 out of range for 0 null-terminated bytes\n",
     false},
    {"index of a part", [] { "abc"_s.prefix(2)[2]; },
     "Containers::StringView::operator[](): index 2 out of range for 2 bytes\n", false},
    {"front", [] { StringView{}.front(); }, "Containers::StringView::front(): view is empty\n",
     false},
    {"slice", [] { "abc"_s.slice(2, 4); },
     "Containers::StringView::slice(): slice [2:4] out of range for 3 elements\n", false},
    {"not terminated", [] { StringView("abc", 2, StringViewFlag::NullTerminated); },
     "Containers::StringView: Containers::StringViewFlag::NullTerminated expects non-null "
     "null-terminated data\n",
     false},
    {"other prefix", [] { "abc"_s.exceptPrefix("bc"); },
     "Containers::StringView::exceptPrefix(): string doesn't begin with bc\n", true},
    {"other suffix", [] { "abc"_s.exceptSuffix("ab"); },
     "Containers::StringView::exceptSuffix(): string doesn't end with ab\n", true},
    {"no delimiter", [] { "abc"_s.split(""); },
     "Containers::StringView::split(): delimiter is empty\n", true},
    {"null of a size",
     [] {
         String{static_cast<const char*>(nullptr), 3};
     },
     "Containers::String: received a null string of size 3\n", true},
    {"taking over without a zero",
     [] {
         String{"abc", 2, [](char*, std::size_t) {}};
     },
     "Containers::String: can only take ownership of a non-null null-terminated array\n", true},
};

TEST(StringDeathTest, misuse) {
#ifdef NDEBUG
    constexpr bool Debug = false;
#else
    constexpr bool Debug = true;
#endif
    for (const MisuseRow& row : MisuseRows) {
        SCOPED_TRACE(row.name);
        if (Debug || row.always) {
            EXPECT_DEATH(row.misuse(), testing::StrEq(row.message));
        }
    }
}

} // namespace
