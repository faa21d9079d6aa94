#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <gtest/gtest.h>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;

struct Replacement {
    std::string start;
    std::string end;
    std::string content;
};

struct Result {
    std::string text;
    bool success;

    bool operator==(const Result& other) const {
        return text == other.text && success == other.success;
    }
};

std::ostream& operator<<(std::ostream& out, const Result& result) {
    return out << (result.success ? "text " : "message ") << testing::PrintToString(result.text);
}

Containers::StringView view(const std::string& string) {
    return {string.data(), string.size()};
}

Result replace(const std::string& text, const std::vector<Replacement>& replacements) {
    Containers::Array<Utils::TagReplacement> list{Corrade::ValueInit, replacements.size()};
    for (std::size_t i = 0; i != list.size(); ++i) {
        const auto& [start, end, content] = replacements[i];
        list[i] = {view(start), view(end), view(content)};
    }
    const auto result = Utils::replaceTagContent(view(text), list);
    return {Test::text(result.first()), result.second()};
}

const Replacement a{"[a]", "[/a]", "1"};
const Replacement b{"[b]", "[/b]", "2"};

struct TagRow {
    const char* name;
    std::string text;
    std::vector<Replacement> replacements;
    Result expected;
};

class TagContent : public testing::TestWithParam<TagRow> {};

