#include <cmath>
#include <limits>
#include <set>

#include <sys/mman.h>
#include <unistd.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/Path.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

namespace Containers = Corrade::Containers;
namespace Path = Corrade::Utility::Path;
using namespace Corrade::Containers::Literals;
using Containers::Array;
using Containers::StringView;
using Containers::StringViewFlags;
using Corrade::Utility::format;

/* A short text is in the object itself, which refers to it; a long one is on the heap. */
struct Text : std::string {
    explicit Text(std::size_t size = 0) : std::string(size % 40, 'x') {}
};

/* Memory that cannot grow, an append of its own elements, reserved, added and removed elements. */
template <class T>
void expectGrowthAndShrinking() {
    std::vector<T> expected{T(1), T(39)};
    Array<T> array{Corrade::InPlaceInit, {T(1), T(39)}};
    arrayAppend(array, array);
    expected.insert(expected.end(), {T(1), T(39)});
    EXPECT_GE(arrayReserve(array, 7), 7);
    arrayAppend(array, array.exceptPrefix(1));
    expected.insert(expected.end(), {T(39), T(1), T(39)});
    arrayAppend(array, T(5));
    expected.push_back(T(5));
    for (const std::size_t size : {20, 6, 8}) {
        arrayResize(array, size);
        expected.resize(size);
        EXPECT_EQ(std::vector<T>(array.begin(), array.end()), expected) << size;
    }
    array = Array<T>{Corrade::InPlaceInit, {array.data(), array.size()}};
    arrayRemoveSuffix(array, 5);
    expected.resize(3);
    EXPECT_EQ(std::vector<T>(array.begin(), array.end()), expected);
}

TEST(Array, GrowsAndShrinks) {
    expectGrowthAndShrinking<unsigned char>();
    expectGrowthAndShrinking<Text>();
}

TEST(Array, MovesItsElementsSeldomWhenAppendedTo) {
    Array<int> array;
    std::set<std::size_t> capacities;
    for (int i = 0; i != 10000; ++i) {
        arrayAppend(array, i);
        capacities.insert(arrayCapacity(array));
    }
    EXPECT_LE(capacities.size(), 40);
}

