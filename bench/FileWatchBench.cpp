/* Registers a tree and drains the kernel's records, compared with raw loops and other watchers.
   fs.inotify.max_queued_events limits the number of queued records; the full drain needs 300,000.
 */

#include "VespermoorEditor/Utils/FileWatch.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

#include <dirent.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "Ratios.h"
#include "Tree.h"

namespace {

using namespace VespermoorEngine;
using Bench::Tree;

constexpr std::uint32_t mask = 0x3C2;

const Tree& tree(const std::size_t directories) {
    static std::map<std::size_t, std::unique_ptr<Tree>> trees;
    std::unique_ptr<Tree>& made = trees[directories];
    if (!made) {
        made = std::make_unique<Tree>(Bench::Place::Disk, directories);
    }
    return *made;
}

std::size_t limit(const char* const name) {
    std::size_t value = 0;
    std::ifstream{std::string{"/proc/sys/fs/inotify/"} + name} >> value;
    return value;
}

bool isAllowed(benchmark::State& state, const std::size_t watches) {
    if (limit("max_user_watches") < watches + 1000) {
        state.SkipWithError("fs.inotify.max_user_watches is too low");
        return false;
    }
    return true;
}

/* Argument for a run that only registers a tree and prints its peak memory. */
constexpr const char* registerOnly = "--register-only";

/* Peak resident size, in MB, of this process. getrusage() would include that of the parent
   process. */
double peakMemory() {
    std::ifstream status{"/proc/self/status"};
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stod(line.substr(6)) * 1024.0 / 1e6;
        }
    }
    return 0.0;
}

int registerAndPrint(const char* const path) {
    FileWatch watch;
    if (watch.watch(path, {}) == 0) {
        return 1;
    }
    std::printf("%f\n", peakMemory());
    return 0;
}

/* Peak memory, in MB, of a process that registers `path`; 0 on failure. */
double peakOfRegistration(const std::string& path) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    std::FILE* const pipe =
        popen(("'" + program + "' " + registerOnly + " '" + path + "'").data(), "r");
    double peak = 0.0;
    if (!pipe || std::fscanf(pipe, "%lf", &peak) != 1) {
        peak = 0.0;
    }
    if (pipe) {
        pclose(pipe);
    }
    return peak;
}

void registerOurs(benchmark::State& state) {
    const std::size_t directories = state.range(0);
    if (!isAllowed(state, directories)) {
        return;
    }
    const std::string& path = tree(directories).path();
    for (auto _ : state) {
        FileWatch watch;
        state.SetIterationTime(Bench::seconds([&] { watch.watch(path.data(), {}); }));
    }
    state.counters["peakMB"] = peakOfRegistration(path);
}

/* `path` is extended in place. */
void registerRawly(const int inotifyFd, char* const path, const std::size_t size) {
    DIR* const directory = opendir(path);
    while (const dirent* const entry = readdir(directory)) {
        if (entry->d_type == DT_DIR && std::strcmp(entry->d_name, ".") != 0 &&
            std::strcmp(entry->d_name, "..") != 0) {
            path[size] = '/';
            std::strcpy(path + size + 1, entry->d_name);
            inotify_add_watch(inotifyFd, path, mask);
            registerRawly(inotifyFd, path, size + 1 + std::strlen(entry->d_name));
        }
    }
    closedir(directory);
    path[size] = '\0';
}

int registerRawly(const std::string& root) {
    const int inotifyFd = inotify_init1(IN_NONBLOCK);
    char path[PATH_MAX];
    std::strcpy(path, root.data());
    inotify_add_watch(inotifyFd, path, mask);
    registerRawly(inotifyFd, path, root.size());
    return inotifyFd;
}

void registerRaw(benchmark::State& state) {
    const std::size_t directories = state.range(0);
    if (!isAllowed(state, directories)) {
        return;
    }
    const std::string& path = tree(directories).path();
    for (auto _ : state) {
        int inotifyFd = -1;
        state.SetIterationTime(Bench::seconds([&] { inotifyFd = registerRawly(path); }));
        close(inotifyFd);
    }
}

const Bench::Peer peers[]{
    {"Inotifywait", {"inotifywait", "-m", "-r", "-q", "-e", "modify,move,create,delete"}},
    {"Fswatch", {"fswatch", "-r", "-m", "inotify_monitor"}},
};

void registerPeer(benchmark::State& state, const Bench::Peer& peer) {
    const std::size_t directories = state.range(0);
    const std::string& path = tree(directories).path();
    for (auto _ : state) {
        state.SetIterationTime(Bench::establish(peer, path, directories));
    }
}

