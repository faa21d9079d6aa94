#ifndef Vespermoor_Bench_Ratios_h
#define Vespermoor_Bench_Ratios_h

#include <cstddef>
#include <string>
#include <vector>

/** @brief Shared by the benchmarks: a run with a summary of ratios, and memory counters. */
namespace VespermoorEngine::Bench {

/**
 * @brief The time of the benchmark @ref measured divided by that of @ref reference, or a counter.
 */
struct Ratio {
    /** @brief Piece of work. Ratios of the same work follow one another and share @ref measured. */
    std::string work;
    /** @brief The peer that does the work in @ref reference. */
    std::string peer;
    std::string measured;
    std::string reference;
    /** @brief Largest acceptable ratio; 0 if there is no goal. */
    double goal = 0.0;
    /** @brief Counter of @ref measured that is the ratio itself; there is no reference then. */
    std::string counter = {};
};

/**
 * @brief Runs the registered benchmarks and prints the least time of each, then @p ratios.
 *
 * If the environment variable `VESPERMOOR_BENCH_RESULTS` names a file, each ratio is appended to it
 * as a line of work, peer, ratio, goal and the seconds of both sides, with tabs between them.
 *
 * Repetitions of all benchmarks alternate at random, and the least time counts: other load on the
 * machine can only add to it. A ratio is left out if one of its sides did not run. Takes the
 * command line of `main()` with all flags of Google Benchmark and returns its exit code.
 */
int run(int argc, char** argv, const std::vector<Ratio>& ratios);

/** @brief Allocations of this process since its start, reallocations included. */
std::size_t allocationCount();

/** @brief Largest resident size of this process so far, in KiB. */
std::size_t peakMemory();

} // namespace VespermoorEngine::Bench

#endif
