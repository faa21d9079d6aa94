#include <numeric>
#include <string>
#include <vector>

#include <VespermoorEditor/Utils/JsonObject.h>
#include <benchmark/benchmark.h>

#include "Ratios.h"

namespace VespermoorEngine::Bench {
namespace {

constexpr std::size_t count = 1'000'000;

/* The root of a document: the thinnest possible accessor. */
class Root : public JsonObject {
public:
    bool exists() override { return true; }
    Containers::Pointer<JsonObject> member(Containers::StringView) override {
        return Containers::Pointer<Root>{Corrade::InPlaceInit};
    }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override {
        return document.GetAllocator();
    }
    const rapidjson::Value& value() const override { return document; }
    rapidjson::Value& mutableValue() override { return document; }

    rapidjson::Document document;
};

std::vector<float> numbers() {
    std::vector<float> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0.5f);
    return numbers;
}

std::vector<std::string> texts() {
    std::vector<std::string> texts;
    texts.reserve(count);
    for (std::size_t i = 0; i != count; ++i) {
        texts.push_back("Assets/Models/" + std::to_string(i) + ".gltf");
    }
    return texts;
}

/* A pool frees nothing, so each round has a document of its own. */
void setFloatArray(benchmark::State& state) {
    const std::vector<float> input = numbers();
    for (auto _ : state) {
        Root root;
        root.setFloatArray({input.data(), input.size()});
        benchmark::DoNotOptimize(root.document.Begin());
    }
}

void pushBackFloats(benchmark::State& state) {
    const std::vector<float> input = numbers();
    for (auto _ : state) {
        rapidjson::Document document;
        document.SetArray();
        document.Reserve(rapidjson::SizeType(input.size()), document.GetAllocator());
        for (const float number : input) {
            document.PushBack(double{number}, document.GetAllocator());
        }
        benchmark::DoNotOptimize(document.Begin());
    }
}

void setArrayOfStrings(benchmark::State& state) {
    const std::vector<std::string> input = texts();
    const std::vector<Containers::StringView> views = [&input] {
        std::vector<Containers::StringView> views;
        views.reserve(input.size());
        for (const std::string& text : input) {
            views.emplace_back(text.data(), text.size());
        }
        return views;
    }();
    for (auto _ : state) {
        Root root;
        root.setArray(Containers::ArrayView<const Containers::StringView>{views.data(), count});
        benchmark::DoNotOptimize(root.document.Begin());
    }
}

void pushBackStrings(benchmark::State& state) {
    const std::vector<std::string> input = texts();
    for (auto _ : state) {
        rapidjson::Document document;
        document.SetArray();
        document.Reserve(rapidjson::SizeType(input.size()), document.GetAllocator());
        for (const std::string& text : input) {
            document.PushBack(rapidjson::Value{text.data(), rapidjson::SizeType(text.size()),
                                               document.GetAllocator()},
                              document.GetAllocator());
        }
        benchmark::DoNotOptimize(document.Begin());
    }
}

BENCHMARK(setFloatArray);
BENCHMARK(pushBackFloats);
BENCHMARK(setArrayOfStrings);
BENCHMARK(pushBackStrings);

} // namespace
} // namespace VespermoorEngine::Bench

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {
            {"`setFloatArray` of a million", "`Reserve` and `PushBack`", "setFloatArray",
             "pushBackFloats", 1.2},
            {"`setArray` of a million strings", "`Reserve` and `PushBack`", "setArrayOfStrings",
             "pushBackStrings"},
        });
}
