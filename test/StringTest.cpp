#include "VespermoorEditor/Utils/String.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale>

#include "Support.h"
#include "VespermoorEditor/Utils/StringWriter.h"

/* The C library never frees the list of directories that it makes of LOCPATH. */
extern "C" [[gnu::visibility("default")]] const char*
__lsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier)
    return "leak:__argz_add_sep";
}

namespace VespermoorEngine::Test {
namespace {

using Utils::caseInsensitiveSearch;
using Utils::CaseInsensitiveStringEqual;
using Utils::noMatch;
using Utils::StringWriter;

TEST(StringTest, ConvertsNames) {
    struct Row {
        const char* name;
        const char* kebap;
        const char* bigCamel;
    };
    const Row rows[]{
        {"", "", ""},
        {"XMLParser", "xml-parser", "XMLParser"},
        {"parseXML", "parse-xml", "ParseXML"},
        {"AB1", "a-b1", "AB1"},
        {"AB-C D", "ab-c-d", "ABCD"},
        {"a1B", "a1-b", "A1B"},
        {"a--b", "a-b", "AB"},
        {"a  b", "a--b", "AB"},
        {"a -b", "a--b", "AB"},
        {"-a ", "-a-", "A"},
        {"Foo_Bar", "foo_-bar", "FooBar"},
        {"1_2a", "1_2a", "A"},
        {"123", "123", ""},
        {"aÄbC", "aÄb-c", "ABC"},
    };
    for (const auto& [name, kebap, bigCamel] : rows) {
        EXPECT_EQ(text(Utils::toKebapCase(name)), kebap);
        EXPECT_EQ(text(Utils::toBigCamelCase(name)), bigCamel);
    }
}

TEST(StringTest, SearchesForAndInEmptyText) {
    const Containers::StringView nullOf1000{nullptr, 1000};
    EXPECT_EQ(caseInsensitiveSearch("FooBAR", nullOf1000), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, ""), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, "x"), noMatch);
    EXPECT_EQ(caseInsensitiveSearch("Foo", "FooB"), ~std::uint64_t{0});
}

/* The calls of the facet below. */
std::string asked;

/* The upper case of c is b; ranges of bytes are returned unchanged. */
class RecordingFacet : public std::ctype<char> {
protected:
    char do_toupper(const char c) const override {
        asked += c;
        return c == 'c' ? 'b' : c;
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }
};

/* A facet may throw for some bytes, so only the others are passed to it. */
TEST(StringTest, SearchCallsAFacetLikeStandardSearch) {
    const std::locale locale{std::locale::classic(), new RecordingFacet};
    for (const std::size_t size : {4, 1000}) {
        const std::string text = std::string(size, 'a') + "abcd";
        const std::string part = "bbx";
        asked.clear();
        std::search(text.begin(), text.end(), part.begin(), part.begin() + 2,
                    CaseInsensitiveStringEqual{locale});
        const std::string expected = std::exchange(asked, {});
        EXPECT_EQ(caseInsensitiveSearch(view(text), "bb", locale), size + 1);
        EXPECT_EQ(asked, expected);
    }
    const std::locale before = std::locale::global(locale);
    EXPECT_EQ(caseInsensitiveSearch("ab", "c"), 1) << "by the locale of the moment";
    std::locale::global(before);
}

/* The classic locale, and others whose facet is the standard library's own. In the last one, two
   lower-case letters have the same upper case. */
class StandardLocales : public testing::Test {
protected:
    StandardLocales() {
        const std::string greek = directory / "el_GR.ISO-8859-7";
        const std::string command = "localedef -i el_GR -f ISO-8859-7 --no-archive " + greek;
        EXPECT_EQ(std::system(command.data()), 0) << "needs the package locales";
        setenv("LOCPATH", directory.path().data(), 1);
        locales.emplace_back("el_GR.ISO-8859-7");
        unsetenv("LOCPATH");
        locales.emplace_back(std::locale::classic(), new std::ctype_byname<char>{"C.UTF-8"});
    }

    TemporaryDirectory directory;
    std::vector<std::locale> locales{std::locale::classic()};
};

TEST_F(StandardLocales, SearchFindsTheLastPlace) {
    for (const std::locale& locale : locales) {
        for (std::size_t size = 0; size != 600; ++size) {
            const std::string text = std::string(size, 'n') + "NeedlE";
            EXPECT_EQ(caseInsensitiveSearch(view(text), "nEEDLe", locale), size);
            EXPECT_EQ(caseInsensitiveSearch(view(text), "eEDLex", locale), noMatch) << size;
            EXPECT_EQ(caseInsensitiveSearch(view(text).exceptSuffix(1), "nEEDLe", locale), noMatch);
        }
    }
    EXPECT_EQ(caseInsensitiveSearch("a\xf2\xd3", "\xd3\xf3", locales[1]), 1);
}

