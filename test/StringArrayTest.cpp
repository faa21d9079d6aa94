#include "VespermoorEngine/StringArray.h"

#include <utility>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;

/* The packing that everything else relies on: one terminator behind each string, no gaps. */
void expectPacked(const StringArrayView& list, const std::vector<std::string>& strings) {
    ASSERT_EQ(list.size(), strings.size());
    ASSERT_EQ(list.offsets.size(), strings.size() + 1);
    std::size_t offset = 0;
    for (std::size_t i = 0; i != strings.size(); ++i) {
        const Containers::StringView string = list.get(i);
        EXPECT_EQ(text(string), strings[i]);
        EXPECT_EQ(string.flags(), Containers::StringViewFlag::NullTerminated);
        EXPECT_EQ(string.data()[string.size()], '\0');
        EXPECT_EQ(list.offsets[i], offset);
        offset += strings[i].size() + 1;
    }
    EXPECT_EQ(list.offsets.back(), offset);
    EXPECT_EQ(list.dataSize, offset);
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
    char packed[] = "one\0\0three\0left over";
    const std::string before{packed, sizeof packed};
    {
        const MutableStringArrayView view{packed, 3};
        expectPacked(view, {"one", "", "three"});
        const MutableStringArrayView none{packed, 0};
        expectPacked(none, {});
    }
    EXPECT_EQ(std::string(packed, sizeof packed), before);
}

TEST(StringArrayDeathTest, IndexOutOfRange) {
    StringArray list{0};
    list.add("one"_s);
    list.add("two"_s);
    EXPECT_DEATH(
        {
            /* Fatal messages don't follow a redirection. */
            const Messages redirected;
            list.get(2);
        },
        "^StringArrayView::get\\(\\): invalid index 2 for size 2\n$");
}

} // namespace
} // namespace VespermoorEngine::Test
