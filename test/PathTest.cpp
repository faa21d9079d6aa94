#include "VespermoorEngine/Path.h"

#include <regex>

#include <unistd.h>

#include <Corrade/Containers/String.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

TEST(PathTest, AbsoluteNormalisesAsText) {
    const struct {
        const char *path, *expected;
    } rows[]{
        {"/a/b.c/d", "/a/b.c/d"},
        {"/", "/"},
        {"///", "/"},
        {"/a/./b/.", "/a/b"},
        {"/a/b/../c", "/a/c"},
        {"/a/..", "/"},
        {"/../../a", "/a"},
        {"//a///b//", "/a/b"},
        {"/..a/b../...", "/..a/b../..."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(Path::absolute(row.path)), row.expected) << row.path;
    }
}

TEST(PathTest, AbsoluteStartsARelativePathAtTheCurrentDirectory) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    const std::string parent = directory.path().substr(0, directory.path().rfind('/'));
    EXPECT_EQ(text(Path::absolute("x/./y")), directory / "x/y");
    EXPECT_EQ(text(Path::absolute("..")), parent);
    EXPECT_EQ(text(Path::absolute("")), directory.path());
    ASSERT_EQ(rmdir(directory.path().data()), 0);
    const Messages ignored;
    EXPECT_EQ(text(Path::absolute("x")), "");
}

TEST(PathTest, IsParentPathComparesComponents) {
    const struct {
        const char *directory, *path;
        bool expected;
    } rows[]{
        {"/a", "/a/b", true},     {"/a", "/a/b/c/d", true},   {"/a/", "/a/b", true},
        {"a", "a/b", true},       {"/", "/a", true},          {"/", "/", false},
        {"/a/b", "/a/b", false},  {"/a", "/a/", false},       {"/a/", "/a", false},
        {"/a/b", "/a/bc", false}, {"/a/b", "/a/bc/d", false}, {"/a/b", "/a", false},
        {"", "/a", false},        {"/a", "", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Path::isParentPath(row.directory, row.path), row.expected)
            << row.directory << " above " << row.path;
    }
}

/* `D` stands for the directory of the test, which is the current one. */
TEST(PathTest, UpwardsSearchFindsTheNearestDirectory) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    for (const char* const file : {"marker", "a/b/marker", "a/b/file", "a/b/c/d/marker2"}) {
        writeFile(directory / file, "");
    }
    const struct {
        const char *start, *name, *found;
    } rows[]{
        {"D/a/b/c/d", "marker", "D/a/b"},
        {"D/a//", "marker", "D"},
        {"D/a/b", "marker", "D/a/b"},
        {"D/not/there", "marker", "D"},
        {"D/a", "proc", "/"},
        {"D/a", "nowhere", nullptr},
        {"a/b", "file", "a/b"},
        {"a/b", "b", "a"},
        {"a", "marker", nullptr},
        {"", "proc", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.start);
        const std::string start = std::regex_replace(row.start, std::regex{"^D"}, directory.path());
        const Corrade::Containers::StringView found = Path::upwardsSearch(view(start), row.name);
        EXPECT_EQ(found.data(), row.found ? start.data() : nullptr) << "a prefix of the start";
        EXPECT_EQ(text(found), std::regex_replace(row.found ? row.found : "", std::regex{"^D"},
                                                  directory.path()));
    }
}

} // namespace
} // namespace VespermoorEngine::Test
