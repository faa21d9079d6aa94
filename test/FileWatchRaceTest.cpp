#include "VespermoorEditor/Utils/FileWatch.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "FileWatchState.h"
#include "Support.h"
#include "Tree.h"

namespace {

/* Called with each path right before and after a kernel watch is placed on it. */
std::function<void(const std::string&)> aroundKernelWatch;

} // namespace

/* Takes the place of the system's function for the library as well, so that a change can be made in
   the very window that other processes only hit by chance. */
extern "C" __attribute__((visibility("default"))) int
inotify_add_watch(const int fd, const char* const path, const std::uint32_t mask) noexcept {
    if (!aroundKernelWatch) {
        return syscall(SYS_inotify_add_watch, fd, path, mask);
    }
    aroundKernelWatch(path);
    const int descriptor = syscall(SYS_inotify_add_watch, fd, path, mask);
    const int error = errno;
    aroundKernelWatch(path);
    errno = error;
    return descriptor;
}

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

/* Random changes from a seed below the directory `w` of a root, and to and from `o` beside it. What
   the system refuses, a move into itself say, is left undone. */
class Changer {
public:
    Changer(const std::string& root, const unsigned seed)
        : watched{root + "/w"}, outside{root + "/o"}, random{seed} {
        makeTree(root, {"w/", "o/"});
    }

    /* How many links may lead to directories below the watched one. */
    std::size_t links = 0;

    /* Every other time the change is about `near`, if given, or a directory above it. */
    void step(const fs::path& near = {}) {
        const bool close = !near.empty() && near != watched && pick(2);
        fs::path changed = near;
        while (close && changed.parent_path() != watched && pick(2)) {
            changed = changed.parent_path();
        }
        const fs::path directory = close ? changed.parent_path() : any(directoriesBelow(watched));
        const fs::path entry = close ? changed : below(watched);
        switch (std::error_code ignored; pick(12)) {
        case 0:
        case 1:
            fs::create_directories(directory / name() / name(), ignored);
            break;
        case 2:
        case 3:
            std::ofstream{directory / name()} << 'x';
            break;
        case 4:
            fs::rename(entry, any(directoriesBelow(watched)) / name(), ignored);
            break;
        case 5:
            fs::rename(entry, outside / name(), ignored);
            break;
        case 6:
            fs::rename(below(outside), directory / name(), ignored);
            break;
        case 7:
        case 8:
        case 9:
            renameat2(AT_FDCWD, entry.c_str(), AT_FDCWD, any(directoriesBelow(watched)).c_str(),
                      RENAME_EXCHANGE);
            break;
        case 10:
            if (links != 0) {
                --links;
                fs::create_directory_symlink(any(directoriesBelow(watched)), directory / name(),
                                             ignored);
                break;
            }
            [[fallthrough]];
        default:
            links += fs::symlink_status(entry).type() == fs::file_type::symlink ? 1 : 0;
            fs::remove_all(entry, ignored);
        }
    }

    std::size_t pick(const std::size_t count) {
        return std::uniform_int_distribution<std::size_t>{0, count - 1}(random);
    }

    const fs::path watched;
    const fs::path outside;

private:
    std::string name() { return std::to_string(pick(5)); }

    fs::path any(const std::set<std::string>& paths) {
        return paths.empty() ? fs::path{"/missing"}
                             : fs::path{*std::next(paths.begin(), pick(paths.size()))};
    }

    fs::path below(const fs::path& path) {
        std::set<std::string> paths;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator{path}) {
            paths.insert(entry.path());
        }
        return any(paths);
    }

    std::mt19937 random;
};

std::set<std::string> filesBelow(const std::string& root) {
    std::set<std::string> files;
    for (const std::string& name : tree(root)) {
        if (name.back() != '/') {
            files.insert(root + '/' + name);
        }
    }
    return files;
}

/* Notes all that is heard, and checks what has to hold when the tree is quiet again. */
struct FileWatchRaceTest : testing::Test {
    ~FileWatchRaceTest() override { aroundKernelWatch = nullptr; }

    int start(const std::string& path) {
        return watch.watch(path.data(),
                           {Corrade::DefaultInit, [this](const Containers::StringView changed,
                                                         auto) { heard.insert(text(changed)); }});
    }

    /* Updates with `change` called in every window. */
    template <class Change>
    void updateWith(Change&& change) {
        aroundKernelWatch = change;
        watch.update();
        aroundKernelWatch = nullptr;
    }

    /* Every directory is watched and none that is gone, and a change in each is heard. */
    void expectNothingLost(const std::string& path) {
        while (watch.update()) {
        }
        expectWatchesExactly(watch, path);
        expectChangesHeard(path);
    }