/* With a wrong flag a reader goes past the end of a text or keeps a destroyed one. */
TEST(StringView, TracksTheFlagsOfTheMemory) {
    constexpr StringViewFlags none;
    constexpr StringViewFlags global = Containers::StringViewFlag::Global;
    constexpr StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;
    const char* const data = "banana";
    const StringView view{data, 6, global | terminated};
    const std::tuple<StringView, const char*, std::size_t, StringViewFlags> rows[]{
        {data, data, 6, terminated},
        {view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {view.exceptPrefix(2), data + 2, 4, global | terminated},
        {view.exceptSuffix(1), data, 5, global},
        {view.findLast('a'), data + 5, 1, global | terminated},
        {view.find("nas"), nullptr, 0, none},
        {view.findOr('x', view.end()), view.end(), 0, none},
        {StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& [found, begin, size, flags] : rows) {
        SCOPED_TRACE(size);
        EXPECT_EQ(found.data(), begin);
        EXPECT_EQ(found.size(), size);
        EXPECT_EQ(found.flags(), flags);
    }
    EXPECT_EQ(StringView{Containers::String{"temporary"}}.flags(), none);
}

TEST(Format, PrintsTextsIntegersAndDoubles) {
    EXPECT_EQ(format("<{}>{}", "a\0b"_s, "{}{0}"), "<a\0b>{}{0}"_s);
    EXPECT_EQ(format("{} {}", std::numeric_limits<long>::min(), 7u), "-9223372036854775808 7");
    EXPECT_EQ(format("{:.4f} {:.4f}", 1.00006, -1.0e-60), "1.0001 -0.0000");
    EXPECT_EQ(format("{:.4f}", -std::numeric_limits<double>::max()).size(), 1 + 309 + 5);
    EXPECT_EQ(format("{:.4f}", HUGE_VAL), "inf");
}

TEST(Path, SplitsAndJoins) {
    const std::tuple<const char*, const char*, const char*, const char*> rows[]{
        {"a", "", "a", "a"},       {"/", "/", "", "/"},        {"//", "//", "", "//"},
        {"/a", "/", "a", "/a"},    {"///a", "//", "a", "//a"}, {"a/b/", "a/b", "", "a/b/"},
        {"a//b", "a/", "b", "a/b"}};
    for (const auto& [path, directory, name, joined] : rows) {
        const auto parts = Path::split(path);
        EXPECT_EQ(parts.first(), directory);
        EXPECT_EQ(parts.second(), name);
        EXPECT_EQ(Path::join(parts.first(), parts.second()), joined);
    }
    EXPECT_EQ(Path::join("a", "/b"), "/b");
}

/* Sizes around the blocks of reads and copies, files with no size or a wrong one, and a file on
   another file system than the target. */
TEST(Path, ReadsAndCopiesFilesOfAnySize) {
    const TemporaryDirectory root;
    const std::string copy = root / "copy";
    const int memory = memfd_create("memory", MFD_CLOEXEC);
    std::vector<std::string> paths{"/dev/null", "/proc/version", "/sys/devices/system/cpu/online",
                                   "/proc/self/fd/" + std::to_string(memory)};
    writeFile(paths.back(), std::string(300000, 'x'));
    for (const std::size_t size : {0, 1, 4095, 4096, 131071, 131072, 300000}) {
        std::string content;
        while (content.size() < size)
            content += std::to_string(content.size());
        paths.push_back(root / std::to_string(size));
        writeFile(paths.back(), std::string(400000, 'y'));
        EXPECT_TRUE(Path::write(view(paths.back()), view(content).prefix(size)));
        EXPECT_EQ(readFile(paths.back()), content.substr(0, size));
    }
    for (const std::string& path : paths) {
        writeFile(copy, std::string(400000, 'y'));
        EXPECT_TRUE(Path::copy(view(path), view(copy)));
        EXPECT_TRUE(readFile(copy) == readFile(path)) << path;
        EXPECT_TRUE(text(*Path::readString(view(path))) == readFile(path)) << path;
    }
    close(memory);
}

/* A call and the message that it fails with, after the name of the namespace. */
struct Failure {
    bool (*call)();
    const char* message;
};

const Failure failures[]{
    {[] { return bool(Path::readString("no")); },
     "read(): can't open no: error 2 (No such file or directory)\n"},
    {[] { return bool(Path::readString("full")); }, "read(): full is a directory\n"},
    {[] { return Path::copy("no", "to"); },
     "copy(): can't open no for reading: error 2 (No such file or directory)\n"},
    {[] { return Path::copy("full", "to"); },
     "copy(): can't read from full which is a directory\n"},
    {[] { return Path::remove("full"); },
     "remove(): can't remove full: error 39 (Directory not empty)\n"},
/* The real one empties the file, and ignores errors after a file is open. */
#ifdef VESPERMOOR_STANDINS_EXPORT
    {[] { return Path::copy("file", "link"); }, "copy(): can't copy file to itself\n"},
    {[] { return Path::copy("file", "/dev/full"); },
     "copy(): can't write to /dev/full: error 28 (No space left on device)\n"},
    {[] { return Path::write("/dev/full", "x"_s); },
     "write(): can't write to /dev/full: error 28 (No space left on device)\n"},
    {[] { return Path::copy("/proc/self/mem", "to"); },
     "copy(): can't read from /proc/self/mem: error 5 (Input/output error)\n"},
    {[] { return bool(Path::readString("/proc/self/mem")); },
     "read(): can't read from /proc/self/mem: error 5 (Input/output error)\n"},
#endif
};

TEST(Path, PrintsTheReasonOfAFailure) {
    const TemporaryDirectory root;
    const ScopedCurrentDirectory current{root.path()};
    makeTree(root.path(), {"file", "full/below/", "link -> file", "dangling -> nowhere"});
    const Messages messages;
    for (const auto& [call, message] : failures) {
        const Messages inner;
        EXPECT_FALSE(call()) << message;
        EXPECT_EQ(inner.text(), std::string{"Utility::Path::"} + message);
    }
    EXPECT_FALSE(Path::make("file/a") || Path::make("dangling/a"));
    EXPECT_THAT(messages.text(), testing::ContainsRegex("^Utility::Path::make.*\n.*::make"));
    EXPECT_FALSE(fs::exists("to"));
    EXPECT_EQ(readFile("file"), "file");
}

} // namespace
} // namespace VespermoorEngine::Test
