#include "VespermoorEditor/Utils/String.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <random>

#include "Support.h"
#include "VespermoorEditor/Utils/StringWriter.h"
#include "VespermoorEditor/Utils/TagSearch.h"

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
        {"A", "a", "A"},
        {"FooBar", "foo-bar", "FooBar"},
        {"XMLParser", "xml-parser", "XMLParser"},
        {"parseXML", "parse-xml", "ParseXML"},
        {"AB1", "a-b1", "AB1"},
        {"AB-C D", "ab-c-d", "ABCD"},
        {"a1B", "a1-b", "A1B"},
        {"foo BAR", "foo-bar", "FooBAR"},
        {"a--b", "a-b", "AB"},
        {"a  b", "a--b", "AB"},
        {"a -b", "a--b", "AB"},
        {" a", "-a", "A"},
        {"-a ", "-a-", "A"},
        {"Foo_Bar", "foo_-bar", "FooBar"},
        {"1_2a", "1_2a", "A"},
        {"123", "123", ""},
        {"a_1b", "a_1b", "A1b"},
        {"aÄbC", "aÄb-c", "ABC"},
    };
    for (const auto& [name, kebap, bigCamel] : rows) {
        EXPECT_EQ(text(Utils::toKebapCase(name)), kebap);
        EXPECT_EQ(text(Utils::toBigCamelCase(name)), bigCamel);
    }
}

TEST(StringTest, SearchesForAndInNothing) {
    const Containers::StringView nullOf1000{nullptr, 1000};
    EXPECT_EQ(caseInsensitiveSearch("FooBAR", nullOf1000), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, ""), 0);
    EXPECT_EQ(caseInsensitiveSearch(nullOf1000, "x"), noMatch);
    EXPECT_EQ(caseInsensitiveSearch("Foo", "FooB"), ~std::uint64_t{0});
}

/* What the facet below was asked. */
std::string asked;

/* Takes b for the upper case of c, and gives ranges of bytes unchanged. */
class RecordingFacet : public std::ctype<char> {
protected:
    char do_toupper(const char c) const override {
        asked += c;
        return c == 'c' ? 'b' : c;
    }
    const char* do_toupper(char*, const char* const end) const override { return end; }
};

/* A facet may throw for some bytes, so it is asked about the others only. */
TEST(StringTest, SearchAsksAFacetWhatStandardSearchAsks) {
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

TEST_F(StandardLocales, RandomSearchesEqualStandardSearch) {
    for (const std::locale& locale : locales) {
        std::mt19937 random{1};
        int matches = 0;
        for (int round = 0; round != 2000; ++round) {
            /* Few values at times, so that much matches in part. */
            const unsigned values = round % 2 ? 256 : 3;
            std::vector<char> text(random() % (round % 5 ? 60 : 900));
            std::generate(text.begin(), text.end(), [&] { return char(0xf1 + random() % values); });
            const std::size_t begin = random() % (text.size() + 1);
            const std::size_t size = std::min<std::size_t>(random() % 20, text.size() - begin);
            std::string part{text.data() + begin, size};
            part += random() % 2 ? "b" : "";
            for (char& c : part) {
                c = random() % 2 ? std::toupper(c, locale) : c;
            }
            const auto match = std::search(text.begin(), text.end(), part.begin(), part.end(),
                                           CaseInsensitiveStringEqual{locale});
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

TEST(StringTest, FindsWhatASearchForEachTagFinds) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789[]/*";
    struct Row {
        std::string alphabet;
        std::size_t longestText, shortest, longest;
    };
    std::mt19937 random{1};
    for (const auto& [alphabet, longestText, shortest, longest] :
         {Row{"ab", 200, 0, 9}, Row{"ab", 500, 6, 20}, Row{letters, 100, 0, 1},
          Row{letters, 300, 2, 3}, Row{letters, 1000, 4, 30}}) {
        const auto fill = [&random, &alphabet = alphabet](std::string& text, std::size_t size) {
            while (text.size() < size) {
                text += alphabet[random() % alphabet.size()];
            }
        };
        std::size_t counts[2]{};
        for (int round = 0; round != 300; ++round) {
            std::string whole;
            fill(whole, random() % longestText);
            /* Nothing follows these bytes, so that sanitizers notice a read past them. */
            const std::vector<char> text(whole.begin(), whole.end());
            std::vector<std::string> tags(random() % 30);
            std::vector<Containers::StringView> places(tags.size());
            std::vector<Utils::SoughtTag> sought;
            for (std::size_t i = 0; i != tags.size(); ++i) {
                const std::size_t size = shortest + random() % (longest - shortest + 1);
                tags[i] = whole.substr(random() % (whole.size() + 1), size);
                tags[i].resize(tags[i].size() - (random() % 3 ? 0 : tags[i].size() / 3));
                fill(tags[i], size);
                sought.push_back({view(tags[i]), &places[i]});
            }
            Utils::findFirstOccurrences({text.data(), text.size()}, {sought.data(), sought.size()});
            for (std::size_t i = 0; i != tags.size(); ++i) {
                const std::size_t place = tags[i].empty() ? std::string::npos : whole.find(tags[i]);
                const bool isFound = place != std::string::npos;
                ASSERT_EQ(places[i].data(), isFound ? text.data() + place : nullptr) << tags[i];
                ASSERT_EQ(places[i].size(), isFound ? tags[i].size() : 0) << tags[i];
                ++counts[isFound];
            }
        }
        EXPECT_GT(counts[true], 1000);
        EXPECT_GT(counts[false], 100);
    }
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

TEST(StringTest, WriterHandsOverItsBuffer) {
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
