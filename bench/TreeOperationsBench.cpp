// Walking, copying and deleting trees, compared with raw loops and the system's programs.

#include "VespermoorEditor/Utils/System.h"

#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "Ratios.h"
#include "Tree.h"

namespace {

using namespace VespermoorEngine;
using Bench::Tree;

const Tree& tree() {
    static const Tree made{Bench::Place::Memory, 20000};
    return made;
}

constexpr auto everything = Utility::Path::ListFlag::SkipDotAndDotDot;

void walkOurs(benchmark::State& state) {
    tree();
    std::size_t visited = 0;
    const auto visitor = [&visited](Containers::StringView) { return ++visited != 0; };
    for (auto _ : state) {
        visited = 0;
        visitPath(tree().path().data(), {Corrade::DefaultInit, visitor}, everything,
                  VisitFlag::IncludeRoot | VisitFlag::Recursive);
    }
    state.counters["entries"] = visited;
}
BENCHMARK(walkOurs)->Unit(benchmark::kMillisecond);

/* The same system calls for each entry, without a list. `path` is extended in place. */
void walkRawly(char* const path, const std::size_t size, std::size_t& visited) {
    struct stat link;
    struct stat status;
    ++visited;
    if (lstat(path, &link) != 0 || stat(path, &status) != 0 || !S_ISDIR(status.st_mode)) {
        return;
    }
    DIR* const directory = opendir(path);
    while (const dirent* const entry = readdir(directory)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            path[size] = '/';
            std::strcpy(path + size + 1, entry->d_name);
            walkRawly(path, size + 1 + std::strlen(entry->d_name), visited);
        }
    }
    closedir(directory);
    path[size] = '\0';
}

void walkRaw(benchmark::State& state) {
    tree();
    std::size_t visited = 0;
    for (auto _ : state) {
        visited = 0;
        char path[PATH_MAX];
        std::strcpy(path, tree().path().data());
        walkRawly(path, std::strlen(path), visited);
    }
    state.counters["entries"] = visited;
}
BENCHMARK(walkRaw)->Unit(benchmark::kMillisecond);

/* The same in the order that visitPath() promises, which needs a list: breadth first. */
void walkRawBreadthFirst(benchmark::State& state) {
    tree();
    std::size_t visited = 0;
    for (auto _ : state) {
        std::vector<std::string> paths{tree().path()};
        for (std::size_t i = 0; i != paths.size(); ++i) {
            struct stat link;
            struct stat status;
            if (lstat(paths[i].data(), &link) != 0 || stat(paths[i].data(), &status) != 0 ||
                !S_ISDIR(status.st_mode)) {
                continue;
            }
            DIR* const directory = opendir(paths[i].data());
            while (const dirent* const entry = readdir(directory)) {
                if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
                    paths.push_back(paths[i] + '/' + entry->d_name);
                }
            }
            closedir(directory);
        }
        visited = paths.size();
    }
    state.counters["entries"] = visited;
}
BENCHMARK(walkRawBreadthFirst)->Unit(benchmark::kMillisecond);

/* Copies of one source, each removed before the next one. */
template <class Copy>
void copyTo(benchmark::State& state, const std::string& source, Copy&& copy) {
    const std::string target = source + "-copy";
    for (auto _ : state) {
        state.SetIterationTime(Bench::seconds([&] { copy(source, target); }));
        std::filesystem::remove_all(target);
    }
}

void copyOurs(benchmark::State& state) {
    copyTo(state, tree().path(), [&](const std::string& source, const std::string& target) {
        if (!copyRecursive(source.data(), target.data())) {
            state.SkipWithError("copy failed");
        }
    });
}
BENCHMARK(copyOurs)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

void copyProgram(benchmark::State& state) {
    copyTo(state, tree().path(), [](const std::string& source, const std::string& target) {
        Bench::runProgram({"cp", "-r", source, target});
    });
}
BENCHMARK(copyProgram)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

/* A directory with one file of 2 GB. */
const Tree& largeFile() {
    static const Tree made{Bench::Place::Memory, 1, 0};
    static const bool filled = [] {
        std::ofstream file{made.path() + "/large", std::ios::binary};
        const std::string block(1 << 20, 'x');
        for (int i = 0; i != 2048; ++i) {
            file << block;
        }
        return true;
    }();
    static_cast<void>(filled);
    return made;
}

void copyLargeOurs(benchmark::State& state) {
    copyTo(state, largeFile().path(), [&](const std::string& source, const std::string& target) {
        if (!copyRecursive(source.data(), target.data())) {
            state.SkipWithError("copy failed");
        }
    });
}
BENCHMARK(copyLargeOurs)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

void copyLargeProgram(benchmark::State& state) {
    copyTo(state, largeFile().path(), [](const std::string& source, const std::string& target) {
        Bench::runProgram({"cp", "-r", source, target});
    });
}
BENCHMARK(copyLargeProgram)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

template <class Delete>
void deleteTree(benchmark::State& state, Delete&& deleteTree) {
    for (auto _ : state) {
        const Tree made{Bench::Place::Memory, 20000};
        state.SetIterationTime(Bench::seconds([&] { deleteTree(made.path()); }));
    }
}

void deleteOurs(benchmark::State& state) {
    deleteTree(state, [&](const std::string& path) {
        if (!deleteRecursive(path.data())) {
            state.SkipWithError("deletion failed");
        }
    });
}
BENCHMARK(deleteOurs)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

void deleteProgram(benchmark::State& state) {
    deleteTree(state, [](const std::string& path) { Bench::runProgram({"rm", "-rf", path}); });
}
BENCHMARK(deleteProgram)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    return Bench::run(
        argc, argv,
        {{"`visitPath`, 80,000 entries", "a raw loop, breadth first", "walkOurs",
          "walkRawBreadthFirst", 1.25},
         {"`visitPath`, 80,000 entries", "a raw loop, depth first", "walkOurs", "walkRaw"},
         {"`copyRecursive`, 20,000 directories", "`cp -r`", "copyOurs", "copyProgram", 1.05},
         {"`copyRecursive`, one file of 2 GB", "`cp -r`", "copyLargeOurs", "copyLargeProgram",
          1.05},
         {"`deleteRecursive`, 20,000 directories", "`rm -rf`", "deleteOurs", "deleteProgram",
          1.6}});
}
