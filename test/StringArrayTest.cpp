#include "VespermoorEngine/StringArray.h"

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;

/* The packing that everything else relies on: one terminator behind each string, no gaps. */
void expectPacked(const StringArrayView& list, const std::vector<std::string>& strings) {
    std::string packed;
    std::vector<std::size_t> offsets{0};
    ASSERT_EQ(list.size(), strings.size());
    for (std::size_t i = 0; i != strings.size(); ++i) {
        EXPECT_EQ(text(list.get(i)), strings[i]);
        EXPECT_EQ(list.get(i).flags(), Containers::StringViewFlag::NullTerminated);
        packed += strings[i] + '\0';
        offsets.push_back(packed.size());
    }
    EXPECT_EQ(std::string(list.data, list.dataSize), packed);
    EXPECT_EQ(std::vector<std::size_t>(list.offsets.begin(), list.offsets.end()), offsets);
}

TEST(StringArrayTest, PacksWhateverTheHintSays) {
    for (const std::size_t hint : {0, 1, 7, 100}) {
        SCOPED_TRACE(hint);
        StringArray list{hint};
        expectPacked(list, {});
        list.add("one"_s);
        list.add("and two"_s.exceptPrefix(4));
        list.add({});
        list.add("a string that no hint made room for"_s);
        StringArray moved{std::move(list)};
        moved.add("three"_s);
        expectPacked(moved, {"one", "two", "", "a string that no hint made room for", "three"});
        EXPECT_EQ(moved.characters.size(), moved.dataSize);
        EXPECT_EQ(moved.characters.data(), moved.data);
        /* Fatal messages don't follow a redirection. */
        const Messages redirected;
        EXPECT_DEATH(moved.get(5), "^StringArrayView::get\\(\\): invalid index 5 for size 5\n$");
    }
}

TEST(StringArrayTest, AHintOfTheTextIsEnoughForItsWords) {
    StringArray list{"a bc def"_s.size()};
    const char* const store = list.data;
    for (const Containers::StringView word : {"a"_s, "bc"_s, "def"_s}) {
        list.add(word);
    }
    EXPECT_EQ(list.data, store);
}

TEST(StringArrayTest, ViewOfPackedStringsLeavesThemAlone) {
    const std::string packed{"one\0\0three\0left over", 21};
    std::string viewed = packed;
    expectPacked(MutableStringArrayView{{viewed.data(), viewed.size()}, 3}, {"one", "", "three"});
    expectPacked(MutableStringArrayView{{viewed.data(), viewed.size()}, 0}, {});
    EXPECT_EQ(viewed, packed);
}

} // namespace
} // namespace VespermoorEngine::Test
