#include "VespermoorEditor/Utils/FileWatch.h"

#include <iterator>
#include <regex>
#include <stdexcept>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include "FileWatchState.h"
#include "Processes.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Event = FileWatch::Event;

std::vector<std::string> words(const std::string& text) {
    std::istringstream stream{text};
    return {std::istream_iterator<std::string>{stream}, {}};
}

struct FileWatchTest : testing::Test {
    /* Runs shell commands in the directory of the test. */
    void shell(const std::string& commands) {
        EXPECT_EQ(std::system(("cd '" + root.path() + "' && set -e; " + commands).data()), 0);
    }

    /* Watches a path below the directory of the test. The label of the listener, by default the
       path, must outlive the watch. */
    int add(const std::string& path, const char* const label) {
        return watch.watch((root / path).data(),
                           {Corrade::DefaultInit,
                            [this, label](const Containers::StringView entry, const Event event) {
                                note(label, entry, event);
                            }});
    }
    int add(const char* const path) { return add(path, path); }

    void note(const char* const label, const Containers::StringView path, const Event event) {
        std::ostringstream line;
        Corrade::Utility::Debug{&line} << label << event << path;
        reported += shortened(line.str());
    }

    /* Returns the new reports, as lines of `<label> Modify <path below the root>`. */
    std::string updated() {
        watch.update();
        return std::exchange(reported, {});
    }

    std::string shortened(const std::string& text) {
        return std::regex_replace(text, std::regex{root / "" + "|FileWatch::Event::"}, "");
    }

    std::string listed() {
        std::string paths;
        for (const std::string& path : listedDirectories(watch)) {
            paths += (paths.empty() ? "" : " ") + shortened(path);
        }
        return paths;
    }

    /* Each record with its directories, the root of the tree first. */
    std::vector<std::string> records() {
        std::vector<std::string> all;
        for (const FileWatch::DirectoryData& record : State::directories(watch)) {
            std::string line = std::to_string(record.refCount) + ' ' + text(record.path);
            for (const Containers::String& path : record.subPaths) {
                line += ' ' + text(path);
            }
            all.push_back(shortened(line));
        }
        return all;
    }

    TemporaryDirectory root;
    FileWatch watch;
    std::string reported;
    Messages messages;
};

struct Change {
    const char* name;
    const char* before;
    /* Paths separated by blanks. */
    const char* watched;
    const char* change;
    const char* reported;
    const char* listed;
};