TEST(StringTest, ReplacesTagContent) {
    const Utils::TagReplacement a{"[a]", "[/a]", "1"};
    const Utils::TagReplacement b{"[b]", "[/b]", "2"};
    struct Row {
        const char* text;
        std::vector<Utils::TagReplacement> replacements;
        const char* expected;
        bool succeeds = true;
    };
    const Row rows[]{
        {"x[a]old[/a]y[b]old[/b]z", {b, a}, "x[a]1[/a]y[b]2[/b]z"},
        {"x[a]", {}, "x[a]"},
        {"", {a, b}, ""},
        {"[b]old[/b]", {a, b}, "[b]2[/b]"},
        {"[a][/a][b][/b]", {a, b}, "[a]1[/a][b]2[/b]"},
        {"[a]x[/a][a]y[/a][b]z[/b]", {a, b}, "[a]1[/a][a]y[/a][b]2[/b]"},
        {"<x[>]y|", {{"<", "[>", "1"}, {">]", "|", "2"}}, "<1[>]2|"},
        {"<x>[b]y[/b]", {{"<", ">", "[b]"}, b}, "<[b]>[b]2[/b]"},
        {"[/a]x[a]y", {a}, "[/a]x[a]1[/a]x[a]y"},
        {"x|y", {{"|", "|", ""}}, "x||y"},
        {"[/b]", {a, b}, "missing tag '[b]'", false},
        {"[a][b][/a]", {a, b}, "missing tag '[/b]'", false},
        {"[a][/b]", {a, b}, "missing tag '[/a]'", false},
        {"[a]", {{"[a]", "", "1"}}, "missing tag ''", false},
        {"[a][b][/b][/a]", {b, a}, "overlapping tags: '[/a]' should appear before '[b]'", false},
        {"[a]x[/a]y[/b]",
         {a, {"[a]", "[/b]", "2"}},
         "overlapping tags: '[/a]' should appear before '[a]'",
         false},
        {"|;",
         {{"|", ";", ""}, {";", "|", ""}},
         "overlapping tags: ';' should appear before ';'",
         false},
    };
    for (const Row& row : rows) {
        const auto result =
            Utils::replaceTagContent(row.text, {row.replacements.data(), row.replacements.size()});
        EXPECT_EQ(text(result.first()), row.expected);
        EXPECT_EQ(result.second(), row.succeeds) << row.expected;
    }
    EXPECT_EQ(text(Utils::replaceTagContent("[a]x[/a]", {a, b}).first()), "[a]1[/a]");
}

TEST(StringTest, WriterGrowsAndTerminates) {
    struct Row {
        std::size_t capacity, bytes, expectedCapacity;
    };
    /* The third is the first size that single precision does not hold. */
    for (const auto& [capacity, bytes, expectedCapacity] :
         {Row{10, 10, 15}, Row{10, 20, 21}, Row{16777217, 16777217, 25165824}, Row{0, 0, 1}}) {
        StringWriter writer{capacity};
        writer.append(view(std::string(bytes, 'a')));
        EXPECT_EQ(writer.buffer.size(), expectedCapacity);
        EXPECT_EQ(std::strlen(writer.buffer.data()), bytes);
    }
}

TEST(StringTest, WriterMovesItsBuffer) {
    char memory[8];
    StringWriter writer{0};
    const auto setFirst = [](char* const data, std::size_t) { *data = 'd'; };
    writer.buffer = Containers::Array<char>{memory, sizeof(memory), setFirst};
    writer.append("te");
    writer.append("xt");
    writer.reserve(8);
    EXPECT_EQ(writer.release().data(), memory);
    EXPECT_STREQ(memory, "dext");
    writer.append("text");
    writer.reserve(100);
    EXPECT_EQ(writer.available(), 96);
    EXPECT_EQ(writer.release(), "text");
    EXPECT_EQ(StringWriter{16}.release(), "");
}

TEST(StringDeathTest, WriterWithoutRoom) {
    StringWriter writer{4};
    writer.appendInto("abc");
    EXPECT_DEATH(writer.appendInto("d"), "^Assertion available\\(\\) > bytes failed at "
                                         "../src/VespermoorEngine/Utils/StringWriter:83\n$");
}

} // namespace
} // namespace VespermoorEngine::Test
