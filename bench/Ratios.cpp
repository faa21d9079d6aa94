#include "Ratios.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

std::size_t allocations = 0;

} // namespace

/* Counting before the C library's own functions are called sees the allocations of every library.
 */
extern "C" {
void* __libc_malloc(std::size_t);              // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t, std::size_t); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void*, std::size_t);      // NOLINT(bugprone-reserved-identifier)

void* malloc(const std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(const std::size_t count, const std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* const memory, const std::size_t size) {
    ++allocations;
    return __libc_realloc(memory, size);
}
}

namespace VespermoorEngine::Bench {

namespace {

struct Result {
    double seconds;
    std::map<std::string, double> counters;
};

class LeastTimes : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::printf("%s: %s\n", run.benchmark_name().data(), run.error_message.data());
            } else if (run.run_type == Run::RT_Iteration) {
                add(run);
            }
        }
    }

    void print(const std::vector<Ratio>& ratios) const;
    void append(const std::vector<Ratio>& ratios, std::FILE* file) const;

private:
    void add(const Run& run);
    std::optional<double> valueOf(const Ratio& ratio) const;
    double secondsOf(const std::string& name) const;

    std::vector<std::string> order;
    std::map<std::string, Result> results;
};

void LeastTimes::add(const Run& run) {
    /* Drops the suffixes of settings such as a fixed number of iterations. */
    const std::string name =
        run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
    const double seconds = run.real_accumulated_time / double(run.iterations);
    const auto [found, added] = results.try_emplace(name, Result{seconds, {}});
    if (added) {
        order.push_back(name);
    }
    if (added || seconds < found->second.seconds) {
        found->second.seconds = seconds;
    }
    for (const auto& [counter, value] : run.counters) {
        found->second.counters[counter] = value;
    }
}

/* Empty if a benchmark did not complete. */
std::optional<double> LeastTimes::valueOf(const Ratio& ratio) const {
    const auto measured = results.find(ratio.measured);
    if (measured == results.end()) {
        return std::nullopt;
    }
    if (!ratio.counter.empty()) {
        return measured->second.counters.at(ratio.counter);
    }
    const auto reference = results.find(ratio.reference);
    if (reference == results.end()) {
        return std::nullopt;
    }
    return measured->second.seconds / reference->second.seconds;
}

std::string readable(const double seconds) {
    char text[32];
    if (seconds < 1e-6) {
        std::snprintf(text, sizeof text, "%.2f ns", seconds * 1e9);
    } else if (seconds < 1e-3) {
        std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
    }
    return text;
}

void LeastTimes::print(const std::vector<Ratio>& ratios) const {
    for (const std::string& name : order) {
        const Result& result = results.at(name);
        std::printf("%-52s %12s", name.data(), readable(result.seconds).data());
        for (const auto& [counter, value] : result.counters) {
            std::printf("  %s %.10g", counter.data(), value);
        }
        std::printf("\n");
    }
    for (const Ratio& ratio : ratios) {
        const std::optional<double> value = valueOf(ratio);
        if (!value) {
            continue;
        }
        const std::string name = ratio.work + ", to " + ratio.peer;
        std::printf("ratio  %-66s %7.3f", name.data(), *value);
        if (ratio.goal > 0.0) {
            std::printf("  goal at most %.3g%s", ratio.goal, *value > ratio.goal ? "  MISSED" : "");
        }
        std::printf("\n");
    }
}

double LeastTimes::secondsOf(const std::string& name) const {
    const auto found = results.find(name);
    return found == results.end() ? 0.0 : found->second.seconds;
}

void LeastTimes::append(const std::vector<Ratio>& ratios, std::FILE* const file) const {
    for (const Ratio& ratio : ratios) {
        if (const std::optional<double> value = valueOf(ratio)) {
            std::fprintf(file, "%s\t%s\t%.3g\t%.3g\t%.6g\t%.6g\n", ratio.work.data(),
                         ratio.peer.data(), *value, ratio.goal, secondsOf(ratio.measured),
                         secondsOf(ratio.reference));
        }
    }
}

void appendResults(const LeastTimes& reporter, const std::vector<Ratio>& ratios) {
    const char* const path = std::getenv("VESPERMOOR_BENCH_RESULTS");
    if (!path) {
        return;
    }
    if (std::FILE* const file = std::fopen(path, "a")) {
        reporter.append(ratios, file);
        std::fclose(file);
    } else {
        std::perror(path);
    }
}

} // namespace

int run(const int argc, char** const argv, const std::vector<Ratio>& ratios) {
    std::vector<char*> arguments{argv, argv + argc};
    static char repetitions[] = "--benchmark_repetitions=9";
    static char interleaving[] = "--benchmark_enable_random_interleaving=true";
    static char time[] = "--benchmark_min_time=0.05";
    arguments.insert(arguments.begin() + 1, {repetitions, interleaving, time});
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    std::printf("== %s\n", argv[0]);
    LeastTimes reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print(ratios);
    appendResults(reporter, ratios);
    return 0;
}

std::size_t allocationCount() {
    return allocations;
}

std::size_t peakMemory() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return std::size_t(usage.ru_maxrss);
}

} // namespace VespermoorEngine::Bench
