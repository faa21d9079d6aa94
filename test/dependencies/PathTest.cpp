#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Path.h>
#include <gtest/gtest.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace Corrade::Containers::Literals;
using Corrade::Containers::String;
using Corrade::Containers::StringViewFlag;
namespace Path = Corrade::Utility::Path;
namespace fs = std::filesystem;

/* No test may leave a descriptor open. */
class PathTest : public testing::Test {
protected:
    ~PathTest() override { EXPECT_EQ(openDescriptors(), descriptors); }

    static std::ptrdiff_t openDescriptors() {
        return std::distance(fs::directory_iterator{"/proc/self/fd"}, {});
    }
    String at(const std::string& name) const { return String{(root / name).data()}; }

    const std::ptrdiff_t descriptors = openDescriptors();
    const TemporaryDirectory root;
};

TEST_F(PathTest, SplitsAndJoins) {
    const struct {
        const char *path, *directory, *name;
    } splits[]{
        {"a", "", "a"},      {"/", "/", ""},    {"//", "//", ""},    {"/a", "/", "a"},
        {"///a", "//", "a"}, {"a/b", "a", "b"}, {"a/b/", "a/b", ""}, {"a//b", "a/", "b"},
    };
    for (const auto& row : splits) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(Path::split(row.path).first(), row.directory);
        EXPECT_EQ(Path::split(row.path).second(), row.name);
    }
    EXPECT_EQ(Path::split("a/b"_s).first().flags(), StringViewFlag::Global);
    EXPECT_EQ(Path::split("a/b"_s).second().flags(), "b"_s.flags());

    const struct {
        const char *first, *second, *joined;
    } joins[]{
        {"a", "b", "a/b"}, {"a//", "b", "a//b"}, {"", "b", "b"},
        {"a", "", "a/"},   {"/", "b", "/b"},     {"a", "/b", "/b"},
    };
    for (const auto& row : joins)
        EXPECT_EQ(Path::join(row.first, row.second), row.joined);
}

/* A directory, a file, a pipe, and links to each of them and to nothing. */
TEST_F(PathTest, ListsByFlags) {
    fs::create_directory(root / "d");
    writeFile(root / "f", "");
    ASSERT_EQ(mkfifo((root / "p").data(), 0600), 0);
    for (const std::string target : {"d", "f", "n", "p"})
        fs::create_symlink(target, root / ("to-" + target));

    using Flag = Path::ListFlag;
    const Path::ListFlags sorted = Flag::SkipDotAndDotDot | Flag::SortAscending;
    const struct {
        Path::ListFlags flags;
        const char* expected;
    } rows[]{
        {Flag::SortAscending, ". .. d f p to-d to-f to-n to-p "},
        {Flag::SkipDotAndDotDot | Flag::SortDescending, "to-p to-n to-f to-d p f d "},
        {sorted | Flag::SortDescending | Flag::SkipSpecial | Flag::SkipFiles, "d to-d to-n "},
        {sorted | Flag::SkipDirectories, "f p to-f to-n to-p "},
    };
    for (const auto& row : rows) {
        std::string all;
        for (const String& name : *Path::list(view(root.path()), row.flags))
            all += text(name) + ' ';
        EXPECT_EQ(all, row.expected);
    }
}

/* Sizes around the blocks that reading and copying go by. */
TEST_F(PathTest, ReadsWritesAndCopiesBytesAlone) {
    for (const std::size_t size : {0, 1, 4095, 4096, 131071, 131072, 300000}) {
        SCOPED_TRACE(size);
        std::string content;
        while (content.size() < size)
            content += std::to_string(content.size());
        content.resize(size);
        writeFile(root / "to", content + "longer");
        EXPECT_TRUE(Path::write(at("from"), view(content)));
        EXPECT_TRUE(Path::copy(at("from"), at("to")));
        for (const char* name : {"from", "to"}) {
            const auto string = Path::readString(at(name));
            EXPECT_EQ(text(*string), content);
            EXPECT_EQ((*string)[size], '\0');
        }
    }
    fs::permissions(root / "from", fs::perms::owner_all);
    EXPECT_TRUE(Path::copy(at("from"), at("to")));
    EXPECT_EQ(fs::status(root / "to").permissions() & fs::perms::owner_exec, fs::perms::none);
}

