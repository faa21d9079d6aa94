#include <random>

#include "Support.h"
#include "VespermoorEditor/Utils/String.h"
#include "VespermoorEditor/Utils/TagSearch.h"

namespace VespermoorEngine::Test {
namespace {

TEST(TagContentTest, Replace) {
    const Utils::TagReplacement a{"[a]", "[/a]", "1"};
    const Utils::TagReplacement b{"[b]", "[/b]", "2"};
    struct Row {
        const char* text;
        std::vector<Utils::TagReplacement> replacements;
        const char* expected;
        bool succeeds = true;
    };
    const Row rows[]{
        // clang-format off
        {"x[a]old[/a]y[b]old[/b]z", {b, a}, "x[a]1[/a]y[b]2[/b]z"}, {"x[a]", {}, "x[a]"},
        {"", {a, b}, ""}, {"[b]old[/b]", {a, b}, "[b]2[/b]"},
        {"[a][/a][b][/b]", {a, b}, "[a]1[/a][b]2[/b]"},
        {"<x[>]y|", {{"<", "[>", "1"}, {">]", "|", "2"}}, "<1[>]2|"},
        {"<x>[b]y[/b]", {{"<", ">", "[b]"}, b}, "<[b]>[b]2[/b]"},
        {"[/a]x[a]y", {a}, "[/a]x[a]1[/a]x[a]y"}, {"x|y", {{"|", "|", ""}}, "x||y"},
        {"[/b]", {a, b}, "missing tag '[b]'", false},
        {"[a][/b]", {a, b}, "missing tag '[/a]'", false},
        {"[a][b][/a]", {a, b}, "missing tag '[/b]'", false},
        {"[a]", {{"[a]", "", "1"}}, "missing tag ''", false},
        {"[a][b][/b][/a]", {b, a}, "overlapping tags: '[/a]' should appear before '[b]'", false},
        {"[a]x[/a]y[/b]", {a, {"[a]", "[/b]", "2"}},
         "overlapping tags: '[/a]' should appear before '[a]'", false},
        {"|;", {{"|", ";", ""}, {";", "|", ""}},
         "overlapping tags: ';' should appear before ';'", false},
        // clang-format on
    };
    for (const Row& row : rows) {
        const auto result =
            Utils::replaceTagContent(row.text, {row.replacements.data(), row.replacements.size()});
        EXPECT_EQ(text(result.first()), row.expected);
        EXPECT_EQ(result.second(), row.succeeds) << row.expected;
    }
    EXPECT_EQ(text(Utils::replaceTagContent("[a]x[/a]", {a, b}).first()), "[a]1[/a]");
}

TEST(TagContentTest, FindsWhatASearchForEachTagFinds) {
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
            /* Nothing stands behind these bytes, so that sanitizers notice a look past them. */
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

} // namespace
} // namespace VespermoorEngine::Test
