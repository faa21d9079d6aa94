#include <algorithm>
#include <locale>
#include <random>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::caseInsensitiveSearch;
using Utils::noMatch;

TEST(CaseAndSearchTest, Case) {
    struct Row {
        const char *name, *kebap, *bigCamel;
    };
    const Row rows[]{
        // clang-format off
        {"", "", ""}, {"A", "a", "A"}, {"fooBar", "foo-bar", "FooBar"}, {"ABc", "a-bc", "ABc"},
        {"XMLParser", "xml-parser", "XMLParser"}, {"parseXML", "parse-xml", "ParseXML"},
        {"AB1", "a-b1", "AB1"}, {"AB-C D", "ab-c-d", "ABCD"}, {"a1B", "a1-b", "A1B"},
        {"foo bar", "foo-bar", "FooBar"}, {"foo BAR", "foo-bar", "FooBAR"}, {"a--b", "a-b", "AB"},
        {"a  b", "a--b", "AB"}, {"a -b", "a--b", "AB"}, {" a", "-a", "A"}, {"-a", "-a", "A"},
        {"a ", "a-", "A"}, {"Foo_Bar", "foo_-bar", "FooBar"}, {"foo_bar", "foo_bar", "FooBar"},
        {"3dModel", "3d-model", "DModel"}, {"1_2a", "1_2a", "A"},
        {"123", "123", ""}, {"a_1b", "a_1b", "A1b"}, {"aÄbC", "aÄb-c", "ABC"},
        {"FooBar", "foo-bar", "FooBar"}, {"hello world", "hello-world", "HelloWorld"},
        {"foo-bar_baz", "foo-bar_baz", "FooBarBaz"}, {"a1b", "a1b", "A1b"},
        {"my-3d-model", "my-3d-model", "My3dModel"},
        // clang-format on
    };
    for (const auto& [name, kebap, bigCamel] : rows) {
        EXPECT_EQ(text(Utils::toKebapCase(name)), kebap);
        EXPECT_EQ(text(Utils::toBigCamelCase(name)), bigCamel);
    }
}

/* Turns bytes to upper case by a function, but ranges of bytes not at all. */
class FunctionFacet : public std::ctype<char> {
public:
    explicit FunctionFacet(int (*const upperCase)(int)) : upperCase{upperCase} {}

protected:
    char do_toupper(const char c) const override {
        return char(upperCase(static_cast<unsigned char>(c)));
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }

private:
    int (*upperCase)(int);
};

TEST(CaseAndSearchTest, Search) {
    const Containers::StringView nullOf1000{nullptr, 1000};
    EXPECT_EQ(caseInsensitiveSearch("FooBAR", "bar"), 3);
    EXPECT_EQ(caseInsensitiveSearch("FooBAR", nullOf1000), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, ""), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, "x"), noMatch);
    EXPECT_EQ(caseInsensitiveSearch("Foo", "FooB"), noMatch);
    EXPECT_EQ(caseInsensitiveSearch("ab", "c"), ~std::uint64_t{0});
    const std::locale before = std::locale::global(
        {std::locale::classic(), new FunctionFacet{[](int c) { return c & 0xfe; }}});
    EXPECT_EQ(caseInsensitiveSearch("ab", "c"), 1) << "by the locale of the moment";
    std::locale::global(before);
}

TEST(CaseAndSearchTest, RandomSearchesEqualStandardSearch) {
    using UpperCase = int (*)(int);
    const UpperCase upperCases[]{
        [](int c) { return c; },                                 // no case
        [](int c) { return c >= 'a' && c <= 'z' ? c - 32 : c; }, // ASCII
        [](int c) { return c % 86; },                            // three of one upper case
        [](int c) { return c % 29 == 3 ? 3 : c; },               // one letter of nine
    };
    for (const UpperCase upperCase : upperCases) {
        const std::locale locale{std::locale::classic(), new FunctionFacet{upperCase}};
        std::mt19937 random{1};
        int matches = 0;
        for (int round = 0; round != 2000; ++round) {
            /* Few values at times, so that much matches in part, and sizes on both sides of the one
               from which on a table is made. */
            const unsigned values = round % 2 ? 256 : 3;
            std::vector<char> text(random() % (round % 5 ? 60 : 900));
            std::generate(text.begin(), text.end(), [&] { return char('a' + random() % values); });
            const std::size_t begin = random() % (text.size() + 1);
            const std::size_t size = std::min<std::size_t>(random() % 20, text.size() - begin);
            std::string part{text.data() + begin, size};
            part += random() % 2 ? "b" : "";
            for (char& c : part) {
                c = random() % 2 ? std::toupper(c, locale) : c;
            }
            const auto match = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                           Utils::CaseInsensitiveStringEqual{locale});
            const bool isMatch = match != text.end() || part.empty();
            ASSERT_EQ(caseInsensitiveSearch({text.data(), text.size()}, view(part), locale),
                      isMatch ? match - text.begin() : noMatch)
                << round;
            matches += isMatch;
        }
        EXPECT_GT(matches, 500);
        EXPECT_LT(matches, 1900);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
