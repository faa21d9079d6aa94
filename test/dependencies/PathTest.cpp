#include "Corrade/Utility/Path.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/Optional.h"
#include "Corrade/Containers/Pair.h"
#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringIterable.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/Debug.h"
#include "Corrade/Utility/String.h"

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::String;
using Containers::StringView;
using Containers::StringViewFlag;
namespace Path = Utility::Path;
namespace fs = std::filesystem;

namespace {

std::string text(StringView view) {
    return {view.data(), view.size()};
}

std::size_t openDescriptors() {
    const fs::directory_iterator entries{"/proc/self/fd"};
    return std::size_t(std::distance(begin(entries), end(entries)));
}

/* A directory of its own for each test, gone with it, and no descriptor may be left open. */
class PathTest : public testing::Test {
protected:
    PathTest() {
        std::string name = testing::TempDir() + "path-XXXXXX";
        EXPECT_TRUE(mkdtemp(name.data()));
        root = name;
    }
    ~PathTest() override {
        EXPECT_EQ(openDescriptors(), descriptors);
        fs::remove_all(root);
    }

    String at(const std::string& name) const { return String{(root / name).c_str()}; }

    void put(const std::string& name, const std::string& content) const {
        std::ofstream{root / name, std::ios::binary} << content;
    }

