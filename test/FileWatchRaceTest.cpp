#include "VespermoorEditor/Utils/FileWatch.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>

#include <fcntl.h>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "FileWatchState.h"
#include "Support.h"
#include "Tree.h"

namespace {

/* Called with each path in the moment before a kernel watch is placed on it. */
std::function<void(const std::string&)> beforeKernelWatch;

} // namespace

/* Takes the place of the system's function for the library as well, so that a change can be made in
   the very window that other processes only hit by chance. */
extern "C" __attribute__((visibility("default"))) int
inotify_add_watch(const int fd, const char* const path, const std::uint32_t mask) noexcept {
    if (beforeKernelWatch) {
        beforeKernelWatch(path);
    }
    return syscall(SYS_inotify_add_watch, fd, path, mask);
}

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::IsSubsetOf;

/* All that is heard, by path, and a check of what has to hold when the tree is quiet again. */
struct FileWatchRaceTest : testing::Test {
    void start(const std::string& path) {
        ASSERT_GT(watch.watch(path.data(), {Corrade::DefaultInit,
                                            [this](Containers::StringView changed, auto) {
                                                heard.insert(text(changed));
                                            }}),
                  0);
    }

    /* Every directory is watched and none that is gone, and a change in each is heard. */
    void expectNothingLost(const std::string& path) {
        while (watch.update()) {
        }
        expectWatchesExactly(watch, path);
        heard.clear();
        std::set<std::string> probes;
        for (const std::string& directory : directoriesBelow(path)) {
            probes.insert(directory + "/probe");
            writeFile(directory + "/probe", "");
        }
        watch.update();
        EXPECT_THAT(probes, IsSubsetOf(heard));
        for (const std::string& probe : probes) {
            fs::remove(probe);
        }
        watch.update();
    }

    std::set<std::string> filesBelow(const std::string& path) {
        std::set<std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator{path}) {
            if (!entry.is_directory()) {
                files.insert(entry.path());
            }
        }
        return files;
    }

    /* Runs a shell script in `path` and updates as often as possible until it ends. */
    void race(const std::string& path, const std::string& script) {
        const std::string command = "cd '" + path + "'; " + script;
        const char* const arguments[]{"sh", "-ec", command.data(), nullptr};
        pid_t child = 0;
        ASSERT_EQ(posix_spawn(&child, "/bin/sh", nullptr, nullptr,
                              const_cast<char* const*>(arguments), environ),
                  0);
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            watch.update();
        }
        EXPECT_EQ(status, 0);
        watch.update();
    }

    TemporaryDirectory root;
    FileWatch watch;
    std::set<std::string> heard;
    Messages messages;
};

/* A change in the moment between the listing of a directory and its kernel watch. */
struct Window {
    const char* name;
    std::vector<std::string> before;
    /* Brings the directory in; null where the change falls into the registration. */
    void (*arrive)(const std::string& root);
    const char* directory;
    void (*change)(const std::string& root);
    std::vector<std::string> heard;
};

void PrintTo(const Window& row, std::ostream* const out) {
    *out << row.name;
}

void moveIn(const std::string& root) {
    fs::rename(root + "/n", root + "/w/n");
}

