#include <algorithm>
#include <locale>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::caseInsensitiveSearch;

struct CaseRow {
    const char* name;
    const char* kebap;
    const char* bigCamel;
};

class Case : public testing::TestWithParam<CaseRow> {};

TEST_P(Case, IsConverted) {
    EXPECT_EQ(text(Utils::toKebapCase(GetParam().name)), GetParam().kebap);
    EXPECT_EQ(text(Utils::toBigCamelCase(GetParam().name)), GetParam().bigCamel);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Case,
    testing::Values(
        CaseRow{"", "", ""}, CaseRow{"A", "a", "A"}, CaseRow{"a", "a", "A"},
        CaseRow{"fooBar", "foo-bar", "FooBar"}, CaseRow{"FooBar", "foo-bar", "FooBar"},
        CaseRow{"XMLParser", "xml-parser", "XMLParser"},
        CaseRow{"parseXML", "parse-xml", "ParseXML"}, CaseRow{"ABc", "a-bc", "ABc"},
        CaseRow{"AB1", "a-b1", "AB1"}, CaseRow{"AB_", "a-b_", "AB"},
        CaseRow{"AB-C D", "ab-c-d", "ABCD"}, CaseRow{"a1B", "a1-b", "A1B"},
        CaseRow{"foo bar", "foo-bar", "FooBar"},
        CaseRow{"hello world", "hello-world", "HelloWorld"}, CaseRow{"a--b", "a-b", "AB"},
        CaseRow{"a---B", "a-b", "AB"}, CaseRow{"--", "-", ""}, CaseRow{"a  b", "a--b", "AB"},
        CaseRow{"a -b", "a--b", "AB"}, CaseRow{"a- b", "a--b", "AB"}, CaseRow{" a", "-a", "A"},
        CaseRow{"a ", "a-", "A"}, CaseRow{"foo_bar", "foo_bar", "FooBar"},
        CaseRow{"Foo_Bar", "foo_-bar", "FooBar"},
        CaseRow{"foo-bar_baz", "foo-bar_baz", "FooBarBaz"}, CaseRow{"foo BAR", "foo-bar", "FooBAR"},
        CaseRow{"3dModel", "3d-model", "DModel"}, CaseRow{"1_2a", "1_2a", "A"},
        CaseRow{"123", "123", ""}, CaseRow{"a1b", "a1b", "A1b"}, CaseRow{"a_1b", "a_1b", "A1b"},
        CaseRow{"my-3d-model", "my-3d-model", "My3dModel"},
        CaseRow{"\xc3\x84"
                "bC",
                "\xc3\x84"
                "b-c",
                "BC"}));

TEST(Case, GoesByTheSizeOfTheView) {
    EXPECT_EQ(text(Utils::toKebapCase({"AB\0cD", 5})), (std::string{"a-b\0c-d", 7}));
    EXPECT_EQ(text(Utils::toKebapCase({"ABc", 2})), "ab");
    EXPECT_EQ(text(Utils::toBigCamelCase({"ab\0cD", 5})), "AbCD");
}

constexpr std::uint64_t noMatch = -1;

struct SearchRow {
    const char* name;
    std::string text;
    const char* substring;
    std::uint64_t expected;
};

class Search : public testing::TestWithParam<SearchRow> {};