const Change changes[]{
    {"file renamed, to bytes", "mkdir w; touch w/f; mkfifo w/p", "w",
     "mv w/f \"w/$(printf '\\377 x')\"", "w Remove w/f\nw Modify w/\xff x\n", "w"},
    {"watched file replaced by a rename, and its name at any depth", "mkdir -p w/a; touch w/f w/g",
     "w/f", "mv w/g w/f; : > w/f; touch w/a/f w/a/ff",
     "w/f Modify w/f\nw/f Modify w/f\nw/f Modify w/a/f\n", "w w/a"},
    {"directory renamed", "mkdir -p w/n/s w/nn/s; touch w/n/a.txt w/n/s/c.txt", "w", "mv w/n w/m",
     "w Remove w/n\nw Modify w/m/s/c.txt\nw Modify w/m/a.txt\nw Modify w/m\n",
     "w w/m w/m/s w/nn w/nn/s"},
    {"directory renamed and back", "mkdir -p w/n; touch w/n/f", "w", "mv w/n w/m; mv w/m w/n",
     "w Remove w/n\nw Modify w/m\nw Remove w/m\nw Modify w/n/f\nw Modify w/n\n", "w w/n"},
    {"record of a directory that was moved out", "mkdir -p w/d/e; touch w/d/e/f", "w",
     "mv w/d .; : > d/e/f; touch w/g", "w Remove w/d\nw Modify w/g\n", "w"},
    {"many directories deleted, looked up by hash",
     "mkdir -p w/a w/l w/keep/10 w/1/2/3/4/5/6 w/7/8/9/10/11; touch w/a/f w/10-file", "w",
     "rm -r w/1 w/7 > /dev/null; mv w/a .; touch w/keep/10/f",
     "w Remove w/1/2/3/4/5/6\nw Remove w/1/2/3/4/5\nw Remove w/1/2/3/4\nw Remove w/1/2/3\n"
     "w Remove w/1/2\nw Remove w/1\nw Remove w/7/8/9/10/11\nw Remove w/7/8/9/10\n"
     "w Remove w/7/8/9\nw Remove w/7/8\nw Remove w/7\nw Remove w/a\nw Modify w/keep/10/f\n",
     "w w/keep w/keep/10 w/l"},
    {"directory with links arrives",
     "mkdir w o n; touch o/x; ln -s . n/a; ln -s ../../o n/l; ln -s gone n/none", "w", "mv n w",
     "w Modify w/n/l/x\nw Modify w/n/none\nw Modify w/n\n", "w w/n w/n/a w/n/l"},
    {"links are watched one level deep", "mkdir -p o/s w; ln -s ../o w/l", "w",
     "ln -s ../o w/m; touch o/g o/s/h", "w Modify w/m\nw Modify w/l/g\n", "w w/l"},
    {"directory with two names", "mkdir -p w/a/s n; touch n/f; ln -s a w/l", "w",
     "mv w/a/s .; mv n w/a; touch s/f", "w Remove w/l/s\nw Modify w/l/n/f\nw Modify w/l/n\n",
     "w w/a w/a/n w/l w/l/n"},
    {"first of two names removed, after many changes elsewhere",
     "mkdir -p w/a w/b; ln -s a w/l; touch w/f", "w/f",
     "for i in $(seq 40); do : > w/b/g; : > w/g; done; rm w/l; : > w/a/f", "w/f Modify w/a/f\n",
     "w w/a w/b"},
    {"directory with two names whose root was moved away", "mkdir -p w/d; ln -s d w/l", "w",
     "mv w v; touch v/d/f", "w Modify w/l/f\n", "w w/d w/l"},
    {"directory moved into a new directory", "mkdir -p w/q/s; touch w/q/s/f", "w",
     "mkdir w/p; mv w/q w/p; touch w/p/q/g",
     /* The walk over p finds q there before the record of its removal from w is read. */
     "w Modify w/p/q/s/f\nw Modify w/p/q/g\nw Modify w/p\nw Remove w/q\nw Modify w/p/q/g\n",
     "w w/p w/p/q w/p/q/s"},
    {"directory renamed onto an empty one", "mkdir -p w/t", "w", "mkdir w/n; mv -T w/n w/t",
     "w Modify w/n\nw Remove w/n\nw Modify w/t\n", "w w/t"},
    {"root deleted", "mkdir w", "w", "rmdir w", "", "w"},
    {"tree watched before its parent, deliveries in slot order", "mkdir -p w/b w/bc", "w/bc w w/b",
     "touch w/b/f w/bc/g",
     "w Modify w/b/f\nw/b Modify w/b/f\nw/bc Modify w/bc/g\nw Modify w/bc/g\n", "w w/b w/bc"},
};

struct Changes : FileWatchTest, testing::WithParamInterface<Change> {};

TEST_P(Changes, AreReported) {
    const Change& row = GetParam();
    shell(row.before);
    const std::vector<std::string> watched = words(row.watched);
    for (const std::string& path : watched) {
        add(path.data());
    }
    EXPECT_FALSE(watch.update());
    shell(row.change);
    EXPECT_EQ(updated(), row.reported);
    EXPECT_EQ(listed(), row.listed);
    EXPECT_EQ(messages.text(), "");
}

INSTANTIATE_TEST_SUITE_P(, Changes, testing::ValuesIn(changes), rowName<Change>);