const Window windows[]{
    // clang-format off
    {"directory appears", {"w/a/b/"}, nullptr, "w/a",
     [](const std::string& r) { fs::create_directories(r + "/w/a/new/deep"); }, {}},
    {"watched directory is renamed", {"w/a/b/c/"}, nullptr, "w/a",
     [](const std::string& r) { fs::rename(r + "/w/a/b", r + "/w/a/d"); }, {}},
    {"watched directory moves to one watched before", {"w/a/b/c/", "w/z/"}, nullptr, "w/a",
     [](const std::string& r) { fs::rename(r + "/w/a/b", r + "/w/z/b"); }, {}},
    {"watched directory moves to one watched later", {"w/a/", "w/z/b/c/"}, nullptr, "w/z",
     [](const std::string& r) { fs::rename(r + "/w/z/b", r + "/w/a/b"); }, {}},
    {"watched directory is made anew", {"w/a/b/c/"}, nullptr, "w/a", [](const std::string& r) {
     fs::remove_all(r + "/w/a/b"); fs::create_directories(r + "/w/a/b/d"); }, {}},
    {"watched directory gives its name to the one below", {"w/a/b/c/d/"}, nullptr, "w/a",
     [](const std::string& r) {fs::rename(r + "/w/a/b", r + "/w/a/x");
     fs::rename(r + "/w/a/x/c", r + "/w/a/b"); }, {}},
    {"watched directory becomes a file", {"w/a/b/c/"}, nullptr, "w/a", [](const std::string& r) {
     fs::remove_all(r + "/w/a/b"); writeFile(r + "/w/a/b", ""); }, {}},
    {"watched directory leaves", {"w/a/b/c/"}, nullptr, "w/a",
     [](const std::string& r) { fs::rename(r + "/w/a/b", r + "/b"); }, {}},
    {"arriving: file", {"w/", "n/a"}, moveIn, "w/n",
     [](const std::string& r) { writeFile(r + "/w/n/late", "x"); }, {"w/n/a", "w/n/late"}},
    {"arriving: time stamps set back",
     {"w/", "n/a"},
     moveIn,
     "w/n",
     [](const std::string& r) {
         writeFile(r + "/w/n/late", "x");
         /* Both of them, since the kernel takes one alone for a change of the directory. */
         const timespec longAgo[2]{{1'000'000'000, 5}, {1'000'000'000, 5}};
         EXPECT_EQ(utimensat(AT_FDCWD, (r + "/w/n").data(), longAgo, 0), 0);
     },
     {"w/n/late"}},
    {"arriving: directories and files", {"w/", "n/s/a"}, moveIn, "w/n/s", [](const std::string& r) {
     makeTree(r + "/w/n/s", {"t/u/b", "t/c", "l -> gone"}); },
     {"w/n/s/t/u/b", "w/n/s/t/c", "w/n/s/l"}},
    {"arriving: file becomes a directory", {"w/", "n/f"}, moveIn, "w/n", [](const std::string& r) {
     fs::remove(r + "/w/n/f"); writeFile(r + "/w/n/f/g", ""); }, {"w/n/f/g"}},
    {"arriving: directory becomes a file", {"w/", "n/s/t/"}, moveIn, "w/n",
     [](const std::string& r) {fs::remove_all(r + "/w/n/s"); writeFile(r + "/w/n/s", ""); },
     {"w/n/s"}},
    {"arriving: moves on", {"w/", "n/s/f"}, moveIn, "w/n",
     [](const std::string& r) { fs::rename(r + "/w/n", r + "/w/m"); }, {"w/m/s/f"}},
    {"arriving: what is below moves beside", {"w/", "n/s/f"}, moveIn, "w/n",
     [](const std::string& r) { fs::rename(r + "/w/n/s", r + "/w/s"); }, {"w/s/f"}},
    {"arriving: moves out", {"w/", "n/s/f"}, moveIn, "w/n",
     [](const std::string& r) { fs::rename(r + "/w/n", r + "/n"); }, {}},
    // clang-format on
};

struct Windows : FileWatchRaceTest, testing::WithParamInterface<Window> {
    ~Windows() override { beforeKernelWatch = nullptr; }
};

TEST_P(Windows, LoseNothing) {
    const Window& row = GetParam();
    makeTree(root.path(), row.before);
    bool open = true;
    const auto arm = [&] {
        beforeKernelWatch = [&](const std::string& path) {
            if (path == root / row.directory && std::exchange(open, false)) {
                row.change(root.path());
            }
        };
    };
    if (!row.arrive) {
        arm();
        start(root / "w");
    } else {
        start(root / "w");
        row.arrive(root.path());
        arm();
        EXPECT_TRUE(watch.update());
    }
    EXPECT_FALSE(open);
    watch.update();
    std::set<std::string> wanted;
    for (const std::string& path : row.heard) {
        wanted.insert(root / path);
    }
    EXPECT_THAT(wanted, IsSubsetOf(heard));
    expectNothingLost(root / "w");
}

INSTANTIATE_TEST_SUITE_P(, Windows, testing::ValuesIn(windows), rowName<Window>);

/* A directory made in the window, whose own window is used in turn, and so on. */
TEST_F(Windows, PassesGoOnUntilNothingIsNew) {
    makeTree(root.path(), {"w/", "n/"});
    start(root / "w");
    moveIn(root.path());
    int depth = 0;
    beforeKernelWatch = [&](const std::string& path) {
        if (depth != 5) {
            fs::create_directory(path + '/' + std::to_string(++depth));
        }
    };
    watch.update();
    EXPECT_TRUE(fs::exists(root / "w/n/1/2/3/4/5"));
    expectWatchesExactly(watch, root / "w");
}

/* Random changes from a fixed seed, each as one step of a table. */
class Changer {
public:
    Changer(const std::string& watchedPath, const std::string& outsidePath)
        : watched{watchedPath}, outside{outsidePath} {}

    void step() {
        switch (pick(10)) {
        case 0:
        case 1:
        case 2:
            make(directory() / name());
            break;
        case 3:
        case 4:
            write(directory() / name());
            break;
        case 5:
        case 6:
            move(entry(watched), directory() / name());
            break;
        case 7:
            move(entry(watched), fs::path{outside} / name());
            break;
        case 8:
            move(entry(outside), directory() / name());
            break;
        default:
            fs::remove_all(entry(watched));
        }
    }

    std::size_t pick(const std::size_t count) {
        return std::uniform_int_distribution<std::size_t>{0, count - 1}(random);
    }

private:
    std::string name() { return std::to_string(made++ % 40) + (pick(2) ? "-x" : ""); }

    fs::path directory() {
        const std::set<std::string> all = directoriesBelow(watched);
        return *std::next(all.begin(), pick(all.size()));
    }