    /* A change in each directory is heard, by one of its names. */
    void expectChangesHeard(const std::string& path) {
        heard.clear();
        std::set<std::string> probes;
        for (const std::string& directory : directoriesBelow(path)) {
            probes.insert(directory + "/probe");
            writeFile(directory + "/probe", "");
        }
        watch.update();
        std::set<std::string> resolved;
        for (const std::string& changed : heard) {
            resolved.insert(fs::weakly_canonical(changed));
        }
        EXPECT_TRUE(std::includes(resolved.begin(), resolved.end(), probes.begin(), probes.end()));
        for (const std::string& probe : probes) {
            fs::remove(probe);
        }
        watch.update();
        heard.clear();
    }

    TemporaryDirectory root;
    FileWatch watch;
    std::multiset<std::string> heard;
    Messages messages;
};

TEST_F(FileWatchRaceTest, RandomChangesLeaveTheWatchesOfAFreshWalk) {
    Changer changer{root.path(), 20240607};
    start(changer.watched);
    for (int round = 0; round != 30 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        for (int i = 0; i != 100; ++i) {
            changer.step();
            if (changer.pick(8) == 0) {
                watch.update();
            }
        }
        expectNothingLost(changer.watched);
    }
    EXPECT_EQ(messages.text(), "");
}

/* The same with changes between the listing of a directory and its kernel watch, at registration
   and when directories arrive. */
TEST_F(FileWatchRaceTest, RandomChangesInEveryWindowLoseNothing) {
    for (unsigned seed = 0; seed != 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Changer changer{root / std::to_string(seed), seed};
        for (int i = 0; i != 60; ++i) {
            changer.step();
        }
        int left = 0;
        const auto act = [&](const std::string& path) {
            for (; left != 0 && changer.pick(2); --left) {
                changer.step(path);
            }
        };
        left = 10;
        aroundKernelWatch = act;
        const int id = start(changer.watched);
        aroundKernelWatch = nullptr;
        expectNothingLost(changer.watched);
        const std::set<std::string> before = filesBelow(changer.watched);
        for (int i = 0; i != 10; ++i) {
            changer.step();
            left = 10;
            updateWith(act);
        }
        while (watch.update()) {
        }
        for (const std::string& file : filesBelow(changer.watched)) {
            EXPECT_TRUE(before.count(file) || heard.count(file)) << file;
        }
        expectNothingLost(changer.watched);
        watch.remove(id);
    }
}

/* The same with links that come and go and give directories of the tree other names. */
TEST_F(FileWatchRaceTest, RandomChangesAroundLinksLoseNothing) {
    for (unsigned seed = 0; seed != 100 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Changer changer{root / std::to_string(seed), seed};
        changer.links = 3;
        const int id = start(changer.watched);
        for (int i = 0; i != 200 && !HasFailure(); ++i) {
            changer.step();
            if (changer.pick(4) == 0) {
                watch.update();
                expectChangesHeard(changer.watched);
            }
        }
        watch.remove(id);
    }
}

/* A change in the moment before the first kernel watch on a directory that arrives as w/n. */
struct Window {
    const char* name;
    std::vector<std::string> before;
    const char* directory;
    void (*change)(const std::string& root);
    std::vector<std::string> heard;
    std::set<std::string> listed;
};

void PrintTo(const Window& row, std::ostream* const out) {
    *out << row.name;
}

const Window windows[]{
    // clang-format off
    {"time stamps set back", {"n/a"}, "w/n", [](const std::string& r) {
     writeFile(r + "/w/n/late", "x");
     /* Both of them, since the kernel takes one alone for a change of the directory. */
     const timespec longAgo[2]{{1'000'000'000, 5}, {1'000'000'000, 5}};
     EXPECT_EQ(utimensat(AT_FDCWD, (r + "/w/n").data(), longAgo, 0), 0); },
     {"w/n/late"}, {"w", "w/n"}},
    {"name goes to what is below", {"n/b/c/d/"}, "w/n", [](const std::string& r) {
     fs::rename(r + "/w/n/b", r + "/w/n/x"); fs::rename(r + "/w/n/x/c", r + "/w/n/b"); },
     {}, {"w", "w/n", "w/n/b", "w/n/b/d", "w/n/x"}},
    {"directories, files and links", {"n/s/a"}, "w/n/s",
     [](const std::string& r) { makeTree(r + "/w/n/s", {"t/u/b", "t/c", "l -> gone"}); },
     {"w/n/s/t/u/b", "w/n/s/t/c", "w/n/s/l"}, {"w", "w/n", "w/n/s", "w/n/s/t", "w/n/s/t/u"}},
    {"directory with a link back", {"n/"}, "w/n",
     [](const std::string& r) { makeTree(r + "/w/n/new", {"up -> ..", "f"}); }, {"w/n/new/f"},
     {"w", "w/n", "w/n/new", "w/n/new/up"}},
    {"directory becomes a file", {"n/s/t/"}, "w/n/s",
     [](const std::string& r) { fs::remove_all(r + "/w/n/s"); writeFile(r + "/w/n/s", ""); },
     {"w/n/s"}, {"w", "w/n"}},
    {"directory of a watched one becomes a file", {"n/s/t/", "n/z/"}, "w/n/z",
     [](const std::string& r) { fs::remove_all(r + "/w/n/s"); writeFile(r + "/w/n/s", ""); },
     {"w/n/s"}, {"w", "w/n", "w/n/z"}},
    {"link leads elsewhere", {"o/f", "o/s/", "p/g", "p/t/u/", "n/l -> ../../o"}, "w/n/l",
     [](const std::string& r) { fs::create_symlink("../../p", r + "/new");
     fs::rename(r + "/new", r + "/w/n/l"); },
     {"w/n/l/g"}, {"w", "w/n", "w/n/l", "w/n/l/t", "w/n/l/t/u"}},
    // clang-format on
};