TEST_F(FileWatchTest, FailuresUseUpIds) {
    EXPECT_EQ(fcntl(State::inotifyFd(watch), F_GETFD), 0);
    EXPECT_EQ(add(""), 1);
    EXPECT_EQ(add("none"), 0);
    EXPECT_EQ(add(""), 3);
    EXPECT_EQ(messages.text(), "");
    for (const int id : {0, -1, 4, 1000, 2, 1, 1}) {
        watch.remove(id);
    }
    EXPECT_EQ(State::watches(watch).size(), 1);
    EXPECT_EQ(State::watches(watch)[0].id, 3);
    EXPECT_THAT(elements(State::watchIndices(watch)), ElementsAre(0, ~std::uint64_t{}, 0, 0));
}

TEST_F(FileWatchTest, RecordsLastUntilTheirLastWatchGoes) {
    makeTree(root.path(), {"a/b/c/", "a/f"});
    const int ids[]{add("a"), add("a/"), add("a/./b/../f"), add("a/b/c")};
    EXPECT_THAT(records(), ElementsAre("4 a a/b/c a/b"));
    EXPECT_EQ(text(State::watches(watch)[2].file), "f");
    EXPECT_EQ(text(State::watches(watch)[3].directory), root / "a/b/c");
    for (const int id : ids) {
        EXPECT_EQ(kernelWatches(watch).size(), 3);
        watch.remove(id);
    }
    EXPECT_THAT(kernelWatches(watch), IsEmpty());
    add("a/b");
    add("a/f");
    EXPECT_THAT(records(), ElementsAre("0 ", "2 a a/b/c a/b"));
}