/* What tells no size or a wrong one, and what lies on another file system than the target. */
TEST_F(PathTest, ReadsAndCopiesSpecialFiles) {
    const std::string large(300000, 'x');
    const int memory = memfd_create("large", MFD_CLOEXEC);
    const std::string otherFileSystem = "/proc/self/fd/" + std::to_string(memory);
    writeFile(otherFileSystem, large);
    for (const std::string path :
         {"/dev/null", "/proc/version", "/sys/devices/system/cpu/online", otherFileSystem.data()}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(Path::copy(view(path), at("copy")));
        EXPECT_EQ(readFile(root / "copy"), readFile(path));
        EXPECT_EQ(text(*Path::readString(view(path))), readFile(path));
    }
    EXPECT_EQ(readFile(root / "copy"), large);
    close(memory);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], large.data(), 10000), 10000);
    close(ends[1]);
    const std::string pipeEnd = "/proc/self/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(Path::readString(view(pipeEnd))->size(), 10000);
    close(ends[0]);
}

TEST_F(PathTest, PrintsTheReasonOfAFailure) {
    writeFile(root / "file", std::string(300000, 'x'));
    fs::create_directories(root / "full/below");
    fs::create_symlink("nowhere", root / "dangling");
    const std::string missing = ": error 2 (No such file or directory)\n";
    struct Row {
        std::function<bool()> call;
        std::string message;
    };
    std::vector<Row> rows{
        {[&] { return !!Path::readString(at("no")); }, "read(): can't open @/no" + missing},
        {[&] { return !!Path::readString(at("full")); }, "read(): @/full is a directory\n"},
        {[&] { return Path::copy(at("no"), at("to")); },
         "copy(): can't open @/no for reading" + missing},
        {[&] { return Path::copy(at("full"), at("to")); },
         "copy(): can't read from @/full which is a directory\n"},
        {[&] { return Path::make(at("file/a/b")); },
         "make(): can't create @/file/a: error 20 (Not a directory)\n"},
        {[&] { return Path::make(at("dangling/a")); },
         "make(): @/dangling exists but is not a directory\n"},
        {[&] { return Path::remove(at("full")); },
         "remove(): can't remove @/full: error 39 (Directory not empty)\n"},
        {[&] { return Path::move(at("no"), at("to")); },
         "move(): can't move @/no to @/to" + missing},
        {[&] { return !!Path::list(at("no")); }, "list(): can't list @/no" + missing},
    };
    /* The real ones take no notice of what the system refuses once a file is open. */
#ifdef VESPERMOOR_STANDINS_EXPORT
    const std::string full = "(): can't write to /dev/full: error 28 (No space left on device)\n";
    const std::string unreadable = "can't read from /proc/self/mem: error 5 (Input/output error)\n";
    rows.push_back({[&] { return Path::copy(at("file"), "/dev/full"); }, "copy" + full});
    rows.push_back({[&] { return Path::write("/dev/full", "x"_s); }, "write" + full});
    rows.push_back(
        {[&] { return Path::copy("/proc/self/mem", at("to")); }, "copy(): " + unreadable});
    rows.push_back({[&] { return !!Path::readString("/proc/self/mem"); }, "read(): " + unreadable});
#endif
    for (const Row& row : rows) {
        const Messages messages;
        EXPECT_FALSE(row.call());
        EXPECT_EQ(messages.text(),
                  "Utility::Path::" +
                      std::regex_replace(row.message, std::regex{"@"}, root.path()));
    }
    EXPECT_FALSE(fs::exists(root / "to"));
}

} // namespace
} // namespace VespermoorEngine::Test
