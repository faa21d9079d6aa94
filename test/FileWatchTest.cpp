#include "VespermoorEditor/Utils/FileWatch.h"

#include <regex>
#include <stdexcept>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "FileWatchState.h"
#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Event = FileWatch::Event;

/* Makes an empty file, which is one change where writing to it would be a second one. */
void touch(const std::string& path) {
    close(creat(path.data(), 0666));
}

std::vector<std::string> below(const std::string& root, const std::set<std::string>& paths) {
    std::vector<std::string> names;
    for (const std::string& path : paths) {
        names.push_back(path.substr(root.size() + 1));
    }
    return names;
}

struct Change {
    const char* name;
    std::vector<std::string> before;
    /* The label of each listener is its path. */
    std::vector<const char*> watched;
    void (*change)(const std::string& root);
    std::vector<std::string> heard;
    std::vector<std::string> directories;
};

void PrintTo(const Change& row, std::ostream* const out) {
    *out << row.name;
}

const Change changes[]{
    // clang-format off
    {"written to, at any depth", {"w/a/b/f"}, {"w"},
     [](const std::string& r) { EXPECT_EQ(truncate((r + "/w/a/b/f").data(), 0), 0); },
     {"w Modify w/a/b/f"}, {"w", "w/a", "w/a/b"}},
    {"file renamed, to bytes", {"w/f"}, {"w"},
     [](const std::string& r) { fs::rename(r + "/w/f", r + "/w/\xff \n'"); },
     {"w Remove w/f", "w Modify w/\xff \n'"}, {"w"}},
    {"watched file replaced by a rename", {"w/f", "w/g"}, {"w/f"}, [](const std::string& r) {
     fs::rename(r + "/w/g", r + "/w/f"); EXPECT_EQ(truncate((r + "/w/f").data(), 0), 0); },
     {"w/f Modify w/f", "w/f Modify w/f"}, {"w"}},
    {"watched file's name at any depth", {"w/f", "w/a/"}, {"w/f"}, [](const std::string& r) {
     touch(r + "/w/a/f"); touch(r + "/w/a/ff"); }, {"w/f Modify w/a/f"}, {"w", "w/a"}},
    {"directory arrives with content", {"w/", "n/a.txt", "n/b.txt", "n/s/c.txt"}, {"w"},
     [](const std::string& r) { fs::rename(r + "/n", r + "/w/n"); },
     {"w Modify w/n/s/c.txt", "w Modify w/n/b.txt", "w Modify w/n/a.txt", "w Modify w/n"},
     {"w", "w/n", "w/n/s"}},
    {"directory renamed", {"w/n/a.txt", "w/n/s/c.txt", "w/nn/s/"}, {"w"},
     [](const std::string& r) { fs::rename(r + "/w/n", r + "/w/m"); },
     {"w Remove w/n", "w Modify w/m/s/c.txt", "w Modify w/m/a.txt", "w Modify w/m"},
     {"w", "w/m", "w/m/s", "w/nn", "w/nn/s"}},
    {"directory renamed and back", {"w/n/f"}, {"w"}, [](const std::string& r) {
     fs::rename(r + "/w/n", r + "/w/m"); fs::rename(r + "/w/m", r + "/w/n"); },
     {"w Remove w/n", "w Modify w/m", "w Remove w/m", "w Modify w/n/f", "w Modify w/n"},
     {"w", "w/n"}},
    {"directory comes and goes", {"w/"}, {"w"}, [](const std::string& r) {
     fs::create_directory(r + "/w/n"); fs::remove(r + "/w/n"); }, {"w Modify w/n", "w Remove w/n"},
     {"w"}},
    {"directory deleted", {"w/a/b/c/", "w/d/"}, {"w", "w/a"},
     [](const std::string& r) { fs::remove_all(r + "/w/a"); },
     {"w Remove w/a/b/c", "w/a Remove w/a/b/c", "w Remove w/a/b", "w/a Remove w/a/b",
     "w Remove w/a"}, {"w", "w/d"}},
    {"directory with links arrives",
     {"w/", "o/x", "n/a -> .", "n/b -> .", "n/l -> ../../o", "n/none -> gone"}, {"w"},
     [](const std::string& r) { fs::rename(r + "/n", r + "/w/n"); },
     {"w Modify w/n/l/x", "w Modify w/n/none", "w Modify w/n"},
     {"w", "w/n", "w/n/a", "w/n/b", "w/n/l"}},
    {"links are heard one level deep", {"o/s/f", "w/l -> ../o"}, {"w"}, [](const std::string& r) {
     fs::create_symlink(r + "/o", r + "/w/m"); touch(r + "/o/g"); touch(r + "/o/s/h"); },
     {"w Modify w/m", "w Modify w/l/g"}, {"w", "w/l"}},
    {"directory of two names", {"w/a/s/", "w/l -> a", "n/f"}, {"w"}, [](const std::string& r) {
     fs::rename(r + "/w/a/s", r + "/s"); fs::rename(r + "/n", r + "/w/a/n"); touch(r + "/s/f"); },
     {"w Remove w/l/s", "w Modify w/l/n/f", "w Modify w/l/n"},
     {"w", "w/a", "w/a/n", "w/l", "w/l/n"}},
    {"moved away by way of a new directory", {"w/q/s/f"}, {"w"}, [](const std::string& r) {
     fs::create_directory(r + "/w/p"); fs::rename(r + "/w/q", r + "/w/p/q");
     touch(r + "/w/p/q/g"); },
     /* The walk over p finds q in its place before the record of its leaving comes up. */
     {"w Modify w/p/q/s/f", "w Modify w/p/q/g", "w Modify w/p", "w Remove w/q", "w Modify w/p/q/g"},
     {"w", "w/p", "w/p/q", "w/p/q/s"}},
    {"root deleted", {"w/"}, {"w"}, [](const std::string& r) { fs::remove(r + "/w"); }, {}, {"w"}},
    {"watches in the order of their slots", {"w/b/", "w/bc/"}, {"w/bc", "w", "w/b", "w"},
     [](const std::string& r) { touch(r + "/w/b/f"); touch(r + "/w/bc/g"); },
     {"w Modify w/b/f", "w/b Modify w/b/f", "w Modify w/b/f",
     "w/bc Modify w/bc/g", "w Modify w/bc/g", "w Modify w/bc/g"}, {"w", "w/b", "w/bc"}},
    // clang-format on
};

