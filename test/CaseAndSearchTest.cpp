#include <algorithm>
#include <locale>
#include <random>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::caseInsensitiveSearch;
using namespace std::string_literals;

constexpr std::uint64_t noMatch = -1;

Containers::StringView view(const std::string& string) {
    return {string.data(), string.size()};
}

TEST(CaseAndSearchTest, Case) {
    struct Row {
        std::string name, kebap, bigCamel;
    };
    const Row rows[]{
        {"", "", ""},
        {"A", "a", "A"},
        {"fooBar", "foo-bar", "FooBar"},
        {"FooBar", "foo-bar", "FooBar"},
        {"XMLParser", "xml-parser", "XMLParser"},
        {"parseXML", "parse-xml", "ParseXML"},
        {"ABc", "a-bc", "ABc"},
        {"AB1", "a-b1", "AB1"},
        {"AB-C D", "ab-c-d", "ABCD"},
        {"a1B", "a1-b", "A1B"},
        {"foo bar", "foo-bar", "FooBar"},
        {"hello world", "hello-world", "HelloWorld"},
        {"a--b", "a-b", "AB"},
        {"a  b", "a--b", "AB"},
        {"a -b", "a--b", "AB"},
        {" a", "-a", "A"},
        {"a ", "a-", "A"},
        {"foo_bar", "foo_bar", "FooBar"},
        {"Foo_Bar", "foo_-bar", "FooBar"},
        {"foo-bar_baz", "foo-bar_baz", "FooBarBaz"},
        {"foo BAR", "foo-bar", "FooBAR"},
        {"3dModel", "3d-model", "DModel"},
        {"1_2a", "1_2a", "A"},
        {"123", "123", ""},
        {"a1b", "a1b", "A1b"},
        {"a_1b", "a_1b", "A1b"},
        {"my-3d-model", "my-3d-model", "My3dModel"},
        {"ÄbC", "Äb-c", "BC"},
        {"AB\0cD"s, "a-b\0c-d"s, "ABCD"},
    };
    for (const auto& [name, kebap, bigCamel] : rows) {
        EXPECT_EQ(text(Utils::toKebapCase(view(name))), kebap);
        EXPECT_EQ(text(Utils::toBigCamelCase(view(name))), bigCamel);
    }
}

TEST(CaseAndSearchTest, Search) {
    struct Row {
        const char* name;
        std::string text;
        const char* substring;
        std::uint64_t expected;
    };
    const Row rows[]{
        {"at the end", "FooBAR", "bar", 3},
        {"whole text", "FooBAR", "fOObar", 0},
        {"first of two", "xBar bar", "BAR", 1},
        {"overlapping start", "aaab", "AAB", 1},
        {"no match", "FooBAR", "x", noMatch},
        {"empty substring", "FooBAR", "", 0},
        {"no data", "", nullptr, 0},
        {"empty text", "", "x", noMatch},
        {"longer than the text", "Foo", "FooB", noMatch},
        {"end of a long text", std::string(5000, '.') + "Bar", "bAR", 5000},
    };
    for (const auto& [name, text, substring, expected] : rows) {
        EXPECT_EQ(caseInsensitiveSearch(view(text), substring), expected) << name;
    }
}

/* Turns bytes to upper case by a function, but ranges of bytes not at all. */
class FunctionFacet : public std::ctype<char> {
public:
    explicit FunctionFacet(int (*const upperCase)(int)) : _upperCase{upperCase} {}

protected:
    char do_toupper(const char c) const override {
        return char(_upperCase(static_cast<unsigned char>(c)));
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }

private:
    int (*_upperCase)(int);
};

TEST(CaseAndSearchTest, RandomSearchesEqualStandardSearch) {
    struct Row {
        const char* name;
        int (*upperCase)(int);
    };
    const Row rows[]{
        {"no case", [](int c) { return c; }},
        {"letters", [](int c) { return c >= 'a' && c <= 'z' ? c - 32 : c; }},
        {"pairs", [](int c) { return c & 0x7f; }},
        {"three of one upper case", [](int c) { return c % 86; }},
        {"one letter of nine", [](int c) { return c % 29 == 3 ? 3 : c; }},
        {"letters of eight", [](int c) { return c & 0xc7; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::locale locale{std::locale::classic(), new FunctionFacet{row.upperCase}};
        std::mt19937 random{1};
        int matches = 0;
        for (int round = 0; round != 2000; ++round) {
            /* Few values at times, so that much matches in part, and sizes on both sides of the one
               from which on a table is made. */
            const unsigned values = round % 2 ? 256 : 3;
            std::string text(random() % (round % 5 ? 60 : 900), ' ');
            std::generate(text.begin(), text.end(), [&] { return char('a' + random() % values); });
            std::string part = text.substr(random() % (text.size() + 1), 1 + random() % 20) + 'b';
            part.resize(part.size() - random() % 2);
            for (char& c : part) {
                c = random() % 2 ? std::toupper(c, locale) : c;
            }
            const auto match = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                           Utils::CaseInsensitiveStringEqual{locale});
            const std::uint64_t expected =
                match == text.end() && !part.empty() ? noMatch : match - text.begin();
            ASSERT_EQ(caseInsensitiveSearch(view(text), view(part), locale), expected) << round;
            matches += expected != noMatch;
        }
        EXPECT_GT(matches, 500);
        EXPECT_LT(matches, 1900);
    }
}

TEST(CaseAndSearchTest, SearchFollowsTheGlobalLocaleOfTheMoment) {
    const std::string text = std::string(1000, '.') + "b";
    EXPECT_EQ(caseInsensitiveSearch(view(text), "c"), noMatch);
    const std::locale before = std::locale::global(
        {std::locale::classic(), new FunctionFacet{[](int c) { return c & 0xfe; }}});
    EXPECT_EQ(caseInsensitiveSearch(view(text), "c"), 1000);
    std::locale::global(before);
    EXPECT_EQ(caseInsensitiveSearch(view(text), "c"), noMatch);
}

} // namespace
} // namespace VespermoorEngine::Test