void tickOurs(benchmark::State& state) {
    FileWatch watch;
    watch.watch(tree(20000).path().data(), {});
    watch.update();
    const std::size_t before = Bench::allocationCount();
    for (auto _ : state) {
        watch.update();
    }
    state.counters["allocations"] = Bench::allocationCount() - before;
}
BENCHMARK(tickOurs);

void tickRaw(benchmark::State& state) {
    const int inotifyFd = registerRawly(tree(20000).path());
    char buffer[2720];
    for (auto _ : state) {
        benchmark::DoNotOptimize(read(inotifyFd, buffer, sizeof buffer));
    }
    close(inotifyFd);
}
BENCHMARK(tickRaw);

/* Queues about 250,000 records, or as many as the kernel keeps, over all directories. They come
   from renames back and forth, two records each, in runs of twelve or four per directory. */
std::size_t makeRecords(const bool neighbouring) {
    const std::vector<std::string>& directories = tree(20000).directories();
    const std::size_t wanted = std::min<std::size_t>(250000, limit("max_queued_events") - 1000) / 4;
    const std::size_t each = neighbouring ? 3 : 1;
    for (std::size_t i = 0; i != wanted; ++i) {
        const std::string& directory = directories[i / each * 7919 % directories.size()];
        const std::string one = directory + "/file0";
        const std::string other = directory + "/file9";
        std::rename(one.data(), other.data());
        std::rename(other.data(), one.data());
    }
    return 4 * wanted;
}

void drainOurs(benchmark::State& state) {
    FileWatch watch;
    std::size_t delivered = 0;
    watch.watch(tree(20000).path().data(),
                {Corrade::DefaultInit, [&delivered](auto, auto) { ++delivered; }});
    for (auto _ : state) {
        delivered = 0;
        const std::size_t records = makeRecords(state.range(0));
        state.SetIterationTime(Bench::seconds([&] { watch.update(); }));
        if (delivered != records) {
            state.SkipWithError("records were lost");
        }
    }
    state.counters["records"] = delivered;
}
BENCHMARK(drainOurs)->ArgName("neighbouring")->Arg(1)->Arg(0)->UseManualTime()->Iterations(1);

void drainRaw(benchmark::State& state) {
    const int inotifyFd = registerRawly(tree(20000).path());
    char buffer[2720];
    for (auto _ : state) {
        makeRecords(state.range(0));
        state.SetIterationTime(Bench::seconds([&] {
            while (read(inotifyFd, buffer, sizeof buffer) > 0) {
            }
        }));
    }
    close(inotifyFd);
}
BENCHMARK(drainRaw)->ArgName("neighbouring")->Arg(1)->Arg(0)->UseManualTime()->Iterations(1);

/* Makes the same number of deliveries to few or to many watches. */
void deliver(benchmark::State& state) {
    const std::size_t watches = state.range(0);
    FileWatch watch;
    std::size_t delivered = 0;
    for (std::size_t i = 0; i != watches; ++i) {
        watch.watch(tree(20000).path().data(),
                    {Corrade::DefaultInit, [&delivered](auto, auto) { ++delivered; }});
    }
    const std::string file = tree(20000).directories().back() + "/file0";
    const std::string other = file + "-renamed";
    for (auto _ : state) {
        for (std::size_t i = 0; i != 10000 / watches / 4; ++i) {
            std::rename(file.data(), other.data());
            std::rename(other.data(), file.data());
        }
        state.SetIterationTime(Bench::seconds([&] { watch.update(); }));
    }
    state.counters["delivered"] = delivered;
}
BENCHMARK(deliver)->ArgName("watches")->Arg(1)->Arg(100)->UseManualTime()->Iterations(20);

/* Benchmarks of growth report the processor time of update() per directory or record, so that two
   sizes can be compared as a ratio. Each benchmark makes and changes its own tree. */
void reportEach(benchmark::State& state, const double processorSeconds, const std::size_t count) {
    state.SetIterationTime(processorSeconds / double(count));
}

/* A watched root that contains a tree of the given size. */
class WatchedTree {
public:
    explicit WatchedTree(const std::size_t directories)
        : root{Bench::Place::Memory, 1, 0}, tree{Bench::Place::Memory, directories, 0} {
        moveIn();
        watch.watch(root.path().data(), {});
    }

    ~WatchedTree() { moveOut(); }

    void moveIn() { std::rename(tree.path().data(), inside().data()); }
    void moveOut() { std::rename(inside().data(), tree.path().data()); }

    /* Changes every directory of the tree while it is moved out. */
    void touch() {
        for (const std::string& directory : tree.directories()) {
            std::ofstream{directory + "/file"};
        }
    }

