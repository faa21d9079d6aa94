#include <memory>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"
#include "VespermoorEngine/Function.h"
#include "VespermoorEngine/Path.h"
#include "VespermoorEngine/StringArray.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Corrade::DefaultInit;

using Sum = Function<int(int, int)>;

static_assert(!std::is_copy_constructible_v<Sum> && !std::is_copy_assignable_v<Sum>);
static_assert(std::is_nothrow_move_constructible_v<Sum>);
static_assert(sizeof(Sum) == 2 * sizeof(void*) + 64);

int add(const int a, const int b) {
    return a + b;
}

TEST(FunctionTest, CallsTheStoredCallableWithoutCopies) {
    char bytes[64]{};
    bytes[63] = 7;
    EXPECT_EQ((Sum{DefaultInit, add}(2, 3)), 5);
    Sum large{DefaultInit, [bytes](int x, int y) { return bytes[63] + x + y; }};
    EXPECT_EQ(Sum{std::move(large)}(1, 1), 9);
    const Function<std::unique_ptr<int>(std::unique_ptr<int>, int&)> swap{
        DefaultInit, [](std::unique_ptr<int> value, int& other) {
            std::swap(*value, other);
            return value;
        }};
    int other = 1;
    EXPECT_EQ(*swap(std::make_unique<int>(2), other), 1);
    EXPECT_EQ(other, 2);
}

/* Counts the destructions of copies that were not moved from. Can be moved by copying its bytes. */
struct Counted {
    explicit Counted(int& ended) : ended{&ended} {}
    Counted(Counted&& other) noexcept : ended{std::exchange(other.ended, nullptr)} {}
    ~Counted() { ended ? ++*ended : 0; }
    int operator()(const int a, const int b) const { return a + b; }

    int* ended;
};

TEST(FunctionTest, MovesAndExchanges) {
    int firstEnded = 0, secondEnded = 0;
    Sum last{DefaultInit, add};
    {
        Sum source{DefaultInit, Counted{firstEnded}};
        Sum first{std::move(source)};
        EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move)
        Sum second{DefaultInit, Counted{secondEnded}};
        first = std::move(second);
        EXPECT_EQ(firstEnded + secondEnded, 0);
        last = std::move(first);
        EXPECT_EQ(first(1, 2), 3); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(firstEnded, 1);
    EXPECT_EQ(secondEnded, 0);
    EXPECT_EQ(last(2, 2), 4);
}

/* With @ for the current directory. */
TEST(PathTest, AbsoluteNormalisesAsText) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    const std::pair<const char*, std::string> rows[]{
        {"/a/b.c/d", "/a/b.c/d"}, {"///", "/"},       {"/a/./b/.", "/a/b"},
        {"/a/b/../c", "/a/c"},    {"/../../a", "/a"}, {"/..a/b../...//", "/..a/b../..."},
        {"x/./y", "@/x/y"},       {"", "@"}};
    for (const auto& [path, expected] : rows) {
        EXPECT_EQ(text(Path::absolute(path)), directory.expanded(expected)) << path;
    }
    fs::remove(directory.path());
    const Messages ignored;
    EXPECT_EQ(text(Path::absolute("x")), "");
}

TEST(PathTest, IsParentPathComparesComponents) {
    const std::tuple<const char*, const char*, bool> rows[]{
        {"/a", "/a/b/c", true}, {"/a/", "/a/b", true},    {"a", "a/b", true},
        {"/", "/a", true},      {"/", "/", false},        {"/a", "/a/", false},
        {"/a/", "/a", false},   {"/a/b", "/a/bc", false}, {"/a/b", "/a", false},
        {"", "/a", false}};
    for (const auto& [directory, path, expected] : rows) {
        EXPECT_EQ(Path::isParentPath(directory, path), expected) << directory << " above " << path;
    }
}

/* With @ for the current directory. */
TEST(PathTest, UpwardsSearchFindsTheNearestDirectory) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    makeTree(directory.path(), {"marker", "a/b/marker", "a/b/file", "a/b/c/d/marker2"});
    const std::tuple<const char*, const char*, const char*> rows[]{{"@/a/b/c/d", "marker", "@/a/b"},
                                                                   {"@/a/b//", "marker", "@/a/b"},
                                                                   {"@/not/there", "marker", "@"},
                                                                   {"@/a", "proc", "/"},
                                                                   {"@/a", "nowhere", ""},
                                                                   {"a/b", "file", "a/b"},
                                                                   {"a/b", "b", "a"},
                                                                   {"a", "marker", ""},
                                                                   {"", "proc", ""}};
    for (const auto& [from, name, expected] : rows) {
        const std::string start = directory.expanded(from);
        const Containers::StringView found = Path::upwardsSearch(view(start), name);
        EXPECT_EQ(directory.shortened(text(found)), expected) << from;
        EXPECT_EQ(found.data(), *expected ? start.data() : nullptr) << "a prefix of the start";
    }
}

/* The packing that everything else relies on: one terminator after each string, no gaps. */
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
    EXPECT_EQ(elements(list.offsets), offsets);
}

TEST(StringArrayTest, PacksWithAnyHint) {
    for (const std::size_t hint : {0, 1, 7, 100}) {
        SCOPED_TRACE(hint);
        StringArray list{hint};
        expectPacked(list, {});
        list.add("one"_s);
        list.add("and two"_s.exceptPrefix(4));
        list.add({});
        list.add("a string that no hint made room for"_s);
        StringArray moved{std::move(list)};
        moved.add(moved.get(3));
        moved.add(moved.get(0).exceptPrefix(1));
        const std::string longer = "a string that no hint made room for";
        expectPacked(moved, {"one", "two", "", longer, longer, "ne"});
        EXPECT_EQ(moved.characters.size(), moved.dataSize);
        EXPECT_EQ(moved.characters.data(), moved.data);
        /* Fatal messages don't follow a redirection. */
        const Messages redirected;
        EXPECT_DEATH(moved.get(6), "^StringArrayView::get\\(\\): invalid index 6 for size 6\n$");
    }
}

TEST(StringArrayTest, HintOfTheTextSizeSufficesForItsWords) {
    StringArray list{"a bc def"_s.size()};
    const char* const store = list.data;
    for (const Containers::StringView word : {"a"_s, "bc"_s, "def"_s}) {
        list.add(word);
    }
    EXPECT_EQ(list.data, store);
}

TEST(StringArrayTest, ViewDoesNotChangePackedStrings) {
    const std::string packed{"one\0\0three\0left over", 21};
    std::string viewed = packed;
    expectPacked(MutableStringArrayView{{viewed.data(), viewed.size()}, 3}, {"one", "", "three"});
    expectPacked(MutableStringArrayView{{viewed.data(), viewed.size()}, 0}, {});
    EXPECT_EQ(viewed, packed);
}

} // namespace
} // namespace VespermoorEngine::Test
