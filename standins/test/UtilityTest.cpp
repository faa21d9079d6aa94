#include <cmath>
#include <limits>

#include <sys/mman.h>
#include <unistd.h>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/Path.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace Path = Corrade::Utility::Path;
using namespace Corrade::Containers::Literals;
using Corrade::Utility::format;

TEST(Format, PrintsTextsIntegersAndDoubles) {
    EXPECT_EQ(format("<{}>{}", "a\0b"_s, "{}{0}"), "<a\0b>{}{0}"_s);
    EXPECT_EQ(format("{} {}", std::numeric_limits<long>::min(), 7u), "-9223372036854775808 7");
    EXPECT_EQ(format("{:.4f} {:.4f}", 1.00006, -1.0e-60), "1.0001 -0.0000");
    EXPECT_EQ(format("{:.4f}", 0x1p110), "1298074214633706907132624082305024.0000");
    EXPECT_EQ(format("{:.4f}", -std::numeric_limits<double>::max()).size(), 1 + 309 + 5);
    EXPECT_EQ(format("{:.4f}", HUGE_VAL), "inf");
}

TEST(Path, SplitsAndJoins) {
    const std::tuple<const char*, const char*, const char*, const char*> rows[]{
        {"a", "", "a", "a"},        {"/", "/", "", "/"},          {"//", "//", "", "//"},
        {"/a", "/", "a", "/a"},     {"///a", "//", "a", "//a"},   {"a/b/", "a/b", "", "a/b/"},
        {"a//b", "a/", "b", "a/b"}, {"a///b", "a//", "b", "a//b"}};
    for (const auto& [path, directory, name, joined] : rows) {
        const auto parts = Path::split(path);
        EXPECT_EQ(parts.first(), directory);
        EXPECT_EQ(parts.second(), name);
        EXPECT_EQ(Path::join(parts.first(), parts.second()), joined);
    }
    EXPECT_EQ(Path::join("a", "/b"), "/b");
}

/* Sizes around the blocks of reads and copies, files that tell no size or a wrong one, and a file
   on another file system than the target. */
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
}

/* What a call that fails prints, after the name of the operation. */
template <class Call>
std::string failure(const Call call) {
    const Messages messages;
    EXPECT_FALSE(call());
    return messages.text().substr(std::string{"Utility::Path::"}.size());
}

TEST(Path, PrintsTheReasonOfAFailure) {
    const TemporaryDirectory root;
    const ScopedCurrentDirectory current{root.path()};
    writeFile(root / "file", "content");
    fs::create_directories("full/below");
    fs::create_symlink("file", "link");
    fs::create_symlink("nowhere", "dangling");
    const std::string missing = "error 2 (No such file or directory)\n";
    EXPECT_EQ(failure([] { return bool(Path::readString("no")); }),
              "read(): can't open no: " + missing);
    EXPECT_EQ(failure([] { return bool(Path::readString("full")); }),
              "read(): full is a directory\n");
    EXPECT_EQ(failure([] { return Path::copy("no", "to"); }),
              "copy(): can't open no for reading: " + missing);
    EXPECT_EQ(failure([] { return Path::copy("full", "to"); }),
              "copy(): can't read from full which is a directory\n");
    EXPECT_EQ(failure([] { return Path::remove("full"); }),
              "remove(): can't remove full: error 39 (Directory not empty)\n");
    EXPECT_THAT(failure([] { return Path::make("file/a"); }), testing::StartsWith("make(): "));
    EXPECT_THAT(failure([] { return Path::make("dangling/a"); }), testing::StartsWith("make(): "));
    /* The real one empties the file, and takes no notice of an error once a file is open. */
#ifdef VESPERMOOR_STANDINS_EXPORT
    const std::string full = "/dev/full: error 28 (No space left on device)\n";
    const std::string unreadable = "/proc/self/mem: error 5 (Input/output error)\n";
    EXPECT_EQ(failure([] { return Path::copy("file", "link"); }),
              "copy(): can't copy file to itself\n");
    EXPECT_EQ(failure([] { return Path::copy("file", "/dev/full"); }),
              "copy(): can't write to " + full);
    EXPECT_EQ(failure([] { return Path::write("/dev/full", "x"_s); }),
              "write(): can't write to " + full);
    EXPECT_EQ(failure([] { return Path::copy("/proc/self/mem", "to"); }),
              "copy(): can't read from " + unreadable);
    EXPECT_EQ(failure([] { return bool(Path::readString("/proc/self/mem")); }),
              "read(): can't read from " + unreadable);
#endif
    EXPECT_FALSE(fs::exists("to"));
    EXPECT_EQ(readFile("file"), "content");
}

} // namespace
} // namespace VespermoorEngine::Test
