/* Reads and prints a scene document of about 5 MB, compared with direct use of RapidJSON and with
   another library. Also compares the memory of the program with that of jq, for a document of
   200 MB. */

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include <unistd.h>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <benchmark/benchmark.h>

#include "Ratios.h"
#include "Tree.h"

#ifdef VESPERMOOR_WITH_NLOHMANN
#include <nlohmann/json.hpp>
#endif

namespace {

namespace Containers = Corrade::Containers;
namespace RapidJsonUtils = VespermoorEngine::RapidJsonUtils;

/* Objects as an editor stores them: names, flags, references and transformations. */
std::string makeScene() {
    std::mt19937 random{1};
    std::uniform_real_distribution<double> number{-100.0, 100.0};
    std::string json = "{\n\"objects\": [";
    for (int i = 0; json.size() < 5000000; ++i) {
        json += i == 0 ? "\n" : ",\n";
        json += "{\"id\": " + std::to_string(i) + ", \"name\": \"Object number " +
                std::to_string(i) + "\", \"parent\": " + std::to_string(i / 2) +
                ", \"visible\": " + (i % 3 ? "true" : "false") + ", \"transformation\": [";
        for (int element = 0; element != 16; ++element) {
            json += (element ? ", " : "") + std::to_string(number(random));
        }
        json += "], \"components\": [{\"type\": \"mesh\", \"mesh\": \"meshes/wall.mesh\"}, null]}";
    }
    return json + "\n]\n}\n";
}

/* A file with an array of identical scenes. Removed by the destructor. */
struct SceneFile {
    explicit SceneFile(const int count) {
        path = "/tmp/vespermoor-bench-XXXXXX";
        close(mkstemp(path.data()));
        const std::string scene = makeScene();
        std::ofstream file{path};
        for (int i = 0; i != count; ++i) {
            file << (i == 0 ? "[" : ",") << scene;
        }
        file << "]";
    }
    ~SceneFile() { std::remove(path.data()); }
    SceneFile(const SceneFile&) = delete;
    SceneFile& operator=(const SceneFile&) = delete;

    std::string path;
};

const std::string& scenePath() {
    static const SceneFile file{1};
    return file.path;
}

const rapidjson::Document& scene() {
    static const rapidjson::Document document =
        RapidJsonUtils::parseJsonFile(scenePath().data()).value();
    return document;
}

void parseOurs(benchmark::State& state) {
    const char* const path = scenePath().data();
    for (auto _ : state) {
        auto document = RapidJsonUtils::parseJsonFile(path);
        benchmark::DoNotOptimize(document);
    }
}
BENCHMARK(parseOurs)->Unit(benchmark::kMillisecond);

void parseRapidJson(benchmark::State& state) {
    const char* const path = scenePath().data();
    for (auto _ : state) {
        const Containers::Optional<Containers::String> text =
            Corrade::Utility::Path::readString(path);
        rapidjson::MemoryStream memory{text->data(), text->size()};
        rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream{memory};
        rapidjson::Document document;
        document.ParseStream<rapidjson::kParseNoFlags, rapidjson::UTF8<>>(stream);
        benchmark::DoNotOptimize(document);
    }
}
BENCHMARK(parseRapidJson)->Unit(benchmark::kMillisecond);

void printOurs(benchmark::State& state) {
    const rapidjson::Document& document = scene();
    state.counters["outputBytes"] = double(RapidJsonUtils::jsonToString(document)->size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(RapidJsonUtils::jsonToString(document));
    }
}
BENCHMARK(printOurs)->Unit(benchmark::kMillisecond);

void printRapidJson(benchmark::State& state) {
    const rapidjson::Document& document = scene();
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::PrettyWriter<rapidjson::StringBuffer> writer{buffer};
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
}
BENCHMARK(printRapidJson)->Unit(benchmark::kMillisecond);

#ifdef VESPERMOOR_WITH_NLOHMANN
nlohmann::ordered_json parseWithNlohmann() {
    std::ifstream file{scenePath()};
    const std::string text{std::istreambuf_iterator<char>{file}, {}};
    return nlohmann::ordered_json::parse(text);
}

void parseNlohmann(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseWithNlohmann());
    }
}
BENCHMARK(parseNlohmann)->Unit(benchmark::kMillisecond);

void printNlohmann(benchmark::State& state) {
    const nlohmann::ordered_json document = parseWithNlohmann();
    for (auto _ : state) {
        benchmark::DoNotOptimize(document.dump(4));
    }
}
BENCHMARK(printNlohmann)->Unit(benchmark::kMillisecond);
#endif

/* Runs once, since the sizes hardly differ between runs and jq takes ten seconds. */
void peakMemory(benchmark::State& state) {
    using VespermoorEngine::Bench::peakMemoryOfProgram;
    if (!VespermoorEngine::Bench::isInstalled("jq")) {
        state.SkipWithError("jq is not installed");
        return;
    }
    const SceneFile file{40};
    for (auto _ : state) {
        const auto peer = double(peakMemoryOfProgram({"jq", ".", file.path}));
        state.counters["print"] =
            double(peakMemoryOfProgram({VESPERMOOR_UTILS, "json", file.path})) / peer;
        state.counters["set"] = double(peakMemoryOfProgram({VESPERMOOR_UTILS, "json", file.path,
                                                            "--set", "/0/objects/0/id=1"})) /
                                peer;
    }
}
BENCHMARK(peakMemory)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(1);

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"`parseJsonFile`", "reading the file and RapidJSON's `ParseStream`", "parseOurs",
          "parseRapidJson", 1.05},
         {"`parseJsonFile`", "nlohmann", "parseOurs", "parseNlohmann"},
         {"`jsonToString`", "RapidJSON's `PrettyWriter`", "printOurs", "printRapidJson", 1.1},
         {"`jsonToString`", "nlohmann", "printOurs", "printNlohmann"},
         {"peak memory of `json`, 200 MB", "jq", "peakMemory", "", 1.0, "print"},
         {"of `json --set`", "jq, only printing", "peakMemory", "", 1.0, "set"}});
}