class Changes : public testing::TestWithParam<Change> {};

TEST_P(Changes, AreHeard) {
    const Change& row = GetParam();
    const TemporaryDirectory root;
    makeTree(root.path(), row.before);
    Messages messages;
    FileWatch watch;
    Heard heard{root};
    for (const char* const path : row.watched) {
        EXPECT_GT(watch.watch((root / path).data(), heard.listener(path)), 0);
    }
    EXPECT_FALSE(watch.update());
    row.change(root.path());
    EXPECT_EQ(watch.update(), !row.heard.empty());
    EXPECT_THAT(heard.take(), ElementsAreArray(row.heard));
    EXPECT_THAT(below(root.path(), listedDirectories(watch)), ElementsAreArray(row.directories));
    EXPECT_EQ(watch.directoryCount(), row.directories.size());
    EXPECT_FALSE(watch.update());
    EXPECT_EQ(messages.text(), "");
}

INSTANTIATE_TEST_SUITE_P(, Changes, testing::ValuesIn(changes), rowName<Change>);

struct FileWatchTest : testing::Test {
    int add(const std::string& path, const char* const label = "") {
        return watch.watch({path.data(), path.size()}, heard.listener(label));
    }

    /* Each record with what it watches by which kernel watch, the root of the tree first. */
    std::vector<std::string> records() {
        std::vector<std::string> all;
        for (const FileWatch::DirectoryData& record : State::directories(watch)) {
            std::ostringstream line;
            line << text(record.path) << ", " << record.refCount << " watches, "
                 << record.watchDescriptor;
            for (std::size_t i = 0; i != record.subPaths.size(); ++i) {
                line << ", " << text(record.subPaths[i]) << ' ' << record.subWatchDescriptors[i];
            }
            all.push_back(std::regex_replace(line.str(), std::regex{root / ""}, ""));
        }
        return all;
    }

    TemporaryDirectory root;
    FileWatch watch;
    Heard heard{root};
    Messages messages;
};

TEST_F(FileWatchTest, EventsPrintTheirNames) {
    std::ostringstream out;
    Corrade::Utility::Debug{&out} << Event::Add << Event::Remove << Event::Modify
                                  << Event::RenameOld << Event::RenameNew << Event(5);
    EXPECT_EQ(out.str(), "FileWatch::Event::Add FileWatch::Event::Remove FileWatch::Event::Modify "
                         "FileWatch::Event::RenameOld FileWatch::Event::RenameNew "
                         "FileWatch::Event::Invalid()\n");
}