TEST_P(Search, FindsFirstMatch) {
    const auto& [name, text, substring, expected] = GetParam();
    EXPECT_EQ(caseInsensitiveSearch({text.data(), text.size()}, substring), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Search,
    testing::Values(SearchRow{"at the end", "FooBAR", "bar", 3},
                    SearchRow{"whole text", "FooBAR", "fOObar", 0},
                    SearchRow{"first of two", "xBar bar", "BAR", 1},
                    SearchRow{"overlapping start", "aaab", "AAB", 1},
                    SearchRow{"no match", "FooBAR", "x", noMatch},
                    SearchRow{"empty substring", "FooBAR", "", 0},
                    SearchRow{"null substring", "FooBAR", nullptr, 0},
                    SearchRow{"both empty", "", "", 0}, SearchRow{"empty text", "", "x", noMatch},
                    SearchRow{"longer than the text", "Foo", "FooB", noMatch},
                    SearchRow{"end of a long text", std::string(5000, '.') + "Bar", "bAR", 5000},
                    SearchRow{"long substring", std::string(5000, 'a'),
                              "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAb", noMatch}),
    rowName<SearchRow>);

/* Turns bytes to upper case by a table, but ranges of bytes not at all. */
class TableFacet : public std::ctype<char> {
public:
    explicit TableFacet(const std::string& upperCase) : _upperCase{upperCase} {}

protected:
    char do_toupper(const char c) const override {
        return _upperCase[static_cast<unsigned char>(c)];
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }

private:
    std::string _upperCase;
};

template <class Function>
std::locale localeOf(const Function& upperCase) {
    std::string table;
    for (unsigned value = 0; value != 256; ++value) {
        table += static_cast<char>(upperCase(value));
    }
    return {std::locale::classic(), new TableFacet{table}};
}

struct LocaleRow {
    const char* name;
    std::locale locale;
};

class SearchInLocale : public testing::TestWithParam<LocaleRow> {};

TEST_P(SearchInLocale, EqualsStandardSearch) {
    const std::locale& locale = GetParam().locale;
    std::mt19937 random{1};
    std::size_t matches = 0;
    for (int round = 0; round != 2000; ++round) {
        /* Few values at times, so that much matches in part, and sizes around those at which
           another way of searching begins. */
        const unsigned values = round % 2 ? 256 : 3;
        std::string text(random() % (round % 5 ? 60 : 600), '\0');
        for (char& c : text) {
            c = static_cast<char>('a' + random() % values);
        }
        std::string substring = text.substr(random() % (text.size() + 1), 1 + random() % 20);
        for (char& c : substring) {
            c = random() % 2 ? std::toupper(c, locale) : random() % 64 ? c : '\xe9';
        }
        if (substring.empty()) {
            continue;
        }
        const auto match = std::search(text.begin(), text.end(), substring.begin(), substring.end(),
                                       Utils::CaseInsensitiveStringEqual{locale});
        const std::uint64_t expected = match == text.end() ? noMatch : match - text.begin();
        ASSERT_EQ(caseInsensitiveSearch({text.data(), text.size()},
                                        {substring.data(), substring.size()}, locale),
                  expected)
            << "round " << round;
        matches += expected != noMatch;
    }
    EXPECT_GT(matches, 500);
    EXPECT_LT(matches, 1990);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SearchInLocale,
    testing::Values(
        LocaleRow{"classic", std::locale::classic()},
        LocaleRow{"nothing has another case", localeOf([](unsigned value) { return value; })},
        LocaleRow{"pairs", localeOf([](unsigned value) { return value & 0xfe; })},
        LocaleRow{"pairs of high bytes", localeOf([](unsigned value) { return value & 0x7f; })},
        LocaleRow{"one letter of three",
                  localeOf([](unsigned value) { return value % 29 == 3 ? 3 : value; })},
        LocaleRow{"letters of many", localeOf([](unsigned value) { return value & 0xc7; })}),
    rowName<LocaleRow>);

TEST(Search, FollowsTheGlobalLocaleOfTheMoment) {
    const std::string text = std::string(1000, '.') + "b";
    const Containers::StringView view{text.data(), text.size()};
    EXPECT_EQ(caseInsensitiveSearch(view, "c"), noMatch);
    EXPECT_EQ(caseInsensitiveSearch("..b", "c"), noMatch);
    const std::locale before =
        std::locale::global(localeOf([](unsigned value) { return value & 0xfe; }));
    EXPECT_EQ(caseInsensitiveSearch(view, "c"), 1000);
    EXPECT_EQ(caseInsensitiveSearch("..b", "c"), 2);
    std::locale::global(before);
    EXPECT_EQ(caseInsensitiveSearch(view, "c"), noMatch);
}

} // namespace
} // namespace VespermoorEngine::Test