    double update() {
        return Bench::processorSeconds([&] { watch.update(); });
    }

    std::string inside() const { return root.path() + "/tree"; }

    /* The paths of the directories inside the watched root, parents first. */
    std::vector<std::string> directories() const {
        std::vector<std::string> all;
        for (const std::string& directory : tree.directories()) {
            all.push_back(inside() + directory.substr(tree.path().size()));
        }
        return all;
    }

private:
    Tree root;
    Tree tree;
    FileWatch watch;
};

/* Removes directories as `rm -r` does, with an update() after every `each` directories. */
void deleteTree(benchmark::State& state) {
    const std::size_t each = state.range(0);
    const std::size_t count = state.range(1);
    for (auto _ : state) {
        WatchedTree tree{count};
        std::vector<std::string> directories = tree.directories();
        std::sort(directories.rbegin(), directories.rend());
        double taken = 0.0;
        for (std::size_t i = 0; i != count; ++i) {
            rmdir(directories[i].data());
            if ((i + 1) % each == 0 || i + 1 == count) {
                taken += tree.update();
            }
        }
        reportEach(state, taken, count);
    }
}
BENCHMARK(deleteTree)
    ->ArgNames({"each", "directories"})
    ->ArgsProduct({{500, 2000}, {5000, 40000}})
    ->UseManualTime()
    ->Iterations(1);

void moveTreeOut(benchmark::State& state) {
    for (auto _ : state) {
        WatchedTree tree{std::size_t(state.range(0))};
        tree.moveOut();
        reportEach(state, tree.update(), state.range(0));
    }
}
BENCHMARK(moveTreeOut)->Arg(40000)->UseManualTime()->Iterations(1);

/* Moves a tree in after every directory in it was changed. */
void moveTreeIn(benchmark::State& state) {
    for (auto _ : state) {
        WatchedTree tree{std::size_t(state.range(0))};
        tree.moveOut();
        tree.update();
        tree.touch();
        tree.moveIn();
        reportEach(state, tree.update(), state.range(0));
    }
}
BENCHMARK(moveTreeIn)->Arg(2500)->Arg(20000)->UseManualTime()->Iterations(1);

/* Renames leaf directories, with an update() after each. */
void renameLeaf(benchmark::State& state) {
    constexpr std::size_t count = 200;
    for (auto _ : state) {
        WatchedTree tree{std::size_t(state.range(0))};
        const std::vector<std::string> directories = tree.directories();
        double taken = 0.0;
        for (std::size_t i = 0; i != count; ++i) {
            const std::size_t leaves = directories.size() * 8 / 10;
            const std::string& leaf = directories[directories.size() - 1 - i * 7919 % leaves];
            std::rename(leaf.data(), (leaf + "-renamed").data());
            taken += tree.update();
        }
        reportEach(state, taken, count);
    }
}
BENCHMARK(renameLeaf)->Arg(5000)->Arg(40000)->UseManualTime()->Iterations(1);

/* Runs `cp -r` into a watched directory, with an update() every 16 ms. */
void copyTree(benchmark::State& state) {
    const std::size_t count = state.range(0);
    for (auto _ : state) {
        const Tree source{Bench::Place::Memory, count, 0};
        const Tree root{Bench::Place::Memory, 1, 0};
        FileWatch watch;
        watch.watch(root.path().data(), {});
        Bench::Program copy{{"cp", "-r", source.path(), root.path() + "/copy"}};
        double taken = 0.0;
        double worst = 0.0;
        for (bool running = true; running;) {
            running = copy.isRunning();
            const double tick = Bench::processorSeconds([&] { watch.update(); });
            taken += tick;
            worst = std::max(worst, tick);
            usleep(16000);
        }
        if (watch.directoryCount() != count + 1) {
            state.SkipWithError("directories were lost");
        }
        reportEach(state, taken, count);
        state.counters["worstTickMs"] = worst * 1e3;
    }
}
BENCHMARK(copyTree)->Arg(5000)->Arg(20000)->UseManualTime()->Iterations(1);

/* Records of directories that are far from each other. */
void scatteredRecord(benchmark::State& state) {
    const std::size_t directories = state.range(0);
    if (!isAllowed(state, directories)) {
        return;
    }
    constexpr std::size_t renames = 5000;
    const std::vector<std::string>& paths = tree(directories).directories();
    FileWatch watch;
    watch.watch(tree(directories).path().data(), {});
    for (auto _ : state) {
        for (std::size_t i = 0; i != renames; ++i) {
            const std::string file = paths[i * 7919 % paths.size()] + "/file0";
            std::rename(file.data(), (file + "-").data());
            std::rename((file + "-").data(), file.data());
        }
        const double taken = Bench::processorSeconds([&] { watch.update(); });
        reportEach(state, taken, 2 * renames);
    }
}
BENCHMARK(scatteredRecord)->Arg(10000)->Arg(100000)->UseManualTime()->Iterations(1);

