#include "VespermoorEditor/Utils/FileWatch.h"

#include <algorithm>
#include <future>
#include <random>

#include <fcntl.h>
#include <unistd.h>

#include "FileWatchState.h"
#include "SystemCalls.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::chrono_literals;

Paths entriesBelow(const fs::path& path) {
    Paths paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{path}) {
        paths.insert(entry.path());
    }
    return paths;
}

/* Random changes from a seed below the directory `w` of a root, and to and from its sibling `o`.
   Changes that the system refuses, such as a move into itself, are skipped. */
class Changer {
public:
    Changer(const std::string& root, const unsigned seed)
        : watched{root + "/w"}, outside{root + "/o"}, random{seed} {
        makeTree(root, {"w/", "o/"});
    }

    /* Number of links to directories below the watched one that may still be made. */
    std::size_t links = 0;

    /* Every other change is about `near`, if given, or a directory above it. */
    void step(const fs::path& near = {}) {
        const bool close = !near.empty() && near != watched && pick(2);
        fs::path entry = close ? near : any(entriesBelow(watched));
        while (close && entry.parent_path() != watched && pick(2)) {
            entry = entry.parent_path();
        }
        const fs::path directory = close ? entry.parent_path() : any(directoriesBelow(watched));
        change(entry, directory);
    }

    std::size_t pick(const std::size_t count) {
        return std::uniform_int_distribution<std::size_t>{0, count - 1}(random);
    }

    const fs::path watched;
    const fs::path outside;

private:
    void change(const fs::path& entry, const fs::path& directory) {
        std::error_code ignored;
        const fs::path other = any(directoriesBelow(watched));
        const fs::path made = directory / name();
        switch (pick(8)) {
        case 0:
            fs::create_directories(made / name(), ignored);
            break;
        case 1:
            std::ofstream{made} << 'x';
            break;
        case 2:
            fs::rename(entry, (pick(2) ? other : outside) / name(), ignored);
            break;
        case 3:
            fs::rename(any(entriesBelow(outside)), made, ignored);
            break;
        case 4:
        case 5:
            renameat2(AT_FDCWD, entry.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
            break;
        case 6:
            if (links != 0) {
                --links;
                fs::create_directory_symlink(other, made, ignored);
            }
            break;
        default:
            links += fs::is_symlink(fs::symlink_status(entry)) ? 1 : 0;
            fs::remove_all(entry, ignored);
        }
    }

    std::string name() { return std::to_string(pick(5)); }

    fs::path any(const Paths& paths) {
        return paths.empty() ? "/missing" : *std::next(paths.begin(), pick(paths.size()));
    }

    std::mt19937 random;
};

Paths filesBelow(const std::string& root) {
    Paths files = entriesBelow(root);
    for (const std::string& directory : directoriesBelow(root)) {
        files.erase(directory);
    }
    return files;
}

/* Notes every reported path, and checks the invariants when the tree is quiet again. */
struct FileWatchRaceTest : testing::Test {
    ~FileWatchRaceTest() override { SystemCalls::aroundKernelWatch = nullptr; }

    int start(const std::string& path) {
        return watch.watch(
            path.data(), {Corrade::DefaultInit, [this](const Containers::StringView changed, auto) {
                              reported.insert(text(changed));
                          }});
    }

    /* Every new file has been reported. */
    void expectFilesReported(const std::string& path, const Paths& before) {
        while (watch.update()) {
        }
        for (const std::string& file : filesBelow(path)) {
            EXPECT_TRUE(before.count(file) || reported.count(file)) << file;
        }
    }

    /* A change in each directory is reported, under one of its names. */
    void expectChangesReported(const std::string& path) {
        watch.update();
        reported.clear();
        Paths probes;
        for (const std::string& directory : directoriesBelow(path)) {
            probes.insert(directory + "/probe");
            writeFile(directory + "/probe", "");
        }
        watch.update();
        Paths resolved;
        for (const std::string& changed : reported) {
            resolved.insert(fs::weakly_canonical(changed));
        }
        EXPECT_TRUE(std::includes(resolved.begin(), resolved.end(), probes.begin(), probes.end()));
        watch.update();
    }