    /* Something below `path`, or its missing entry where there is nothing. */
    fs::path entry(const std::string& path) {
        std::vector<fs::path> all;
        for (const fs::directory_entry& found : fs::recursive_directory_iterator{path}) {
            all.push_back(found.path());
        }
        std::sort(all.begin(), all.end());
        return all.empty() ? fs::path{path} / "missing" : all[pick(all.size())];
    }

    /* What the system refuses, as a move into itself or a file in place of a directory, is left
       undone. */
    static void make(const fs::path& path) {
        std::error_code ignored;
        fs::create_directory(path, ignored);
    }

    static void write(const fs::path& path) { std::ofstream{path} << 'x'; }

    static void move(const fs::path& from, const fs::path& to) {
        std::error_code ignored;
        fs::rename(from, to, ignored);
    }

    std::string watched;
    std::string outside;
    std::mt19937 random{20240607};
    unsigned made = 0;
};

TEST_F(FileWatchRaceTest, RandomChangesLeaveTheWatchesOfAFreshWalk) {
    makeTree(root.path(), {"w/", "o/"});
    start(root / "w");
    Changer changer{root / "w", root / "o"};
    for (int round = 0; round != 30 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        for (int i = 0; i != 100; ++i) {
            changer.step();
            if (changer.pick(8) == 0) {
                watch.update();
            }
        }
        expectNothingLost(root / "w");
    }
    EXPECT_EQ(messages.text(), "");
}

TEST_F(FileWatchRaceTest, TwoTreesExchangeDirectories) {
    makeTree(root.path(), {"a/", "b/"});
    start(root / "a");
    start(root / "b");
    for (int i = 0; i != 50; ++i) {
        fs::create_directories(root / "a/x/y");
        watch.update();
        fs::create_directory(root / "b/new");
        fs::rename(root / "a/x", root / "b/new/x");
        watch.update();
        writeFile(root / "b/new/x/y/f", "");
        watch.update();
        EXPECT_EQ(heard.count(root / "b/new/x/y/f"), 1);
        heard.clear();
        fs::remove_all(root / "b/new");
    }
    watch.update();
    EXPECT_EQ(kernelWatches(watch).size(), 2);
}

TEST_F(FileWatchRaceTest, HearsAgainAfterTheQueueOverflowed) {
    makeTree(root.path(), {"w/a/"});
    start(root / "w");
    const int limit = std::stoi(readFile("/proc/sys/fs/inotify/max_queued_events"));
    for (int i = 0; i <= limit / 2; ++i) {
        close(creat((root / "w/a/f").data(), 0666));
        unlink((root / "w/a/f").data());
    }
    EXPECT_TRUE(watch.update());
    expectNothingLost(root / "w");
}

const char* const scripts[]{
    "i=0; while [ $i -lt 300 ]; do mkdir -p p$i/b/c/d; echo > p$i/b/c/d/f; i=$((i+1)); done",
    "cp -r $SOURCE copy",
    "cp -a $SOURCE copy",
    "cp -r $SOURCE copy; mv copy moved; cp -r $SOURCE copy; mv moved/1 copy/2/again; "
    "rm -rf moved; mkdir moved; mv copy moved",
    "cp -r $SOURCE copy 2> /dev/null & until mv copy moved 2> /dev/null; do :; done; mkdir copy; "
    "wait $! || true",
    "i=0; while [ $i -lt 1000 ]; do mkdir n; echo > n/f; rm -r n; i=$((i+1)); done; "
    "mkdir n; echo > n/f",
    "i=0; while [ $i -lt 300 ]; do mkdir -p x/y z; mv x z; echo > z/x/y/f; mv z x; rm -r x; "
    "i=$((i+1)); done; mkdir -p x/y; echo > x/y/f",
};

/* The scripts find a tree of 1,110 directories with 3,000 files at `$SOURCE`. */
struct Races : FileWatchRaceTest, testing::WithParamInterface<const char*> {
    static void SetUpTestSuite() {
        source = std::make_unique<TemporaryDirectory>();
        for (int i = 0; i != 1000; ++i) {
            std::string path = source->path();
            for (const char digit : std::to_string(1000 + i).substr(1)) {
                path += std::string{"/"} + digit;
            }
            makeTree(path, {"a", "b", "c"});
        }
        setenv("SOURCE", source->path().data(), 1);
    }

    static void TearDownTestSuite() { source = nullptr; }

    static std::unique_ptr<TemporaryDirectory> source;
};

std::unique_ptr<TemporaryDirectory> Races::source;

TEST_P(Races, LoseNothing) {
    start(root.path());
    race(root.path(), GetParam());
    while (watch.update()) {
    }
    EXPECT_THAT(filesBelow(root.path()), IsSubsetOf(heard));
    expectNothingLost(root.path());
}

INSTANTIATE_TEST_SUITE_P(, Races, testing::ValuesIn(scripts));

} // namespace
} // namespace VespermoorEngine::Test
