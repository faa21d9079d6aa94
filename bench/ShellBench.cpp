/* Capturing 64 MiB that a command prints, beside reading and dropping them. */

#include <cstdio>

#include <Corrade/Containers/String.h>
#include <VespermoorEditor/Utils/System.h>
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Ratios.h"

namespace {

namespace Containers = Corrade::Containers;

constexpr std::size_t outputSize = 64 << 20;
constexpr const char* command = "head -c 67108864 /dev/zero";

std::size_t capture() {
    Containers::String output;
    VespermoorEngine::runShellCommandCapture(command, output, {});
    return output.size();
}

/* What a capture adds to the largest size of a process that never held as much before, in terms of
   the output. */
double peakMemoryOfCapture() {
    int ends[2];
    if (pipe(ends) != 0) {
        return 0.0;
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::size_t before = VespermoorEngine::Bench::peakMemory();
        capture();
        const std::size_t added = VespermoorEngine::Bench::peakMemory() - before;
        _exit(write(ends[1], &added, sizeof(added)) == sizeof(added) ? 0 : 1);
    }
    close(ends[1]);
    std::size_t added = 0;
    const bool received = read(ends[0], &added, sizeof(added)) == sizeof(added);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return received ? double(added) * 1024.0 / outputSize : 0.0;
}

void captureOurs(benchmark::State& state) {
    static const double peak = peakMemoryOfCapture();
    state.counters["peakMemoryPerOutput"] = peak;
    for (auto _ : state) {
        if (capture() != outputSize) {
            state.SkipWithError("the output is not whole");
        }
    }
}
BENCHMARK(captureOurs)->Unit(benchmark::kMillisecond);

void dropPopen(benchmark::State& state) {
    for (auto _ : state) {
        std::FILE* const pipe = popen(command, "r");
        char block[8192];
        std::size_t size = 0;
        while (const std::size_t count = std::fread(block, 1, sizeof(block), pipe)) {
            size += count;
        }
        pclose(pipe);
        if (size != outputSize) {
            state.SkipWithError("the output is not whole");
        }
    }
}
BENCHMARK(dropPopen)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"capture 64 MiB: ours to a bare popen loop", "captureOurs", "dropPopen", 1.3}});
}