    fs::path root;
    const std::size_t descriptors = openDescriptors();
};

std::string contentOf(const fs::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::string patterned(std::size_t size) {
    std::string content(size, '\0');
    for (std::size_t i = 0; i != size; ++i)
        content[i] = char(i * 7 + i / 251);
    return content;
}

TEST_F(PathTest, Split) {
    const struct {
        const char *path, *directory, *name, *stem, *extension;
    } rows[]{
        {"", "", "", "", ""},
        {"file.txt", "", "file.txt", "file", ".txt"},
        {"/", "/", "", "/", ""},
        {"//", "//", "", "//", ""},
        {"/file", "/", "file", "/file", ""},
        {"//file", "//", "file", "//file", ""},
        {"///file", "//", "file", "///file", ""},
        {"a/b", "a", "b", "a/b", ""},
        {"a/b/", "a/b", "", "a/b/", ""},
        {"a//b", "a/", "b", "a//b", ""},
        {"a.b/c", "a.b", "c", "a.b/c", ""},
        {"a/b.tar.gz", "a", "b.tar.gz", "a/b.tar", ".gz"},
        {"a/b.", "a", "b.", "a/b", "."},
        {"a/.hidden", "a", ".hidden", "a/.hidden", ""},
        {"a/.hidden.txt", "a", ".hidden.txt", "a/.hidden", ".txt"},
        {"a/..", "a", "..", "a/..", ""},
        {"...x", "", "...x", "...x", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(Path::split(row.path).first(), row.directory);
        EXPECT_EQ(Path::split(row.path).second(), row.name);
        EXPECT_EQ(Path::path(row.path), row.directory);
        EXPECT_EQ(Path::filename(row.path), row.name);
        EXPECT_EQ(Path::splitExtension(row.path).first(), row.stem);
        EXPECT_EQ(Path::splitExtension(row.path).second(), row.extension);
    }
}

TEST_F(PathTest, SplitKeepsFlags) {
    const auto both = StringViewFlag::Global | StringViewFlag::NullTerminated;
    EXPECT_EQ(Path::split("a/b.c"_s).first().flags(), StringViewFlag::Global);
    EXPECT_EQ(Path::split("a/b.c"_s).second().flags(), both);
    EXPECT_EQ(Path::split("a"_s).second().flags(), both);
    EXPECT_EQ(Path::splitExtension("a/b.c"_s).first().flags(), StringViewFlag::Global);
    EXPECT_EQ(Path::splitExtension("a/b.c"_s).second().flags(), both);
    EXPECT_EQ(Path::splitExtension("a/b"_s).first().flags(), both);
    const StringView path = "a\\b"_s;
    EXPECT_EQ(Path::fromNativeSeparators(path).data(), path.data());
    EXPECT_EQ(Path::toNativeSeparators(path).data(), path.data());
}

TEST_F(PathTest, Join) {
    const struct {
        std::vector<StringView> parts;
        const char* joined;
    } rows[]{
        {{}, ""},
        {{"a"}, "a"},
        {{"a", "b"}, "a/b"},
        {{"a/", "b"}, "a/b"},
        {{"a//", "b"}, "a//b"},
        {{"", "b"}, "b"},
        {{"a", ""}, "a/"},
        {{"", ""}, ""},
        {{"/", "b"}, "/b"},
        {{"a", "/b"}, "/b"},
        {{"a", "../b"}, "a/../b"},
        {{"a", "b/", "c", "d"}, "a/b/c/d"},
        {{"a", "/b", "", "c"}, "/b/c"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.joined);
        EXPECT_EQ(Path::join(Containers::arrayView(row.parts.data(), row.parts.size())),
                  row.joined);
        if (row.parts.size() == 2) {
            EXPECT_EQ(Path::join(row.parts[0], row.parts[1]), row.joined);
        }
    }
    EXPECT_EQ(Path::join({"a", "b", "c"}), "a/b/c");
}

TEST_F(PathTest, KindsOfEntries) {
    put("file", "");
    fs::create_directory(root / "directory");
    fs::create_symlink("file", root / "to-file");
    fs::create_symlink("directory", root / "to-directory");
    fs::create_symlink("nowhere", root / "to-nowhere");
    const struct {
        const char* name;
        bool exists, isDirectory;
    } rows[]{
        {"file", true, false},     {"directory", true, true},    {"directory/", true, true},
        {"to-file", true, false},  {"to-directory", true, true}, {"to-nowhere", false, false},
        {"missing", false, false}, {"file/below", false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Path::exists(at(row.name)), row.exists);
        EXPECT_EQ(Path::isDirectory(at(row.name)), row.isDirectory);
    }
    EXPECT_FALSE(Path::exists(""));
    EXPECT_FALSE(Path::isDirectory(""));
    const String longer = at("file-and-more");
    EXPECT_TRUE(Path::exists(longer.prefix(longer.size() - 9)))
        << "a view without a zero at its end";
}

/* A directory, a file, a pipe, and links to each of them and to nothing. */
TEST_F(PathTest, ListsByFlags) {
    fs::create_directory(root / "d");
    put("f", "");
    ASSERT_EQ(mkfifo((root / "p").c_str(), 0600), 0);
    for (const std::string target : {"d", "f", "n", "p"})
        fs::create_symlink(target, root / ("to-" + target));

    using Flag = Path::ListFlag;
    const Path::ListFlags sorted = Flag::SkipDotAndDotDot | Flag::SortAscending;
    const struct {
        Path::ListFlags flags;
        const char* expected;
    } rows[]{
        {Flag::SortAscending, ". .. d f p to-d to-f to-n to-p"},
        {sorted, "d f p to-d to-f to-n to-p"},
        {Flag::SkipDotAndDotDot | Flag::SortDescending, "to-p to-n to-f to-d p f d"},
        {sorted | Flag::SortDescending | Flag::SkipSpecial | Flag::SkipFiles, "d to-d to-n"},
        {sorted | Flag::SkipFiles, "d p to-d to-n to-p"},
        {Flag::SortAscending | Flag::SkipDirectories, "f p to-f to-n to-p"},
        {sorted | Flag::SkipSpecial, "d f to-d to-f to-n"},
        {Flag::SkipFiles | Flag::SkipDirectories | Flag::SkipSpecial, "to-n"},
    };
    for (const auto& row : rows) {
        const auto names = Path::list(root.c_str(), row.flags);
        ASSERT_TRUE(names);
        EXPECT_EQ(" "_s.join(*names), row.expected);
    }
    EXPECT_EQ(Path::list(root.c_str())->size(), 9u);
}

TEST_F(PathTest, MakesMovesAndRemoves) {
    EXPECT_TRUE(Path::make(at("a/b//c/")));
    EXPECT_TRUE(fs::is_directory(root / "a/b/c"));
    EXPECT_TRUE(Path::make(at("a/b"))) << "already there";
    fs::create_symlink("a", root / "link");
    EXPECT_TRUE(Path::make(at("link/d")));
    EXPECT_TRUE(Path::make(at("link")));
    EXPECT_TRUE(Path::make(""));
    EXPECT_TRUE(Path::make("/"));
    EXPECT_TRUE(fs::is_directory(root / "a/d"));

    put("file", "new");
    put("other", "old");
    EXPECT_TRUE(Path::move(at("file"), at("other")));
    EXPECT_EQ(contentOf(root / "other"), "new");
    EXPECT_FALSE(fs::exists(root / "file"));
    EXPECT_TRUE(Path::move(at("a"), at("moved")));
    EXPECT_TRUE(fs::is_directory(root / "moved/b/c"));

    EXPECT_TRUE(Path::remove(at("link"))) << "a dangling link, as a link";
    EXPECT_TRUE(Path::remove(at("moved/d"))) << "an empty directory";
    EXPECT_TRUE(Path::remove(at("other")));
    const std::vector<fs::path> left{fs::directory_iterator{root}, {}};
    EXPECT_EQ(left, std::vector<fs::path>{root / "moved"});
}

/* Sizes around the blocks that reading and copying go by. */
const std::size_t Sizes[]{0, 1, 4095, 4096, 4097, 8192, 131071, 131072, 131073, 300000};

TEST_F(PathTest, ReadsAndWrites) {
    for (const std::size_t size : Sizes) {
        SCOPED_TRACE(size);
        const std::string content = patterned(size);
        EXPECT_TRUE(Path::write(at("file"), Containers::arrayView(content.data(), size)));
        EXPECT_EQ(contentOf(root / "file"), content);
        const auto data = Path::read(at("file"));
        ASSERT_TRUE(data);
        EXPECT_EQ(std::string(data->data(), data->size()), content);
        const auto string = Path::readString(at("file"));
        ASSERT_TRUE(string);
        EXPECT_EQ(text(*string), content);
        EXPECT_EQ(string->data()[size], '\0');
        EXPECT_EQ(*Path::size(at("file")), size);
    }
    EXPECT_TRUE(Path::write(at("file"), "shorter"_s));
    EXPECT_TRUE(Path::append(at("file"), ", longer"_s));
    EXPECT_TRUE(Path::append(at("new"), "new"_s));
    EXPECT_EQ(contentOf(root / "file"), "shorter, longer");
    EXPECT_EQ(contentOf(root / "new"), "new");
}

TEST_F(PathTest, CopiesBytesAlone) {
    for (const std::size_t size : Sizes) {
        SCOPED_TRACE(size);
        put("from", patterned(size));
        put("to", patterned(size + 10));
        EXPECT_TRUE(Path::copy(at("from"), at("to")));
        EXPECT_EQ(contentOf(root / "to"), patterned(size));
    }
    fs::permissions(root / "from", fs::perms::owner_all);
    fs::permissions(root / "to", fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(Path::copy(at("from"), at("to")));
    EXPECT_EQ(fs::status(root / "to").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);

    fs::create_symlink("from", root / "link");
    EXPECT_TRUE(Path::copy(at("link"), at("new")));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(root / "new")));
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(fs::status(root / "new").permissions(), fs::perms(0666 & ~mask));
}

/* What tells no size or a wrong one, and what lies on another file system than the target. */
TEST_F(PathTest, ReadsAndCopiesSpecialFiles) {
    const std::string large = patterned(300000);
    const int memory = memfd_create("large", MFD_CLOEXEC);
    ASSERT_EQ(write(memory, large.data(), large.size()), ssize_t(large.size()));
    const std::string otherFileSystem = "/proc/self/fd/" + std::to_string(memory);

    for (const std::string& path :
         {std::string{"/dev/null"}, std::string{"/proc/version"},
          std::string{"/sys/devices/system/cpu/online"}, otherFileSystem}) {
        SCOPED_TRACE(path);
        const std::string content = contentOf(path);
        const auto string = Path::readString(path.c_str());
        ASSERT_TRUE(string);
        EXPECT_EQ(text(*string), content);
        EXPECT_EQ(string->data()[string->size()], '\0');
        EXPECT_TRUE(Path::copy(path.c_str(), at("copy")));
        EXPECT_EQ(contentOf(root / "copy"), content);
    }
    EXPECT_EQ(contentOf(otherFileSystem), large);
    close(memory);
}

TEST_F(PathTest, ReadsAndCopiesPipes) {
    const std::string content = patterned(10000);
    int ends[2];
    const auto readEnd = [&] {
        EXPECT_EQ(pipe(ends), 0);
        EXPECT_EQ(write(ends[1], content.data(), content.size()), ssize_t(content.size()));
        close(ends[1]);
        return String{("/proc/self/fd/" + std::to_string(ends[0])).c_str()};
    };
    EXPECT_EQ(text(*Path::readString(readEnd())), content);
    close(ends[0]);
    EXPECT_TRUE(Path::copy(readEnd(), at("copy")));
    close(ends[0]);
    EXPECT_EQ(contentOf(root / "copy"), content);
}

TEST_F(PathTest, FailuresPrintTheReason) {
    put("file", "content");
    fs::create_directories(root / "full/below");
    fs::create_symlink("nowhere", root / "dangling");
    const std::string missing = ": error 2 (No such file or directory)\n";
    const std::string notDirectory = ": error 20 (Not a directory)\n";
    const struct {
        std::function<bool()> call;
        std::string message;
    } rows[]{
        {[&] { return !!Path::read(at("no")); }, "read(): can't open @/no" + missing},
        {[&] { return !!Path::readString(at("no")); }, "read(): can't open @/no" + missing},
        {[&] { return !!Path::readString(at("full")); }, "read(): @/full is a directory\n"},
        {[&] { return !!Path::size(at("no")); }, "size(): can't open @/no" + missing},
        {[&] { return !!Path::size(at("full")); }, "size(): @/full is a directory\n"},
        {[&] { return Path::write(at("no/file"), "x"_s); },
         "write(): can't open @/no/file" + missing},
        {[&] { return Path::write(at("full"), "x"_s); },
         "write(): can't open @/full: error 21 (Is a directory)\n"},
        {[&] { return Path::append(at("no/file"), "x"_s); },
         "append(): can't open @/no/file" + missing},
        {[&] { return Path::copy(at("no"), at("to")); },
         "copy(): can't open @/no for reading" + missing},
        {[&] { return Path::copy(at("full"), at("to")); },
         "copy(): can't read from @/full which is a directory\n"},
        {[&] { return Path::copy(at("file"), at("no/file")); },
         "copy(): can't open @/no/file for writing" + missing},
        {[&] { return Path::make(at("file")); }, "make(): @/file exists but is not a directory\n"},
        {[&] { return Path::make(at("file/a/b")); },
         "make(): can't create @/file/a" + notDirectory},
        {[&] { return Path::make(at("dangling/a")); },
         "make(): @/dangling exists but is not a directory\n"},
        {[&] { return Path::remove(at("no")); }, "remove(): can't remove @/no" + missing},
        {[&] { return Path::remove(at("full")); },
         "remove(): can't remove @/full: error 39 (Directory not empty)\n"},
        {[&] { return Path::move(at("no"), at("to")); },
         "move(): can't move @/no to @/to" + missing},
        {[&] { return !!Path::list(at("no")); }, "list(): can't list @/no" + missing},
        {[&] { return !!Path::list(at("file")); }, "list(): can't list @/file" + notDirectory},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        std::ostringstream out;
        {
            Utility::Error redirect{&out};
            EXPECT_FALSE(row.call());
        }
        const String message = Utility::String::replaceAll(row.message.c_str(), "@", root.c_str());
        EXPECT_EQ(out.str(), "Utility::Path::" + text(message));
    }
    EXPECT_FALSE(fs::exists(root / "to"));
}

/* The real ones take no notice of what the system refuses once a file is open. */
#ifdef VESPERMOOR_STANDINS_EXPORT
TEST_F(PathTest, FailuresBehindTheOpening) {
    put("small", "content");
    put("large", patterned(300000));
    const std::string full = "/dev/full: error 28 (No space left on device)\n";
    const std::string unreadable = "/proc/self/mem: error 5 (Input/output error)\n";
    const struct {
        std::function<bool()> call;
        std::string message;
    } rows[]{
        {[&] { return Path::copy(at("small"), "/dev/full"); }, "copy(): can't write to " + full},
        {[&] { return Path::copy(at("large"), "/dev/full"); }, "copy(): can't write to " + full},
        {[&] { return Path::write("/dev/full", "x"_s); }, "write(): can't write to " + full},
        {[&] { return Path::append("/dev/full", "x"_s); }, "append(): can't write to " + full},
        {[&] { return Path::copy("/proc/self/mem", at("to")); },
         "copy(): can't read from " + unreadable},
        {[&] { return !!Path::read("/proc/self/mem"); }, "read(): can't read from " + unreadable},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        std::ostringstream out;
        {
            Utility::Error redirect{&out};
            EXPECT_FALSE(row.call());
        }
        EXPECT_EQ(out.str(), "Utility::Path::" + row.message);
    }
}
#endif

/* Sets a variable of the environment, or removes it, for as long as it lives. */
class Variable {
public:
    Variable(const char* name, const char* value) : _name{name} {
        if (const char* const old = std::getenv(name))
            _old = old;
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { _old ? setenv(_name, _old->c_str(), 1) : unsetenv(_name); }

private:
    const char* _name;
    std::optional<std::string> _old;
};

TEST_F(PathTest, KnownPlaces) {
    EXPECT_EQ(text(*Path::executableLocation()), fs::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(text(*Path::currentDirectory()), fs::current_path().string());
    EXPECT_EQ(*Path::temporaryDirectory(), "/tmp");
    {
        const Variable home{"HOME", "/home/me"};
        const Variable configuration{"XDG_CONFIG_HOME", nullptr};
        EXPECT_EQ(*Path::homeDirectory(), "/home/me");
        EXPECT_EQ(*Path::configurationDirectory("My App"), "/home/me/.config/my app");
    }
    const Variable home{"HOME", nullptr};
    {
        const Variable configuration{"XDG_CONFIG_HOME", "/configuration"};
        EXPECT_EQ(*Path::configurationDirectory("App"), "/configuration/app");
    }
    const Variable configuration{"XDG_CONFIG_HOME", nullptr};
    std::ostringstream out;
    Utility::Error redirect{&out};
    EXPECT_FALSE(Path::homeDirectory());
    EXPECT_FALSE(Path::configurationDirectory("App"));
    EXPECT_EQ(out.str(), "Utility::Path::homeDirectory(): $HOME not available\n"
                         "Utility::Path::configurationDirectory(): neither $XDG_CONFIG_HOME nor "
                         "$HOME available\n");
}

TEST_F(PathTest, NoCurrentDirectory) {
    const fs::path before = fs::current_path();
    fs::create_directory(root / "gone");
    fs::current_path(root / "gone");
    fs::remove(root / "gone");
    std::ostringstream out;
    {
        Utility::Error redirect{&out};
        EXPECT_FALSE(Path::currentDirectory());
    }
    fs::current_path(before);
    EXPECT_EQ(out.str(),
              "Utility::Path::currentDirectory(): error 2 (No such file or directory)\n");
}

} // namespace
