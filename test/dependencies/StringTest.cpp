#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringStl.h>
#include <gmock/gmock.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::String;
using Containers::StringView;
using Containers::StringViewFlags;

namespace {

constexpr StringViewFlags none;
constexpr StringViewFlags global = Containers::StringViewFlag::Global;
constexpr StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;

TEST(StringView, KeepsWhatIsKnownOfTheMemory) {
    const char* const data = "banana";
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
        {"C string", data, data, 6, terminated},
        {"data and size", {data, 3}, data, 3, none},
        {"string", owned, owned.data(), 5, terminated},
        {"standard string", standard, standard.data(), 8, terminated},
        {"slice", view.slice(1, 3), data + 1, 2, global},
        {"slice to the end", view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {"prefix to null", view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {"suffix", view.suffix(data + 6), data + 6, 0, global | terminated},
        {"without prefix", view.exceptPrefix("ba"), data + 2, 4, global | terminated},
        {"without suffix", view.exceptSuffix("a"), data, 5, global},
        {"trimmed altogether", view.trimmedPrefix("abn"), data + 6, 0, global | terminated},
        {"last character", view.findLast('a'), data + 5, 1, global | terminated},
        {"text", view.find("ana"), data + 1, 3, global},
        {"partial match at the end", view.find("nas"), nullptr, 0, none},
        {"else the end", view.findOr('x', view.end()), view.end(), 0, none},
        {"in nothing", StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.view.data(), row.data);
        EXPECT_EQ(row.view.size(), row.size);
        EXPECT_EQ(row.view.flags(), row.flags);
        EXPECT_EQ(bool(row.view), row.size != 0);
    }
}

TEST(StringView, EndsAndParts) {
    EXPECT_TRUE("ho"_s.hasSuffix("") && "hoha"_s.hasPrefix("ho") && StringView{}.hasPrefix(""));
    EXPECT_FALSE("ha"_s.hasSuffix("haha") || "hoha"_s.hasSuffix("ho") || ""_s.hasPrefix('\0'));
    EXPECT_EQ("a,,b"_s.split(',').size(), 3);
    EXPECT_EQ(",,"_s.split(',').size(), 3);
    EXPECT_EQ(""_s.split(',').size(), 0);
    EXPECT_TRUE("a\0b"_s < "a\0c"_s && "a" < "\xff"_s && StringView{} == ""_s);
}

TEST(String, CopiesAndTerminates) {
    const std::string standard = "standard";
    String rows[]{{}, nullptr, {"text", 2}, "a\0b"_s, standard, "a"_s + "b"};
    const std::string expected[]{"", "", "te", {"a\0b", 3}, standard, "ab"};
    for (std::size_t i = 0; i != std::size(rows); ++i) {
        const String copy = rows[i];
        const String moved = std::move(rows[i]);
        EXPECT_TRUE(copy.data() != moved.data() || copy.isEmpty());
        for (const String* string : {&copy, &moved}) {
            EXPECT_EQ(std::string(*string), expected[i]);
            EXPECT_EQ((*string)[string->size()], '\0');
            EXPECT_EQ(string->viewFlags(), terminated);
        }
    }
    EXPECT_EQ(String(NoInit, 30)[30], '\0');
}

std::vector<char*> freed;

TEST(String, TakesMemoryOver) {
    char data[]{"taken over"};
    const auto free = [](char* data, std::size_t) { freed.push_back(data); };
    {
        String string{data, 10, free};
        const String moved = std::move(string);
        EXPECT_EQ(moved.data(), data);
        EXPECT_NE(String{moved}.data(), data);
        String released{data, 10, free};
        EXPECT_EQ(released.release(), data);
        EXPECT_EQ(released, "");
        EXPECT_TRUE(freed.empty());
    }
    EXPECT_EQ(freed, std::vector<char*>{data});
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
    }
}

TEST(StringDeathTest, Misuse) {
    const struct {
        void (*misuse)();
        const char* message;
    } rows[]{
        {[] { "abc"_s.exceptPrefix("bc"); },
         "StringView::exceptPrefix(): string doesn't begin with bc\n"},
        {[] { String(static_cast<const char*>(nullptr), 3); },
         "String: received a null string of size 3\n"},
#ifndef NDEBUG
        {[] { "abc"_s.slice(2, 4); },
         "StringView::slice(): slice [2:4] out of range for 3 elements\n"},
        {[] { StringView("abc", 2, terminated); },
         "StringView: Containers::StringViewFlag::NullTerminated expects non-null null-terminated "
         "data\n"},
#endif
    };
    for (const auto& row : rows)
        EXPECT_DEATH(row.misuse(), testing::StrEq(std::string{"Containers::"} + row.message));
}

} // namespace