TEST_P(TagContent, IsReplaced) {
    EXPECT_EQ(replace(GetParam().text, GetParam().replacements), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TagContent,
    testing::Values(
        TagRow{"in text order", "x[a]old[/a]y[b]old[/b]z", {a, b}, {"x[a]1[/a]y[b]2[/b]z", true}},
        TagRow{
            "in reverse order", "x[a]old[/a]y[b]old[/b]z", {b, a}, {"x[a]1[/a]y[b]2[/b]z", true}},
        TagRow{"no list", "x[a]old[/a]", {}, {"x[a]old[/a]", true}},
        TagRow{"no text", "", {a}, {"", true}},
        TagRow{"all absent", "text", {a, b}, {"text", true}},
        TagRow{"one absent", "[b]old[/b]", {a, b}, {"[b]2[/b]", true}},
        TagRow{"empty tags", "text", {{"", "", "1"}}, {"text", true}},
        TagRow{"no start tag", "x[/a]", {a}, {"missing tag '[a]'", false}},
        TagRow{"no end tag", "[a]x", {a}, {"missing tag '[/a]'", false}},
        TagRow{"first missing in the list", "[a][/b]", {b, a}, {"missing tag '[b]'", false}},
        TagRow{"missing before overlapping",
               "[b][c][/b][a][/c]",
               {b, {"[c]", "[/c]", ""}, a},
               {"missing tag '[/a]'", false}},
        TagRow{"empty start tag", "x[/a]", {{"", "[/a]", "1"}}, {"missing tag ''", false}},
        TagRow{"empty end tag", "[a]x", {{"[a]", "", "1"}}, {"missing tag ''", false}},
        TagRow{"case counts", "[A]x[/a]", {a}, {"missing tag '[a]'", false}},
        TagRow{"first occurrences", "[a]x[/a][a]y[/a]", {a}, {"[a]1[/a][a]y[/a]", true}},
        TagRow{"nested",
               "[a][b][/b][/a]",
               {b, a},
               {"overlapping tags: '[/a]' should appear before '[b]'", false}},
        TagRow{"crossing",
               "[a][b][/a][/b]",
               {a, b},
               {"overlapping tags: '[/a]' should appear before '[b]'", false}},
        TagRow{"shared start tag",
               "[a]x[/a]y[/b]",
               {a, {"[a]", "[/b]", "2"}},
               {"overlapping tags: '[/a]' should appear before '[a]'", false}},
        TagRow{"end tag is the next start tag",
               "[a]x|y[/b]",
               {{"[a]", "|", "1"}, {"|", "[/b]", "2"}},
               {"overlapping tags: '|' should appear before '|'", false}},
        TagRow{"adjacent", "[a]x[/a][b]y[/b]", {a, b}, {"[a]1[/a][b]2[/b]", true}},
        TagRow{"empty old content", "[a][/a]", {a}, {"[a]1[/a]", true}},
        TagRow{"empty new content", "[a]x[/a]", {{"[a]", "[/a]", ""}}, {"[a][/a]", true}},
        TagRow{"content with a tag",
               "[a]x[/a][b]y[/b]",
               {{"[a]", "[/a]", "[b][/b]"}, b},
               {"[a][b][/b][/a][b]2[/b]", true}},
        TagRow{"end tag in front", "[/a]x[a]y", {a}, {"[/a]x[a]1[/a]x[a]y", true}},
        TagRow{"identical tags", "x|y", {{"|", "|", "1"}}, {"x|1|y", true}},
        TagRow{"tags that overlap", "xaabay", {{"aab", "aba", "1"}}, {"xaab1abay", true}},
        TagRow{"tag inside a tag", "[a[a]]", {{"[a]", "]]", "1"}}, {"[a[a]1]]", true}},
        TagRow{"zero bytes", "[\0]x[\1]"s, {{"[\0]"s, "[\1]"s, "\0"s}}, {"[\0]\0[\1]"s, true}},
        TagRow{"tags of high bytes",
               "\xff-\x80",
               {{"\xff", "\x80", "1"}},
               {"\xff"
                "1\x80",
                true}}),
    rowName<TagRow>);

TEST(TagContent, TakesListInPlace) {
    const auto result = Utils::replaceTagContent("x[a]old[/a]", {{"[a]", "[/a]", "new"}});
    EXPECT_EQ(result.first(), "x[a]new[/a]");
    EXPECT_TRUE(result.second());
    EXPECT_EQ(Utils::replaceTagContent("x", {}).first(), "x");
}

/* The same with a search for every tag, straight from the rules. */
Result replaceBySearches(const std::string& text, const std::vector<Replacement>& replacements) {
    struct Region {
        std::size_t start, end;
        const Replacement* replacement;
    };
    const auto find = [&text](const std::string& tag) {
        return tag.empty() ? std::string::npos : text.find(tag);
    };
    std::vector<Region> regions;
    for (const Replacement& replacement : replacements) {
        const Region region{find(replacement.start), find(replacement.end), &replacement};
        if ((region.start == std::string::npos) != (region.end == std::string::npos)) {
            return {"missing tag '" +
                        (region.start == std::string::npos ? replacement.start : replacement.end) +
                        "'",
                    false};
        }
        regions.push_back(region);
    }
    /* Absent ones have the highest of all positions. */
    std::sort(regions.begin(), regions.end(),
              [](const Region& l, const Region& r) { return l.start < r.start; });
    while (!regions.empty() && regions.back().start == std::string::npos) {
        regions.pop_back();
    }
    std::string result;
    std::size_t rest = 0;
    for (std::size_t i = 0; i != regions.size(); ++i) {
        const auto& [start, end, replacement] = regions[i];
        if (i + 1 != regions.size() && end >= regions[i + 1].start) {
            return {"overlapping tags: '" + replacement->end + "' should appear before '" +
                        regions[i + 1].replacement->start + "'",
                    false};
        }
        result += text.substr(rest, start + replacement->start.size() - rest);
        result += replacement->content;
        rest = end;
    }
    return {result + text.substr(rest), true};
}

struct RandomRow {
    const char* name;
    std::string alphabet;
    std::size_t longestText;
    std::size_t shortestTag;
    std::size_t longestTag;
};

class TagContentOfRandomText : public testing::TestWithParam<RandomRow> {
protected:
    std::size_t upTo(const std::size_t maximum) { return _random() % (maximum + 1); }

    std::string randomText(const std::size_t size) {
        std::string text;
        while (text.size() != size) {
            text += GetParam().alphabet[upTo(GetParam().alphabet.size() - 1)];
        }
        return text;
    }

    /* A piece of the text, at times with another end. */
    std::string randomTag(const std::string& text) {
        const auto [name, alphabet, longestText, shortest, longest] = GetParam();
        const std::size_t size = shortest + upTo(longest - shortest);
        std::string tag = text.substr(upTo(text.size()), size);
        if (tag.size() < size || upTo(3) == 0) {
            tag += randomText(1 + upTo(size));
            tag.erase(0, tag.size() - std::min(tag.size(), size));
        }
        return tag;
    }

    std::mt19937 _random{1};
};

/* Most lists end in a message, and a message tells little of where the tags were found; so what
   would turn a list into one is mostly left out. */
TEST_P(TagContentOfRandomText, EqualsThatOfOneSearchForEachTag) {
    std::size_t successes = 0;
    std::size_t messages = 0;
    for (int round = 0; round != 300; ++round) {
        const std::string text = randomText(upTo(GetParam().longestText));
        std::vector<Replacement> replacements;
        for (std::size_t tries = upTo(30); tries != 0; --tries) {
            replacements.push_back({randomTag(text), randomTag(text), std::to_string(tries)});
            if (!replaceBySearches(text, replacements).success && upTo(100) != 0) {
                replacements.pop_back();
            }
        }
        const Result expected = replaceBySearches(text, replacements);
        (expected.success && !replacements.empty() ? successes : messages) += 1;
        ASSERT_EQ(replace(text, replacements), expected) << "round " << round;
    }
    EXPECT_GT(successes, 50);
    EXPECT_GT(messages, 5);
}

const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789[]/*";

INSTANTIATE_TEST_SUITE_P(Rows, TagContentOfRandomText,
                         testing::Values(RandomRow{"one byte", "ab[]", 60, 0, 1},
                                         RandomRow{"one byte of many", letters, 60, 1, 1},
                                         RandomRow{"alike", "ab", 200, 0, 9},
                                         RandomRow{"alike and long", "ab", 500, 6, 20},
                                         RandomRow{"short", letters, 300, 2, 7},
                                         RandomRow{"short or one byte", letters, 300, 1, 5},
                                         RandomRow{"long", letters, 1000, 8, 30},
                                         RandomRow{"very long", letters, 3000, 120, 300}),
                         rowName<RandomRow>);

} // namespace
} // namespace VespermoorEngine::Test