TEST_F(FileWatchTest, FailuresUseUpIds) {
    EXPECT_FALSE(watch.update());
    EXPECT_EQ(fcntl(State::inotifyFd(watch), F_GETFD), 0);
    EXPECT_EQ(add(root.path()), 1);
    EXPECT_EQ(add(root / "none"), 0);
    EXPECT_EQ(add(root.path()), 3);
    EXPECT_EQ(messages.text(), "");
    EXPECT_THAT(elements(State::watchIndices(watch)), ElementsAre(0, 0, 0, 1));
    for (const int id : {0, -1, 4, 1000, 2}) {
        watch.remove(id);
    }
    EXPECT_EQ(State::watches(watch).size(), 2);
    watch.remove(1);
    watch.remove(1);
    EXPECT_EQ(State::watches(watch).size(), 1);
    EXPECT_EQ(State::watches(watch)[0].id, 3);
    EXPECT_THAT(elements(State::watchIndices(watch)), ElementsAre(0, ~std::uint64_t{}, 0, 0));
}

TEST_F(FileWatchTest, RemovalMovesTheLastWatchIntoTheSlot) {
    makeTree(root.path(), {"a/f", "b/g"});
    const int first = add(root / "a", "first");
    const int second = add(root / "a/f", "second");
    const int third = add(root / "b/g", "third");
    watch.remove(first);
    EXPECT_THAT(elements(State::watchIndices(watch)), ElementsAre(0, ~std::uint64_t{}, 1, 0));
    fs::remove(root / "b/g");
    EXPECT_TRUE(watch.update());
    EXPECT_THAT(heard.take(), ElementsAre("third Remove b/g"));
    watch.remove(third);
    EXPECT_THAT(kernelWatches(watch), ElementsAre(1));
    watch.remove(second);
    EXPECT_EQ(State::watches(watch).size(), 0);
    EXPECT_THAT(kernelWatches(watch), IsEmpty());
}

TEST_F(FileWatchTest, OneTreeIsOneRecordUntilItsLastWatchGoes) {
    makeTree(root.path(), {"a/b/c/", "a/f"});
    const int ids[]{add(root / "a"), add(root / "a/"), add(root / "a/./b/../f"),
                    add(root / "a/b/c")};
    EXPECT_THAT(records(), ElementsAre("a, 4 watches, 1, a/b/c 3, a/b 2"));
    EXPECT_EQ(text(State::watches(watch)[2].file), "f");
    EXPECT_EQ(text(State::watches(watch)[3].directory), root / "a/b/c");
    for (const int id : ids) {
        EXPECT_THAT(kernelWatches(watch), ElementsAre(1, 2, 3));
        watch.remove(id);
    }
    EXPECT_THAT(kernelWatches(watch), IsEmpty());
    add(root / "a/b");
    EXPECT_THAT(records(), ElementsAre(", 0 watches, -1", "a/b, 1 watches, 4, a/b/c 5"));
}

TEST_F(FileWatchTest, AParentTakesTheRecordOver) {
    makeTree(root.path(), {"a/b/", "a/c/d/"});
    add(root / "a/b", "b");
    add(root / "a/c", "c");
    add(root / "a", "a");
    EXPECT_THAT(records(), ElementsAre("a, 2 watches, 4, a/c/d 3, a/c 2, a/b 5",
                                       "a/c, 1 watches, 2, a/c/d 3"));
    EXPECT_EQ(State::watches(watch)[0].directoryIndex, 0);
    EXPECT_EQ(text(State::watches(watch)[0].directory), root / "a/b");
    touch(root / "a/b/f");
    touch(root / "a/c/d/f");
    watch.update();
    EXPECT_THAT(heard.take(), ElementsAre("b Modify a/b/f", "a Modify a/b/f", "c Modify a/c/d/f",
                                          "a Modify a/c/d/f"));
}

