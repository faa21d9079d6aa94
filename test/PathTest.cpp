#include "VespermoorEngine/Path.h"

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

/* With @ for the current directory. */
TEST(PathTest, AbsoluteNormalisesAsText) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    const std::pair<const char*, std::string> rows[]{
        // clang-format off
        {"/a/b.c/d", "/a/b.c/d"}, {"/", "/"}, {"///", "/"}, {"/a/./b/.", "/a/b"},
        {"/a/b/../c", "/a/c"}, {"/a/..", "/"}, {"/../../a", "/a"}, {"//a///b//", "/a/b"},
        {"/..a/b../...", "/..a/b../..."}, {"x/./y", "@/x/y"}, {"", "@"},
        {"..", fs::path{directory.path()}.parent_path()},
        // clang-format on
    };
    for (const auto& [path, expected] : rows) {
        EXPECT_EQ(text(Path::absolute(path)), directory.expanded(expected)) << path;
    }
    fs::remove(directory.path());
    const Messages ignored;
    EXPECT_EQ(text(Path::absolute("x")), "");
}

TEST(PathTest, IsParentPathComparesComponents) {
    const struct {
        const char *directory, *path;
        bool expected;
    } rows[]{
        // clang-format off
        {"/a", "/a/b", true}, {"/a", "/a/b/c/d", true}, {"/a/", "/a/b", true}, {"a", "a/b", true},
        {"/", "/a", true}, {"/", "/", false}, {"/a/b", "/a/b", false}, {"/a", "/a/", false},
        {"/a/", "/a", false}, {"/a/b", "/a/bc", false}, {"/a/b", "/a/bc/d", false},
        {"/a/b", "/a", false}, {"", "/a", false}, {"/a", "", false},
        // clang-format on
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Path::isParentPath(row.directory, row.path), row.expected)
            << row.directory << " above " << row.path;
    }
}

/* With @ for the current directory. */
TEST(PathTest, UpwardsSearchFindsTheNearestDirectory) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    for (const char* const file : {"marker", "a/b/marker", "a/b/file", "a/b/c/d/marker2"}) {
        writeFile(directory / file, "");
    }
    const struct {
        const char *start, *name, *found;
    } rows[]{
        // clang-format off
        {"@/a/b/c/d", "marker", "@/a/b"}, {"@/a//", "marker", "@"}, {"@/a/b", "marker", "@/a/b"},
        {"@/not/there", "marker", "@"}, {"@/a", "proc", "/"}, {"@/a", "nowhere", ""},
        {"a/b", "file", "a/b"}, {"a/b", "b", "a"}, {"a", "marker", ""}, {"", "proc", ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        const std::string start = directory.expanded(row.start);
        const Corrade::Containers::StringView found = Path::upwardsSearch(view(start), row.name);
        EXPECT_EQ(directory.shortened(text(found)), row.found) << row.start;
        EXPECT_EQ(found.data(), *row.found ? start.data() : nullptr) << "a prefix of the start";
    }
}

} // namespace
} // namespace VespermoorEngine::Test