/* As many trees as directories, each with a record of its own. */
void separateTrees(benchmark::State& state) {
    const std::size_t count = state.range(0);
    const Tree root{Bench::Place::Memory, 1, 0};
    std::vector<std::string> paths;
    for (std::size_t i = 0; i != count; ++i) {
        paths.push_back(root.path() + "/tree" + std::to_string(i));
        std::filesystem::create_directory(paths.back());
    }
    for (auto _ : state) {
        FileWatch watch;
        const double registered = Bench::processorSeconds([&] {
            for (const std::string& path : paths) {
                watch.watch(path.data(), {});
            }
        });
        for (const std::string& path : paths) {
            std::ofstream{path + "/file"};
        }
        reportEach(state, Bench::processorSeconds([&] { watch.update(); }), count);
        state.counters["registerUs"] = registered / double(count) * 1e6;
        for (const std::string& path : paths) {
            unlink((path + "/file").data());
        }
    }
}
BENCHMARK(separateTrees)->Arg(8000)->UseManualTime()->Iterations(1);

void addRegistration(const char* const name, void (*const run)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, run)
        ->Arg(20000)
        ->Arg(100000)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], registerOnly) == 0) {
        return registerAndPrint(argv[2]);
    }
    std::vector<Bench::Ratio> ratios{
        {"`FileWatch`, 20,000 directories", "a raw loop", "registerOurs/20000", "registerRaw/20000",
         1.5},
        {"`FileWatch`, 100,000 directories", "a raw loop", "registerOurs/100000",
         "registerRaw/100000", 1.5},
        {"`FileWatch`, a quiet tick", "one `read`", "tickOurs", "tickRaw"},
        {"`FileWatch`, neighbouring records delivered", "a raw drain", "drainOurs/neighbouring:1",
         "drainRaw/neighbouring:1", 2.0},
        {"`FileWatch`, scattered records delivered", "a raw drain", "drainOurs/neighbouring:0",
         "drainRaw/neighbouring:0", 2.6},
        {"`FileWatch`, deletion of 40,000 directories by 500", "moving them out",
         "deleteTree/each:500/directories:40000", "moveTreeOut/40000", 4.5},
        {"`FileWatch`, deletion of 40,000 directories by 500, each", "of 5,000",
         "deleteTree/each:500/directories:40000", "deleteTree/each:500/directories:5000", 3.0},
        {"`FileWatch`, deletion of 40,000 directories by 2,000, each", "of 5,000",
         "deleteTree/each:2000/directories:40000", "deleteTree/each:2000/directories:5000", 2.5},
        {"`FileWatch`, rename of a leaf of 40,000 directories", "of 5,000", "renameLeaf/40000",
         "renameLeaf/5000", 3.0},
        {"`FileWatch`, arrival of 20,000 changed directories, each", "of 2,500", "moveTreeIn/20000",
         "moveTreeIn/2500", 1.5},
        {"`FileWatch`, `cp -r` of 20,000 directories beside a tick, each", "of 5,000",
         "copyTree/20000", "copyTree/5000", 1.5},
        {"`FileWatch`, `cp -r` of 20,000 directories", "worst tick in ms", "copyTree/20000", "",
         0.0, "worstTickMs"},
        {"`FileWatch`, scattered record in 100,000 directories", "in 10,000",
         "scatteredRecord/100000", "scatteredRecord/10000"},
        {"`FileWatch`, delivery to 100 watches", "as many to one", "deliver/watches:100",
         "deliver/watches:1", 1.0},
    };
    addRegistration("registerOurs", registerOurs);
    addRegistration("registerRaw", registerRaw);
    for (const Bench::Peer& peer : peers) {
        if (Bench::isInstalled(peer.arguments[0])) {
            const std::string name = "register" + peer.name;
            benchmark::RegisterBenchmark(
                name.data(), [&peer](benchmark::State& state) { registerPeer(state, peer); })
                ->Arg(20000)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime()
                ->Iterations(1);
            ratios.push_back({"`FileWatch`, 20,000 directories", peer.arguments[0],
                              "registerOurs/20000", name + "/20000", 1.0});
        }
    }
    return Bench::run(argc, argv, ratios);
}
