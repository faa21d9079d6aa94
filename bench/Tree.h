#ifndef Vespermoor_Bench_Tree_h
#define Vespermoor_Bench_Tree_h

#include <chrono>
#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

namespace VespermoorEngine::Bench {

/** @brief Location of a @ref Tree. */
enum class Place {
    /** The temporary directory, for benchmarks that read: the page cache answers. */
    Disk,
    /** `/dev/shm`, for benchmarks that write: the speed of the disk would decide them. */
    Memory
};

/** @brief Directory tree, removed at the end: ten directories in each, and small files. */
class Tree {
public:
    explicit Tree(Place place, std::size_t directoryCount, std::size_t filesEach = 3);
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    const std::string& path() const { return root; }
    /** @brief The root and everything below it, parents first. */
    const std::vector<std::string>& directories() const { return all; }

private:
    std::string root;
    std::vector<std::string> all;
};

/** @brief Seconds that @p body takes. */
template <class Body>
double seconds(Body&& body) {
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>{std::chrono::steady_clock::now() - begin}.count();
}

/** @brief Seconds of processor time that @p body takes. */
template <class Body>
double processorSeconds(Body&& body) {
    const std::clock_t begin = std::clock();
    body();
    return double(std::clock() - begin) / CLOCKS_PER_SEC;
}

/** @brief Whether a program of that name can be started. */
bool isInstalled(const std::string& program);

/** @brief Runs a program to its end and returns the seconds that it took. */
double runProgram(const std::vector<std::string>& arguments);

/**
 * @brief Runs a program to its end and returns its largest resident size in KiB.
 *
 * That of this process is the least that the kernel reports, since the program starts in its
 * memory.
 */
std::size_t peakMemoryOfProgram(const std::vector<std::string>& arguments);

/** @brief Program that runs in the background. */
class Program {
public:
    explicit Program(const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    bool isRunning();

private:
    int process;
};

/** @brief Other programs that watch a tree. */
struct Peer {
    std::string name;
    std::vector<std::string> arguments;
};

/** @brief Starts a peer on @p path and returns the seconds until it holds @p watches watches. */
double establish(const Peer& peer, const std::string& path, std::size_t watches);

} // namespace VespermoorEngine::Bench

#endif
