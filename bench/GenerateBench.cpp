/* Makes ten thousand files from one manifest, compared with the least work that a plain tool must
   do: read every input once, and write every file to a temporary file and rename it, in directories
   that exist. This baseline neither parses nor renders, and ignores links and old files.

   Projects are kept on a disk, and writing to it takes most of the time. In memory, the 500,000
   renderings do. */

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Containers/StringStl.h>
#include <benchmark/benchmark.h>

#include "Files.h"
#include "Generator.h"
#include "Ratios.h"
#include "Tree.h"

namespace {

namespace fs = std::filesystem;
using VespermoorEngine::Bench::Place;
using VespermoorEngine::Host::Generator;

constexpr int outputCount = 10'000;
constexpr int dataCount = 10;
constexpr int templateCount = 20;

/* A manifest with its data and templates, in a directory that is removed when the program ends. */
struct Project {
    explicit Project(const Place place) : directory{place, 1, 0} {
        std::string manifest = "{\"outputs\": [";
        for (int i = 0; i != outputCount; ++i) {
            manifest += std::string{i == 0 ? "" : ","} + "{\"file\": \"" + outputName(i) +
                        "\", \"data\": [\"data" + std::to_string(i % dataCount) +
                        ".json\"], \"template\": \"template" + std::to_string(i % templateCount) +
                        "\", \"each\": \"/items\"}";
        }
        write("manifest.json", manifest + "]}");
        for (int i = 0; i != dataCount; ++i) {
            write("data" + std::to_string(i) + ".json", data(i));
        }
        for (int i = 0; i != templateCount; ++i) {
            write("template" + std::to_string(i),
                  "Item {{ id }} of template " + std::to_string(i) +
                      ": {{ name }}{{ if visible }}, visible{{ end }}\n");
        }
    }

    static std::string outputName(const int i) { return "output" + std::to_string(i) + ".txt"; }

    static std::string data(const int i) {
        std::string json = "{\"items\": [";
        for (int item = 0; item != 50; ++item) {
            json += std::string{item == 0 ? "" : ","} + "{\"id\": \"" + std::to_string(item) +
                    "\", \"name\": \"name " + std::to_string(i) +
                    "\", \"visible\": " + (item % 2 == 0 ? "true" : "false") + "}";
        }
        return json + "]}";
    }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream{path(name)} << content;
    }

    std::string path(const std::string& name) const { return directory.path() + "/" + name; }

    void removeOutputs() const {
        for (int i = 0; i != outputCount; ++i) {
            fs::remove(path(outputName(i)));
        }
    }

    const VespermoorEngine::Bench::Tree directory;
};

const Project& projectOf(const benchmark::State& state) {
    static const Project onDisk{Place::Disk};
    static const Project inMemory{Place::Memory};
    return state.range(0) ? onDisk : inMemory;
}

void generateAll(benchmark::State& state) {
    const Project& project = projectOf(state);
    for (auto _ : state) {
        state.PauseTiming();
        project.removeOutputs();
        state.ResumeTiming();
        Generator generator{project.path("manifest.json")};
        if (generator.update(Generator::Mode::Write).changes.size() != outputCount) {
            state.SkipWithError("not all files were made");
        }
    }
    state.counters["peakMemoryKiB"] = double(VespermoorEngine::Bench::peakMemory());
}
BENCHMARK(generateAll)->ArgName("disk")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

/* A build step with nothing to do. */
void generateNothing(benchmark::State& state) {
    const Project& project = projectOf(state);
    Generator{project.path("manifest.json")}.update(Generator::Mode::Write);
    for (auto _ : state) {
        Generator generator{project.path("manifest.json")};
        if (!generator.update(Generator::Mode::Write).changes.empty()) {
            state.SkipWithError("a file was made again");
        }
    }
}
BENCHMARK(generateNothing)->ArgName("disk")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

bool writeAndRename(const std::string& path, const std::string& content) {
    std::string temporary = path + "-XXXXXX";
    const int file = mkostemp(temporary.data(), O_CLOEXEC);
    return file != -1 && write(file, content.data(), content.size()) == ssize_t(content.size()) &&
           fchmod(file, 0644) == 0 && close(file) == 0 &&
           std::rename(temporary.data(), path.data()) == 0;
}

void readAndWrite(benchmark::State& state) {
    const Project& project = projectOf(state);
    Generator{project.path("manifest.json")}.update(Generator::Mode::Write);
    std::map<std::string, std::string> outputs;
    for (int i = 0; i != outputCount; ++i) {
        const std::string path = project.path(Project::outputName(i));
        outputs[path] = std::string{VespermoorEngine::Host::readFile(path)};
    }
    for (auto _ : state) {
        state.PauseTiming();
        project.removeOutputs();
        state.ResumeTiming();
        benchmark::DoNotOptimize(VespermoorEngine::Host::readFile(project.path("manifest.json")));
        for (int i = 0; i != dataCount; ++i) {
            benchmark::DoNotOptimize(VespermoorEngine::Host::readFile(
                project.path("data" + std::to_string(i) + ".json")));
        }
        for (int i = 0; i != templateCount; ++i) {
            benchmark::DoNotOptimize(
                VespermoorEngine::Host::readFile(project.path("template" + std::to_string(i))));
        }
        for (const auto& [path, content] : outputs) {
            if (!writeAndRename(path, content)) {
                state.SkipWithError("a file was not written");
            }
        }
    }
}
BENCHMARK(readAndWrite)->ArgName("disk")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"`generate`, 10,000 files on a disk", "reading and writing them", "generateAll/disk:1",
          "readAndWrite/disk:1", 1.5},
         {"`generate`, 10,000 current files on a disk", "reading and writing them",
          "generateNothing/disk:1", "readAndWrite/disk:1"},
         {"`generate`, 10,000 files in memory", "reading and writing them", "generateAll/disk:0",
          "readAndWrite/disk:0"},
         {"`generate`, 10,000 current files in memory", "reading and writing them",
          "generateNothing/disk:0", "readAndWrite/disk:0"}});
}
