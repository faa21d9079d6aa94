/* Capturing 64 MiB of output of a command, compared with a loop that reads them into one
   allocation. A loop that drops the bytes would not be comparable, since storing them costs page
   faults. */

#include <cstdio>
#include <memory>
#include <optional>

#include <Corrade/Containers/String.h>
#include <VespermoorEditor/Utils/System.h>
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ratios.h"

namespace {

namespace Containers = Corrade::Containers;

constexpr std::size_t outputSize = 64 << 20;
constexpr std::size_t blockSize = 8192;
constexpr const char* command = "head -c 67108864 /dev/zero";

std::size_t capture() {
    Containers::String output;
    VespermoorEngine::runShellCommandCapture(command, output, {});
    return output.size();
}

/* Growth of a fresh process's peak size by a capture, divided by the size of the output. Empty if
   it cannot be measured. */
std::optional<double> peakMemoryOfCapture() {
    int ends[2];
    if (pipe(ends) != 0) {
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::size_t before = VespermoorEngine::Bench::peakMemory();
        const bool isWhole = capture() == outputSize;
        const std::size_t added = VespermoorEngine::Bench::peakMemory() - before;
        _exit(isWhole && write(ends[1], &added, sizeof(added)) == sizeof(added) ? 0 : 1);
    }
    close(ends[1]);
    std::size_t added = 0;
    const bool isReceived = read(ends[0], &added, sizeof(added)) == sizeof(added);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return isReceived ? std::optional{double(added) * 1024.0 / outputSize} : std::nullopt;
}

void captureOurs(benchmark::State& state) {
    static const std::optional<double> peak = peakMemoryOfCapture();
    if (!peak) {
        state.SkipWithError("the peak memory cannot be measured");
    }
    state.counters["peakMemory"] = peak.value_or(0.0);
    for (auto _ : state) {
        if (capture() != outputSize) {
            state.SkipWithError("the output is not whole");
            break;
        }
    }
}
BENCHMARK(captureOurs)->Unit(benchmark::kMillisecond);

void popenLoop(benchmark::State& state) {
    for (auto _ : state) {
        std::FILE* const pipe = popen(command, "r");
        const std::unique_ptr<char[]> memory{new char[outputSize + blockSize]};
        std::size_t size = 0;
        while (const std::size_t count = std::fread(&memory[size], 1, blockSize, pipe)) {
            size += count;
        }
        pclose(pipe);
        if (size != outputSize) {
            state.SkipWithError("the output is not whole");
            break;
        }
    }
}
BENCHMARK(popenLoop)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"capture 64 MiB", "a `popen` loop into one allocation", "captureOurs", "popenLoop", 1.1},
         {"capture 64 MiB, peak memory", "the output", "captureOurs", "", 2.1, "peakMemory"}});
}
