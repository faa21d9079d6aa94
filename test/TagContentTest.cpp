#include <algorithm>
#include <random>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;

struct Replacement {
    std::string start, end, content;
};

Containers::StringView view(const std::string& string) {
    return {string.data(), string.size()};
}

/* The new text, or the message with a mark in front. */
std::string replace(const std::string& text, const std::vector<Replacement>& replacements) {
    Containers::Array<Utils::TagReplacement> list;
    for (const auto& [start, end, content] : replacements) {
        arrayAppend(list, Corrade::InPlaceInit, view(start), view(end), view(content));
    }
    const auto result = Utils::replaceTagContent(view(text), list);
    return (result.second() ? "" : "! ") + Test::text(result.first());
}

TEST(TagContentTest, Replace) {
    const Replacement a{"[a]", "[/a]", "1"};
    const Replacement b{"[b]", "[/b]", "2"};
    const Replacement ab{"[a]", "[/b]", "2"};
    const std::string overlapping = "! overlapping tags: '[/a]' should appear before '[b]'";
    struct Row {
        const char* name;
        std::string text;
        std::vector<Replacement> replacements;
        std::string expected;
    };
    const Row rows[]{
        {"text order", "x[a]old[/a]y[b]old[/b]z", {a, b}, "x[a]1[/a]y[b]2[/b]z"},
        {"reverse order", "x[a]old[/a]y[b]old[/b]z", {b, a}, "x[a]1[/a]y[b]2[/b]z"},
        {"no list", "x[a]old[/a]", {}, "x[a]old[/a]"},
        {"no text", "", {a}, ""},
        {"all absent", "text", {a, b}, "text"},
        {"one absent", "[b]old[/b]", {a, b}, "[b]2[/b]"},
        {"empty tags", "text", {{"", "", "1"}}, "text"},
        {"no start tag", "x[/a]", {a}, "! missing tag '[a]'"},
        {"no end tag", "[a]x", {a}, "! missing tag '[/a]'"},
        {"first missing in the list", "[a][/b]", {b, a}, "! missing tag '[b]'"},
        {"missing and overlapping", "[b][a][/b]", {b, a}, "! missing tag '[/a]'"},
        {"empty start tag", "x[/a]", {{"", "[/a]", "1"}}, "! missing tag ''"},
        {"empty end tag", "[a]x", {{"[a]", "", "1"}}, "! missing tag ''"},
        {"case counts", "[A]x[/a]", {a}, "! missing tag '[a]'"},
        {"first occurrences", "[a]x[/a][a]y[/a]", {a}, "[a]1[/a][a]y[/a]"},
        {"nested", "[a][b][/b][/a]", {b, a}, overlapping},
        {"crossing", "[a][b][/a][/b]", {a, b}, overlapping},
        {"shared start",
         "[a]x[/a]y[/b]",
         {a, {"[a]", "[/b]", "2"}},
         "! overlapping tags: '[/a]' should appear before '[a]'"},
        {"shared tag",
         "|;",
         {{"|", ";", ""}, {";", "|", ""}},
         "! overlapping tags: ';' should appear before ';'"},
        {"adjacent", "[a]x[/a][b]y[/b]", {a, b}, "[a]1[/a][b]2[/b]"},
        {"empty contents", "[a][/a]", {{"[a]", "[/a]", ""}}, "[a][/a]"},
        {"content with a tag", "<x>[b]y[/b]", {{"<", ">", "[b]"}, b}, "<[b]>[b]2[/b]"},
        {"end tag in front", "[/a]x[a]y", {a}, "[/a]x[a]1[/a]x[a]y"},
        {"identical tags", "x|y", {{"|", "|", "1"}}, "x|1|y"},
        {"tags that overlap", "xaabay", {{"aab", "aba", "1"}}, "xaab1abay"},
        {"bytes", "[\0]x\xff\x80"s, {{"[\0]"s, "\xff\x80", "\0"s}}, "[\0]\0\xff\x80"s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(replace(row.text, row.replacements), row.expected) << row.name;
    }
    const auto inPlace = Utils::replaceTagContent("x[a]old[/a]", {{"[a]", "[/a]", "new"}});
    EXPECT_EQ(text(inPlace.first()), "x[a]new[/a]");
    EXPECT_TRUE(inPlace.second());
}

/* The same with a search for every tag, straight from the rules. */
std::string replaceBySearches(const std::string& text, const std::vector<Replacement>& list) {
    struct Region {
        std::size_t start, end;
        const Replacement* replacement;
    };
    const auto find = [&text](const std::string& tag) {
        return tag.empty() ? std::string::npos : text.find(tag);
    };
    std::vector<Region> regions;
    for (const Replacement& replacement : list) {
        const auto [start, end] = std::pair{find(replacement.start), find(replacement.end)};
        if ((start == std::string::npos) != (end == std::string::npos)) {
            const bool isStart = start == std::string::npos;
            return "! missing tag '" + (isStart ? replacement.start : replacement.end) + "'";
        }
        regions.push_back({start, end, &replacement});
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
            return "! overlapping tags: '" + replacement->end + "' should appear before '" +
                   regions[i + 1].replacement->start + "'";
        }
        result += text.substr(rest, start + replacement->start.size() - rest);
        result += replacement->content;
        rest = end;
    }
    return result + text.substr(rest);
}

TEST(TagContentTest, RandomTextsEqualOneSearchForEachTag) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz0123456789[]/*";
    struct Row {
        const char* name;
        std::string alphabet;
        std::size_t longestText, shortestTag, longestTag;
    };
    const Row rows[]{
        {"one byte", letters, 60, 0, 1},         {"alike", "ab", 200, 0, 9},
        {"alike and long", "ab", 500, 6, 20},    {"short", letters, 300, 2, 7},
        {"short or one byte", "ab[]", 60, 1, 3}, {"long", letters, 1000, 8, 30},
        {"very long", letters, 3000, 120, 300},
    };
    std::mt19937 random{1};
    for (const auto& [name, alphabet, longestText, shortestTag, longestTag] : rows) {
        SCOPED_TRACE(name);
        const auto randomText = [&random, &alphabet = alphabet](const std::size_t size) {
            std::string text(size, ' ');
            std::generate(text.begin(), text.end(),
                          [&] { return alphabet[random() % alphabet.size()]; });
            return text;
        };
        int successes = 0;
        for (int round = 0; round != 300; ++round) {
            const std::string text = randomText(random() % (longestText + 1));
            /* A piece of the text, at times with another end. */
            const auto randomTag = [&, &shortest = shortestTag, &longest = longestTag] {
                const std::size_t size = shortest + random() % (longest - shortest + 1);
                std::string tag = text.substr(random() % (text.size() + 1), size);
                tag.resize(tag.size() - (random() % 4 ? 0 : random() % (tag.size() + 1)));
                return tag + randomText(size - tag.size());
            };
            /* A message tells little of where the tags were found, so most of what leads to one is
               left out again. */
            std::vector<Replacement> list;
            for (std::size_t tries = random() % 31; tries != 0; --tries) {
                list.push_back({randomTag(), randomTag(), std::to_string(tries)});
                if (replaceBySearches(text, list)[0] == '!' && random() % 100) {
                    list.pop_back();
                }
            }
            const std::string expected = replaceBySearches(text, list);
            ASSERT_EQ(replace(text, list), expected) << "round " << round;
            successes += !list.empty() && expected[0] != '!';
        }
        EXPECT_GT(successes, 50);
        EXPECT_LT(successes, 295);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
