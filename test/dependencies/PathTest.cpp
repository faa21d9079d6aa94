
#include <sys/mman.h>
#include <unistd.h>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Utility/Path.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace Path = Corrade::Utility::Path;

TEST(Path, SplitsAndJoins) {
    const struct {
        const char *path, *directory, *name, *joined;
    } rows[]{
        // clang-format off
        {"a", "", "a", "a"}, {"/", "/", "", "/"}, {"//", "//", "", "//"}, {"/a", "/", "a", "/a"},
        {"///a", "//", "a", "//a"}, {"a/b/", "a/b", "", "a/b/"}, {"a//b", "a/", "b", "a/b"},
        {"a///b", "a//", "b", "a//b"},
        // clang-format on
    };
    for (const auto& row : rows) {
        const auto parts = Path::split(row.path);
        EXPECT_EQ(parts.first(), row.directory);
        EXPECT_EQ(parts.second(), row.name);
        EXPECT_EQ(Path::join(parts.first(), parts.second()), row.joined);
    }
    EXPECT_EQ(Path::join("a", "/b"), "/b");
}

/* Sizes around the blocks that reading and copying go by, what tells no size or a wrong one, and
   what lies on another file system than the target. */
TEST(Path, ReadsAndCopiesWhateverTheSize) {
    const TemporaryDirectory root;
    const std::string copy = root / "copy";
    const int memory = memfd_create("memory", MFD_CLOEXEC);
    const std::string otherFileSystem = "/proc/self/fd/" + std::to_string(memory);
    writeFile(otherFileSystem, std::string(300000, 'x'));
    std::vector<std::string> paths{"/dev/null", "/proc/version", "/sys/devices/system/cpu/online",
                                   otherFileSystem};
    for (const std::size_t size : {0, 1, 4095, 4096, 131071, 131072, 300000}) {
        std::string content;
        while (content.size() < size)
            content += std::to_string(content.size());
        paths.push_back(root / std::to_string(size));
        EXPECT_TRUE(Path::write(view(paths.back()), view(content).prefix(size)));
        EXPECT_EQ(readFile(paths.back()), content.substr(0, size));
    }
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        writeFile(copy, std::string(400000, 'y'));
        EXPECT_TRUE(Path::copy(view(path), view(copy)));
        EXPECT_EQ(readFile(copy), readFile(path));
        EXPECT_EQ(text(*Path::readString(view(path))), readFile(path));
    }
    close(memory);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], std::string(10000, 'x').data(), 10000), 10000);
    close(ends[1]);
    const std::string pipeEnd = "/proc/self/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(text(*Path::readString(view(pipeEnd))), std::string(10000, 'x'));
    close(ends[0]);
}

TEST(Path, PrintsTheReasonOfAFailure) {
    const TemporaryDirectory root;
    const ScopedCurrentDirectory current{root.path()};
    writeFile(root / "file", std::string(300000, 'x'));
    fs::create_directories("full/below");
    fs::create_symlink("nowhere", "dangling");
    const struct {
        bool (*call)();
        const char* message;
    } rows[]{
        // clang-format off
        {[] { return !!Path::readString("no"); },
         "read(): can't open no: error 2 (No such file or directory)"},
        {[] { return !!Path::readString("full"); }, "read(): full is a directory"},
        {[] { return Path::copy("no", "to"); },
         "copy(): can't open no for reading: error 2 (No such file or directory)"},
        {[] { return Path::copy("full", "to"); },
         "copy(): can't read from full which is a directory"},
        {[] { return Path::make("file/a/b"); },
         "make(): can't create file/a: error 20 (Not a directory)"},
        {[] { return Path::make("dangling/a"); },
         "make(): dangling exists but is not a directory"},
        {[] { return Path::remove("full"); },
         "remove(): can't remove full: error 39 (Directory not empty)"},
        /* The real ones take no notice of what the system refuses once a file is open. */
#ifdef VESPERMOOR_STANDINS_EXPORT
        {[] { return Path::copy("file", "/dev/full"); },
         "copy(): can't write to /dev/full: error 28 (No space left on device)"},
        {[] { return Path::write("/dev/full", view("x")); },
         "write(): can't write to /dev/full: error 28 (No space left on device)"},
        {[] { return Path::copy("/proc/self/mem", "to"); },
         "copy(): can't read from /proc/self/mem: error 5 (Input/output error)"},
        {[] { return !!Path::readString("/proc/self/mem"); },
         "read(): can't read from /proc/self/mem: error 5 (Input/output error)"},
#endif
        // clang-format on
    };
    for (const auto& row : rows) {
        const Messages messages;
        EXPECT_FALSE(row.call());
        EXPECT_EQ(messages.text(), std::string{"Utility::Path::"} + row.message + '\n');
    }
    EXPECT_FALSE(fs::exists("to"));
}

} // namespace
} // namespace VespermoorEngine::Test