TEST_F(FileWatchTest, ClearKeepsTheWatchesAndDropsWhatWaits) {
    makeTree(root.path(), {"a/b/"});
    const int first = add(root.path(), "first");
    for (int i = 0; i != 200; ++i) {
        touch(root / std::to_string(i));
    }
    int waiting = 0;
    EXPECT_EQ(ioctl(State::inotifyFd(watch), FIONREAD, &waiting), 0);
    EXPECT_GT(waiting, 2720);
    watch.clear();
    EXPECT_EQ(ioctl(State::inotifyFd(watch), FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 0);
    touch(root / "g");
    EXPECT_THAT(kernelWatches(watch), IsEmpty());
    EXPECT_FALSE(watch.update());
    add(root / "a", "second");
    touch(root / "a/f");
    EXPECT_TRUE(watch.update());
    EXPECT_THAT(heard.take(), ElementsAre("first Modify a/f", "second Modify a/f"));
    watch.remove(first);
    EXPECT_EQ(State::watches(watch).size(), 1);
    EXPECT_THAT(records(), ElementsAre(", 0 watches, -1", "a, 1 watches, 4, a/b 5"));
}

TEST_F(FileWatchTest, DanglingLinkBelowIsRefusedOnce) {
    makeTree(root.path(), {"r/a/none -> gone", "r/a/b/"});
    EXPECT_EQ(add(root / "r"), 1);
    EXPECT_EQ(messages.text(), "FileWatch::getDirectory(): inotify_add_watch failed for sub path: "
                               "No such file or directory\n");
    EXPECT_THAT(records(), ElementsAre("r, 1 watches, 1, r/a/b 3, r/a 2"));
}

/* A string of Corrade's that is short lies in the array of paths itself and moves when that grows,
   here between two records of one directory. */
TEST_F(FileWatchTest, ShortPathsMoveWithTheirList) {
    std::string path = fs::temp_directory_path() / "XXXXXX";
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    std::set<std::string> changed;
    fs::create_directory(path + "/a");
    watch.watch(path.data(),
                {Corrade::DefaultInit,
                 [&changed](Containers::StringView entry, Event) { changed.insert(text(entry)); }});
    std::set<std::string> made;
    for (int i = 0; i != 50; ++i) {
        made.insert(path + "/a/d" + std::to_string(i));
        fs::create_directory(path + "/a/d" + std::to_string(i));
    }
    EXPECT_TRUE(watch.update());
    EXPECT_EQ(changed, made);
    fs::remove_all(path);
}

TEST_F(FileWatchTest, ExceptionsOfCallbacks) {
    int calls = 0;
    for (const bool standard : {true, false}) {
        watch.watch(root.path().data(),
                    {Corrade::DefaultInit, [&calls, standard](Containers::StringView, Event) {
                         ++calls;
                         standard ? throw std::runtime_error{"listener"} : throw 7;
                     }});
    }
    touch(root / "f");
    touch(root / "g");
    EXPECT_THROW(watch.update(), int);
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(watch.update());
    watch.remove(2);
    touch(root / "h");
    touch(root / "i");
    EXPECT_TRUE(watch.update());
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(messages.text(), "");
}

/* Watches a, b and c on one directory, d on another, and two changes in the first. The callback of
   a acts when it hears of the first one, so entries for all slots are still under way. */
struct Delivery {
    const char* name;
    void (*act)(struct DeliveryTest& test);
    std::vector<std::string> heard;
    std::string messages;
};

void PrintTo(const Delivery& row, std::ostream* const out) {
    *out << row.name;
}

struct DeliveryTest : FileWatchTest, testing::WithParamInterface<Delivery> {
    DeliveryTest() {
        makeTree(root.path(), {"w/", "o/", "w/2"});
        watch.watch((root / "w").data(),
                    {Corrade::DefaultInit, [this](const Containers::StringView path, Event event) {
                         heard.note("a", path, event);
                         if (!std::exchange(acted, true)) {
                             /* May destroy this callback. */
                             GetParam().act(*this);
                         }
                     }});
        add(root / "w", "b");
        add(root / "w", "c");
        add(root / "o", "d");
    }

    void remove(const std::initializer_list<int> ids) {
        for (const int id : ids) {
            watch.remove(id);
        }
    }

    bool acted = false;
};

const std::string outOfRange(const int index, const int size) {
    return "FileWatch::update(): Callback index " + std::to_string(index) + " out of range of " +
           std::to_string(size) + " elements\n";
}

const Delivery deliveries[]{
    // clang-format off
    {"last one takes the entries", [](DeliveryTest& t) { t.remove({4, 2}); },
     {"a Modify w/1", "c Modify w/1", "a Remove w/2", "c Remove w/2"},
     outOfRange(2, 2) + outOfRange(2, 2)},
    {"last one is not concerned", [](DeliveryTest& t) { t.remove({2}); },
     {"a Modify w/1", "c Modify w/1", "a Remove w/2", "c Remove w/2"}, ""},
    {"itself removed", [](DeliveryTest& t) { t.remove({4, 1}); },
     {"a Modify w/1", "b Modify w/1", "c Remove w/2", "b Remove w/2"},
     outOfRange(2, 2) + outOfRange(2, 2)},
    {"all removed", [](DeliveryTest& t) { t.remove({1, 2, 3, 4}); }, {"a Modify w/1"},
     outOfRange(1, 0) + outOfRange(2, 0) + outOfRange(0, 0) + outOfRange(1, 0) + outOfRange(2, 0)},
    {"new watch in the slot", [](DeliveryTest& t) { t.remove({4, 3}); t.add(t.root / "w", "new"); },
     {"a Modify w/1", "b Modify w/1", "a Remove w/2", "b Remove w/2"}, ""},
    {"all cleared", [](DeliveryTest& t) { t.watch.clear(); },
     {"a Modify w/1", "b Modify w/1", "c Modify w/1", "a Remove w/2", "b Remove w/2",
      "c Remove w/2"}, ""},
    {"nested update", [](DeliveryTest& t) { touch(t.root / "w/3"); EXPECT_TRUE(t.watch.update());
     EXPECT_FALSE(t.watch.update()); },
     {"a Modify w/1", "a Modify w/3", "b Modify w/3", "c Modify w/3", "b Modify w/1",
      "c Modify w/1", "a Remove w/2", "b Remove w/2", "c Remove w/2"}, ""},
    // clang-format on
};

TEST_P(DeliveryTest, GoesOnWhileACallbackChangesTheWatches) {
    touch(root / "w/1");
    fs::remove(root / "w/2");
    EXPECT_TRUE(watch.update());
    EXPECT_THAT(heard.take(), ElementsAreArray(GetParam().heard));
    EXPECT_EQ(messages.text(), GetParam().messages);
    EXPECT_EQ(State::pendingCallbacks(watch).size(), 0);
}

INSTANTIATE_TEST_SUITE_P(, DeliveryTest, testing::ValuesIn(deliveries), rowName<Delivery>);

TEST_F(FileWatchTest, RefusedDirectories) {
    makeTree(root.path(), {"w/closed/x", "w/open/", "shut/in/"});
    fs::permissions(root.path(), fs::perms::all);
    fs::permissions(root / "w/closed", fs::perms::none);
    fs::permissions(root / "w/open", fs::perms::all);
    fs::permissions(root / "shut", fs::perms::owner_all | fs::perms::others_exec);
    fs::permissions(root / "shut/in", fs::perms::all);
    const std::string errors = root / "errors";
    writeFile(errors, "");
    fs::permissions(errors, fs::perms::all);
    EXPECT_EQ(unprivileged([&] {
                  FileWatch own;
                  Messages heardMessages;
                  const bool refused = own.watch((root / "w/closed").data(), {}) == 0;
                  const bool covered = own.watch((root / "w").data(), {}) == 2;
                  touch(root / "w/open/f");
                  const bool open = own.update();
                  /* The arrival of a directory that is closed already. */
                  fs::create_directory(root / "w/open/n");
                  fs::create_directory(root / "w/open/n/late");
                  fs::permissions(root / "w/open/n/late", fs::perms::none);
                  own.update();
                  /* A tree that is to grow beyond what may be read is not watched any more. */
                  own.watch((root / "shut/in").data(), {});
                  own.watch((root / "shut").data(), {});
                  touch(root / "shut/in/f");
                  const bool deaf = !own.update();
                  writeFile(errors, heardMessages.text());
                  return refused + 2 * covered + 4 * open + 8 * deaf;
              }),
              15);
    EXPECT_EQ(readFile(errors),
              "FileWatch::getDirectory(): inotify_add_watch failed: Permission denied\n"
              "Directory doesn't exist\n"
              "Utility::Path::list(): can't list " +
                  (root / "w/closed") +
                  ": error 13 (Permission denied)\n"
                  "FileWatch::getDirectory(): inotify_add_watch failed for sub path: Permission "
                  "denied\n"
                  "Utility::Path::list(): can't list " +
                  (root / "w/open/n/late") +
                  ": error 13 (Permission denied)\n"
                  "FileWatch::updateLinux(): inotify_add_watch failed for sub folder: Permission "
                  "denied\n"
                  "FileWatch::getDirectory(): inotify_add_watch failed: Permission denied\n"
                  "Directory doesn't exist\n");
    fs::permissions(root / "w/closed", fs::perms::all);
    fs::permissions(root / "w/open/n/late", fs::perms::all);
}

using FileWatchDeathTest = FileWatchTest;

TEST_F(FileWatchDeathTest, AbortsWithoutAnInstance) {
    const auto exhaust = [] {
        /* The sanitizer needs a descriptor the first time that it looks at the stream. */
        Corrade::Utility::Error{Corrade::Utility::Error::defaultOutput()} << "exhausted:";
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        FileWatch refused;
    };
    EXPECT_DEATH(exhaust(),
                 "^exhausted:\nFileWatch::FileWatch\\(\\): Failed to initialize inotify\n$");
}

} // namespace
} // namespace VespermoorEngine::Test