    TemporaryDirectory root;
    FileWatch watch;
    std::multiset<std::string> reported;
    Messages messages;
};

struct RandomChanges {
    const char* name;
    unsigned runs;
    int steps;
    std::size_t links;
    /* Changes right before and after each kernel watch is placed. */
    bool inWindows;
    /* Changes by another thread. */
    bool concurrent;
};

const RandomChanges randomChanges[]{
    {"in every window", 100, 10, 0, true, false},
    {"by a concurrent writer", 50, 80, 0, false, true},
    {"with links", 50, 80, 3, false, false},
};

struct Random : FileWatchRaceTest, testing::WithParamInterface<RandomChanges> {
    void run(const unsigned seed) {
        const RandomChanges& row = GetParam();
        Changer changer{root / std::to_string(seed), seed};
        for (int i = 0; i != 30; ++i) {
            changer.step();
        }
        changer.links = row.links;
        int left = 0;
        if (row.inWindows) {
            SystemCalls::aroundKernelWatch = [&](const std::string& path) {
                for (; left != 0 && changer.pick(2); --left) {
                    changer.step(path);
                }
            };
        }
        left = 10;
        const int id = start(changer.watched);
        const Paths before = filesBelow(changer.watched);
        const auto write = [&] {
            for (int i = 0; i != row.steps; ++i) {
                changer.step();
                left = 10;
                if (row.inWindows || (!row.concurrent && changer.pick(4) == 0)) {
                    watch.update();
                }
            }
        };
        if (row.concurrent) {
            std::future<void> writing = std::async(std::launch::async, write);
            while (writing.wait_for(0s) != std::future_status::ready) {
                watch.update();
            }
        } else {
            write();
        }
        SystemCalls::aroundKernelWatch = nullptr;
        if (row.links == 0) {
            expectFilesReported(changer.watched, before);
            expectWatchesExactly(watch, changer.watched);
        }
        expectChangesReported(changer.watched);
        watch.remove(id);
    }
};

/* Other seeds, in a long run: --gtest_repeat=20 --gtest_shuffle --gtest_random_seed=1 */
TEST_P(Random, LosesNothing) {
    const unsigned base =
        testing::GTEST_FLAG(shuffle) ? 1000 * testing::UnitTest::GetInstance()->random_seed() : 0;
    for (unsigned seed = base; seed != base + GetParam().runs && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        run(seed);
    }
}

INSTANTIATE_TEST_SUITE_P(, Random, testing::ValuesIn(randomChanges), rowName<RandomChanges>);

TEST_F(FileWatchRaceTest, LinkThatLeadsElsewhereWhenItIsWatched) {
    makeTree(root.path(), {"w/", "o/s/", "p/t/u/", "p/g", "n/l -> ../../o"});
    start(root / "w");
    fs::rename(root / "n", root / "w/n");
    SystemCalls::aroundKernelWatch = [&](const std::string& path) {
        if (path == root / "w/n/l") {
            fs::create_symlink("../../p", root / "new");
            fs::rename(root / "new", root / "w/n/l");
            SystemCalls::aroundKernelWatch = nullptr;
        }
    };
    watch.update();
    EXPECT_TRUE(reported.count(root / "w/n/l/g"));
    EXPECT_EQ(listedDirectories(watch), (Paths{root / "w", root / "w/n", root / "w/n/l",
                                               root / "w/n/l/t", root / "w/n/l/t/u"}));
}

TEST_F(FileWatchRaceTest, DirectoryThatStayedAndGoesWhenTheQueueIsEmpty) {
    makeTree(root.path(), {"w/e/"});
    start(root / "w");
    fs::rename(root / "w/e", root / "w/x");
    fs::rename(root / "w/x", root / "w/e");
    writeFile(root / "w/e/1", "");
    SystemCalls::onEmptyRead = [&] {
        writeFile(root / "w/e/2", "");
        fs::remove_all(root / "w/e");
    };
    watch.update();
    EXPECT_EQ(reported.count(root / "w/e/1"), 2u);
    EXPECT_EQ(listedDirectories(watch), Paths{root / "w"});
}

TEST_F(FileWatchRaceTest, ReportsAgainAfterTheQueueOverflowed) {
    makeTree(root.path(), {"w/a/"});
    start(root / "w");
    const std::size_t limit = std::stoul(readFile("/proc/sys/fs/inotify/max_queued_events"));
    for (std::size_t i = 0; i <= limit / 2; ++i) {
        close(creat((root / "w/a/f").data(), 0666));
        unlink((root / "w/a/f").data());
    }
    EXPECT_TRUE(watch.update());
    EXPECT_EQ(reported.size(), limit);
    expectChangesReported(root / "w");
}

} // namespace
} // namespace VespermoorEngine::Test
