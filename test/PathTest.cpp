#include "VespermoorEngine/Path.h"

#include <unistd.h>

#include <Corrade/Containers/String.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

struct AbsoluteRow {
    const char* name;
    const char* path;
    const char* expected;
};

class PathAbsoluteTest : public testing::TestWithParam<AbsoluteRow> {};

TEST_P(PathAbsoluteTest, NormalisesAsText) {
    EXPECT_EQ(text(Path::absolute(GetParam().path)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(, PathAbsoluteTest,
                         testing::ValuesIn(std::initializer_list<AbsoluteRow>{
                             {"normal form stays", "/a/b.c/d", "/a/b.c/d"},
                             {"root", "/", "/"},
                             {"many slashes are the root", "///", "/"},
                             {"dots", "/a/./b/.", "/a/b"},
                             {"up", "/a/b/../c", "/a/c"},
                             {"up to the root", "/a/..", "/"},
                             {"up from the root", "/../../a", "/a"},
                             {"doubled and trailing slashes", "//a///b//", "/a/b"},
                             {"names with dots in them", "/..a/b../...", "/..a/b../..."},
                         }),
                         rowName<AbsoluteRow>);

TEST(PathTest, AbsoluteStartsARelativePathAtTheCurrentDirectory) {
    const TemporaryDirectory directory;
    char before[4096];
    ASSERT_TRUE(getcwd(before, sizeof before));
    ASSERT_EQ(chdir(directory.path().data()), 0);
    const std::string parent = directory.path().substr(0, directory.path().rfind('/'));
    EXPECT_EQ(text(Path::absolute("x/./y")), directory / "x/y");
    EXPECT_EQ(text(Path::absolute("..")), parent);
    EXPECT_EQ(text(Path::absolute("")), directory.path());
    ASSERT_EQ(rmdir(directory.path().data()), 0);
    {
        const Messages ignored;
        EXPECT_EQ(text(Path::absolute("x")), "");
    }
    ASSERT_EQ(chdir(before), 0);
}

struct ParentRow {
    const char* name;
    const char* directory;
    const char* path;
    bool expected;
};

class PathIsParentPathTest : public testing::TestWithParam<ParentRow> {};

TEST_P(PathIsParentPathTest, ComparesComponents) {
    EXPECT_EQ(Path::isParentPath(GetParam().directory, GetParam().path), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(, PathIsParentPathTest,
                         testing::ValuesIn(std::initializer_list<ParentRow>{
                             {"child", "/a", "/a/b", true},
                             {"deep", "/a", "/a/b/c/d", true},
                             {"trailing slash", "/a/", "/a/b", true},
                             {"relative", "a", "a/b", true},
                             {"root above all", "/", "/a", true},
                             {"root above itself", "/", "/", false},
                             {"equal", "/a/b", "/a/b", false},
                             {"equal but for the slash", "/a", "/a/", false},
                             {"equal but for the slash of the directory", "/a/", "/a", false},
                             {"sibling with the same beginning", "/a/b", "/a/bc", false},
                             {"sibling with the same beginning below", "/a/b", "/a/bc/d", false},
                             {"the other way round", "/a/b", "/a", false},
                             {"empty directory", "", "/a", false},
                             {"empty path", "/a", "", false},
                         }),
                         rowName<ParentRow>);

TEST(PathTest, UpwardsSearchFindsTheNearestDirectory) {
    const TemporaryDirectory directory;
    writeFile(directory / "marker", "");
    writeFile(directory / "a/b/marker", "");
    writeFile(directory / "a/b/c/d/marker of a longer name", "");

    const std::string deep = directory / "a/b/c/d";
    EXPECT_EQ(text(Path::upwardsSearch(deep.data(), "marker")), directory / "a/b");
    const std::string slash = directory / "a//";
    EXPECT_EQ(text(Path::upwardsSearch(slash.data(), "marker")), directory.path());
    EXPECT_EQ(text(Path::upwardsSearch((directory / "a/b").data(), "marker")), directory / "a/b");
    EXPECT_EQ(text(Path::upwardsSearch((directory / "not/there").data(), "marker")),
              directory.path());
    EXPECT_EQ(text(Path::upwardsSearch(deep.data(), "proc")), "/");
    EXPECT_EQ(Path::upwardsSearch(deep.data(), "no such name anywhere").data(), nullptr);
    EXPECT_EQ(Path::upwardsSearch("", "proc").data(), nullptr);

    const Corrade::Containers::StringView start{deep.data()};
    EXPECT_EQ(Path::upwardsSearch(start, "marker").data(), start.data()) << "not a prefix";
}

TEST(PathTest, UpwardsSearchEndsARelativePathAtItsFirstComponent) {
    const TemporaryDirectory directory;
    writeFile(directory / "marker", "");
    writeFile(directory / "a/b/file", "");
    char before[4096];
    ASSERT_TRUE(getcwd(before, sizeof before));
    ASSERT_EQ(chdir(directory.path().data()), 0);
    EXPECT_EQ(text(Path::upwardsSearch("a/b", "file")), "a/b");
    EXPECT_EQ(text(Path::upwardsSearch("a/b", "b")), "a");
    EXPECT_EQ(Path::upwardsSearch("a/b", "marker").data(), nullptr);
    ASSERT_EQ(chdir(before), 0);
}

} // namespace
} // namespace VespermoorEngine::Test