struct Windows : FileWatchRaceTest, testing::WithParamInterface<Window> {};

TEST_P(Windows, LoseNothing) {
    const Window& row = GetParam();
    makeTree(root.path(), row.before);
    waitUntilQuiet(root.path());
    fs::create_directory(root / "w");
    start(root / "w");
    fs::rename(root / "n", root / "w/n");
    bool open = true;
    updateWith([&](const std::string& path) {
        if (path == root / row.directory && std::exchange(open, false)) {
            row.change(root.path());
        }
    });
    EXPECT_FALSE(open);
    for (const std::string& path : row.heard) {
        EXPECT_TRUE(heard.count(root / path)) << path;
    }
    watch.update();
    std::set<std::string> listed;
    for (const std::string& path : row.listed) {
        listed.insert(root / path);
    }
    EXPECT_EQ(listedDirectories(watch), listed);
}

INSTANTIATE_TEST_SUITE_P(, Windows, testing::ValuesIn(windows), rowName<Window>);

/* A directory made in the window, whose own window is used in turn, and so on. */
TEST_F(FileWatchRaceTest, PassesGoOnUntilNothingIsNew) {
    makeTree(root.path(), {"w/", "n/"});
    start(root / "w");
    fs::rename(root / "n", root / "w/n");
    int depth = 0;
    updateWith([&](const std::string& path) {
        if (depth != 5) {
            fs::create_directory(path + '/' + std::to_string(++depth));
        }
    });
    EXPECT_EQ(depth, 5);
    expectWatchesExactly(watch, root / "w");
}

TEST_F(FileWatchRaceTest, HearsAgainAfterTheQueueOverflowed) {
    makeTree(root.path(), {"w/a/"});
    start(root / "w");
    const std::size_t limit = std::stoul(readFile("/proc/sys/fs/inotify/max_queued_events"));
    for (std::size_t i = 0; i <= limit / 2; ++i) {
        close(creat((root / "w/a/f").data(), 0666));
        unlink((root / "w/a/f").data());
    }
    EXPECT_TRUE(watch.update());
    EXPECT_EQ(heard.size(), limit);
    expectNothingLost(root / "w");
}

const char* const scripts[]{
    "i=0; while [ $i -lt 300 ]; do mkdir -p p$i/b/c/d; echo > p$i/b/c/d/f; i=$((i+1)); done",
    "cp -r $SOURCE copy",
    "cp -r $SOURCE copy; mv copy moved; cp -r $SOURCE copy; mv moved/1 copy/2/again; "
    "rm -rf moved; mkdir moved; mv copy moved",
    "cp -r $SOURCE copy 2> /dev/null & until mv copy moved 2> /dev/null; do :; done; mkdir copy; "
    "wait $! || true",
    "i=0; while [ $i -lt 1000 ]; do mkdir n; echo > n/f; rm -r n; i=$((i+1)); done; "
    "mkdir n; echo > n/f",
};

/* The scripts run in the watched tree, at full speed, and find one of 1,110 directories with 3,000
   files at `$SOURCE`. */
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
    const std::string command = "cd '" + root.path() + "'; " + GetParam();
    const char* const arguments[]{"sh", "-ec", command.data(), nullptr};
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(arguments),
                          environ),
              0);
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        watch.update();
    }
    EXPECT_EQ(status, 0);
    while (watch.update()) {
    }
    for (const std::string& file : filesBelow(root.path())) {
        EXPECT_TRUE(heard.count(file)) << file;
    }
    expectNothingLost(root.path());
}

INSTANTIATE_TEST_SUITE_P(, Races, testing::ValuesIn(scripts));

} // namespace
} // namespace VespermoorEngine::Test
