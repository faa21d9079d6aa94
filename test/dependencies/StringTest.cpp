#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Containers/StringView.h>
#include <gmock/gmock.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::MutableStringView;
using Containers::String;
using Containers::StringIterable;
using Containers::StringView;
using Containers::StringViewFlag;
using Containers::StringViewFlags;

constexpr StringViewFlags none;
constexpr StringViewFlags global = StringViewFlag::Global;
constexpr StringViewFlags terminated = StringViewFlag::NullTerminated;

TEST(StringView, KeepsWhatIsKnownOfTheMemory) {
    const char* const data = "banana";
    char buffer[]{"buffer"};
    const String owned = "owned";
    const std::string standard = "standard";
    const StringView view{data, 6, global | terminated};
    const struct {
        const char* name;
        StringView view;
        const char* data;
        std::size_t size;
        StringViewFlags flags;
    } rows[]{
        {"default", {}, nullptr, 0, global},
        {"null C string", static_cast<const char*>(nullptr), nullptr, 0, global},
        {"C string", data, data, 6, terminated},
        {"data and size", {data, 3}, data, 3, none},
        {"mutable view", MutableStringView{buffer}, buffer, 6, terminated},
        {"string", owned, owned.data(), 5, terminated},
        {"standard string", standard, standard.data(), 8, terminated},
        {"slice", view.slice(1, 3), data + 1, 2, global},
        {"slice to the end", view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {"prefix", view.prefix(5), data, 5, global},
        {"prefix to a pointer", view.prefix(data + 2), data, 2, global},
        {"prefix to null", view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {"suffix", view.suffix(data + 6), data + 6, 0, global | terminated},
        {"without prefix", view.exceptPrefix("ba"), data + 2, 4, global | terminated},
        {"without suffix", view.exceptSuffix("a"), data, 5, global},
        {"trimmed", view.trimmedPrefix("ab"), data + 2, 4, global | terminated},
        {"trimmed altogether", view.trimmedPrefix("abn"), data + 6, 0, global | terminated},
        {"character", view.find('a'), data + 1, 1, global},
        {"last character", view.findLast('a'), data + 5, 1, global | terminated},
        {"text", view.find("ana"), data + 1, 3, global},
        {"empty text", view.find(""), data, 0, global},
        {"partial match at the end", view.find("nas"), nullptr, 0, none},
        {"else the end", view.findOr('x', view.end()), view.end(), 0, none},
        {"else the start", view.findLastOr('x', data), data, 0, none},
        {"in nothing", StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.view.data(), row.data);
        EXPECT_EQ(row.view.size(), row.size);
        EXPECT_EQ(row.view.flags(), row.flags);
        EXPECT_EQ(bool(row.view), row.size != 0);
    }
    static_assert("a\0b"_s.size() == 3 && "a\0b"_s.flags() == (global | terminated));
}

TEST(StringView, EndsAndParts) {
    const struct {
        StringView string, end;
        bool prefix, suffix;
    } ends[]{
        {"hoho", "ho", true, true},   {"hoha", "ho", true, false}, {"haho", "ho", false, true},
        {"ho", "hoho", false, false}, {"ho", "", true, true},      {{}, {}, true, true},
    };
    for (const auto& row : ends) {
        SCOPED_TRACE(text(row.string));
        EXPECT_EQ(row.string.hasPrefix(row.end), row.prefix);
        EXPECT_EQ(row.string.hasSuffix(row.end), row.suffix);
    }
    EXPECT_FALSE(""_s.hasPrefix('\0') || ""_s.hasSuffix('\0'));
    EXPECT_EQ("a,,b"_s.split(',').size(), 3);
    EXPECT_EQ(",,"_s.split(',').size(), 3);
    EXPECT_EQ(""_s.split(',').size(), 0);
    EXPECT_TRUE("a\0b"_s < "a\0c"_s && "a" < "\xff"_s && "" < "a"_s && StringView{} == ""_s);
}

TEST(String, CopiesAndTerminates) {
    const std::string standard = "standard";
    String rows[]{{}, nullptr, "text", {"text", 2}, "a\0b"_s, standard, "a"_s + "b", String{""}};
    const std::string expected[]{"", "", "text", "te", {"a\0b", 3}, standard, "ab", ""};
    for (std::size_t i = 0; i != std::size(rows); ++i) {
        const String copy = rows[i];
        const char* const data = rows[i].data();
        const String moved = std::move(rows[i]);
        for (const String* string : {&copy, &moved}) {
            EXPECT_EQ(std::string(*string), expected[i]);
            EXPECT_EQ((*string)[string->size()], '\0');
            EXPECT_EQ(string->viewFlags(), terminated);
        }
        EXPECT_TRUE(copy.data() != data || copy.isEmpty());
    }
    EXPECT_EQ(String(NoInit, 30)[30], '\0');
}

std::vector<char*> freed;

TEST(String, TakesMemoryOver) {
    char data[]{"taken over"};
    freed.clear();
    {
        String string{data, 10, [](char* data, std::size_t) { freed.push_back(data); }};
        const String moved = std::move(string);
        EXPECT_EQ(moved.data(), data);
        EXPECT_NE(String{moved}.data(), data);
        EXPECT_TRUE(freed.empty());
    }
    EXPECT_EQ(freed, std::vector<char*>{data});

    Containers::Array<char> array;
    arrayAppend(array, "grown"_s);
    arrayAppend(array, '\0');
    const auto deleter = array.deleter();
    String string{array.release(), 5, deleter};
    EXPECT_EQ(string, "grown");
    deleter(string.release(), 5);
    EXPECT_EQ(string, "");
}

TEST(String, RefersToTerminatedViewsOnly) {
    char buffer[]{"buffer"};
    for (const StringView view : {"literal"_s, StringView{buffer}, "literal"_s.prefix(3)}) {
        const bool refers = bool(view.flags() & terminated);
        const String string = String::nullTerminatedView(view);
        EXPECT_EQ(string, view);
        EXPECT_EQ(string.data() == view.data(), refers);
        EXPECT_EQ(string.viewFlags(), refers ? view.flags() : terminated);
        EXPECT_EQ(String{string}.viewFlags(), terminated);
        EXPECT_EQ(string[string.size()], '\0');
    }
}

TEST(StringIterable, IteratesOverAnyStrings) {
    const StringView views[]{"a", "", "bc"};
    const char* const pointers[]{"a", "", "bc"};
    const Containers::Array<String> strings{InPlaceInit, {"a", "", "bc"}};
    for (const StringIterable& row : {StringIterable{views}, StringIterable{pointers},
                                      StringIterable{strings}, StringIterable{strings.prefix(3)}}) {
        std::string all;
        for (const StringView string : row)
            all += text(string) + ',';
        EXPECT_EQ(all, "a,,bc,");
        EXPECT_EQ(row.size(), 3);
    }
}

struct MisuseRow {
    void (*misuse)();
    const char* message;
};

const MisuseRow misuses[]{
    {[] { "abc"_s.exceptPrefix("bc"); },
     "StringView::exceptPrefix(): string doesn't begin with bc\n"},
    {[] { "abc"_s.exceptSuffix("ab"); },
     "StringView::exceptSuffix(): string doesn't end with ab\n"},
    {[] { String(static_cast<const char*>(nullptr), 3); },
     "String: received a null string of size 3\n"},
    {[] {
         static_cast<void>(String{MutableStringView{}.data(), 0, nullptr});
     },
     "String: can only take ownership of a non-null null-terminated array\n"},
#ifndef NDEBUG
    {[] { ""_s[1]; },
     "StringView::operator[](): index 1 out of range for 0 null-terminated bytes\n"},
    {[] { "abc"_s.prefix(2)[2]; }, "StringView::operator[](): index 2 out of range for 2 bytes\n"},
    {[] { StringView{}.front(); }, "StringView::front(): view is empty\n"},
    {[] { "abc"_s.slice(2, 4); }, "StringView::slice(): slice [2:4] out of range for 3 elements\n"},
    {[] { StringView("abc", 2, terminated); },
     "StringView: Containers::StringViewFlag::NullTerminated expects non-null null-terminated "
     "data\n"},
#endif
};

TEST(StringDeathTest, Misuse) {
    for (const MisuseRow& row : misuses)
        EXPECT_DEATH(row.misuse(), testing::StrEq(std::string{"Containers::"} + row.message));
}

} // namespace
} // namespace VespermoorEngine::Test