TEST_F(FileWatchTest, ClearKeepsTheWatchesAndDropsRecords) {
    makeTree(root.path(), {"a/b/"});
    const int first = add("", "first");
    shell("for i in $(seq 200); do : > $i; done");
    watch.clear();
    int waiting = -1;
    EXPECT_EQ(ioctl(State::inotifyFd(watch), FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 0);
    EXPECT_THAT(kernelWatches(watch), IsEmpty());
    EXPECT_FALSE(watch.update());
    add("a", "second");
    shell("touch a/f");
    EXPECT_EQ(updated(), "first Modify a/f\nsecond Modify a/f\n");
    watch.remove(first);
    EXPECT_EQ(State::watches(watch).size(), 1);
    EXPECT_THAT(records(), ElementsAre("0 ", "1 a a/b"));
}

TEST_F(FileWatchTest, WatchRemovedAfterItsDeliveryWasQueued) {
    const int id = add("");
    shell("touch f");
    watch.updateLinux();
    watch.remove(id);
    EXPECT_EQ(updated(), "");
    EXPECT_EQ(messages.text(),
              "FileWatch::update(): Callback index 0 out of range of 0 elements\n");
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
    shell("touch f g");
    EXPECT_THROW(watch.update(), int);
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(watch.update());
    EXPECT_EQ(messages.text(), "");
}

/* Watches a, b and c on one directory, d on another, and two changes in the first directory. When a
   gets the first change, it takes the steps: a number removes that id, a word names an action. */
struct Delivery {
    const char* name;
    const char* steps;
    const char* reported;
    const char* messages;
};

const Delivery deliveries[]{
    {"last watch gets deliveries of the removed one", "4 2",
     "a Modify w/1\nc Modify w/1\na Modify w/2\nc Modify w/2\n",
     "Callback index 2 out of range of 2 elements\nCallback index 2 out of range of 2 elements\n"},
    {"last watch is not concerned", "2", "a Modify w/1\nc Modify w/1\na Modify w/2\nc Modify w/2\n",
     ""},
    {"watch removes itself", "4 1", "a Modify w/1\nb Modify w/1\nc Modify w/2\nb Modify w/2\n",
     "Callback index 2 out of range of 2 elements\nCallback index 2 out of range of 2 elements\n"},
    {"new watch in the slot", "4 3 add", "a Modify w/1\nb Modify w/1\na Modify w/2\nb Modify w/2\n",
     ""},
    {"nested update, then all cleared", "update clear",
     "a Modify w/1\na Modify w/3\nb Modify w/3\nc Modify w/3\nb Modify w/1\nc Modify w/1\n"
     "a Modify w/2\nb Modify w/2\nc Modify w/2\n",
     ""},
};

struct DeliveryTest : FileWatchTest, testing::WithParamInterface<Delivery> {
    void take(const std::string& step) {
        if (step == "add") {
            add("w", "new");
        } else if (step == "clear") {
            watch.clear();
        } else if (step == "update") {
            shell("touch w/3");
            EXPECT_TRUE(watch.update());
        } else {
            watch.remove(std::stoi(step));
        }
    }

    std::vector<std::string> steps = words(GetParam().steps);
};

TEST_P(DeliveryTest, GoesOnWhileACallbackChangesTheWatches) {
    makeTree(root.path(), {"w/", "o/"});
    watch.watch((root / "w").data(),
                {Corrade::DefaultInit, [this](const Containers::StringView path, Event event) {
                     note("a", path, event);
                     /* May destroy this callback and its capture, hence the reference. */
                     DeliveryTest& test = *this;
                     for (const std::string& step : std::exchange(test.steps, {})) {
                         test.take(step);
                     }
                 }});
    add("w", "b");
    add("w", "c");
    add("o", "d");
    shell("touch w/1 w/2");
    EXPECT_EQ(updated(), GetParam().reported);
    EXPECT_EQ(std::regex_replace(messages.text(), std::regex{"FileWatch::update\\(\\): "}, ""),
              GetParam().messages);
}

INSTANTIATE_TEST_SUITE_P(, DeliveryTest, testing::ValuesIn(deliveries), rowName<Delivery>);

TEST_F(FileWatchTest, RefusedDirectories) {
    shell("mkdir -p w/closed/x w/open shut/in; touch messages; chmod 777 . messages w/open shut/in;"
          "chmod 0 w/closed; chmod 701 shut");
    EXPECT_EQ(unprivileged([&] {
                  FileWatch own;
                  EXPECT_EQ(own.watch((root / "w/closed").data(), {}), 0);
                  EXPECT_EQ(own.watch((root / "w").data(), {}), 2);
                  shell("mkdir -p w/open/n/late; chmod 0 w/open/n/late");
                  EXPECT_TRUE(own.update());
                  /* The new root cannot be read, so the tree in it is no longer watched. */
                  EXPECT_EQ(own.watch((root / "shut/in").data(), {}), 3);
                  EXPECT_EQ(own.watch((root / "shut").data(), {}), 0);
                  shell("touch shut/in/f");
                  EXPECT_FALSE(own.update());
                  writeFile(root / "messages", messages.text());
                  return HasFailure() ? 1 : 0;
              }),
              0);
    const std::string denied = "Permission denied\n";
    const std::string add = "inotify_add_watch failed";
    EXPECT_EQ(
        shortened(readFile(root / "messages")),
        "FileWatch::getDirectory(): " + add + ": " + denied + "Directory doesn't exist\n" +
            "Utility::Path::list(): can't list w/closed: error 13 (Permission denied)\n" +
            "FileWatch::getDirectory(): " + add + " for sub path: " + denied +
            "Utility::Path::list(): can't list w/open/n/late: error 13 (Permission denied)\n" +
            "FileWatch::updateLinux(): " + add + " for sub folder: " + denied +
            "FileWatch::getDirectory(): " + add + ": " + denied + "Directory doesn't exist\n");
    shell("chmod 700 w/closed w/open/n/late");
}

TEST_F(FileWatchTest, AbortsWithoutAnInstance) {
    const auto exhaust = [] {
        /* The sanitizer needs a descriptor when it first looks at the stream. */
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
