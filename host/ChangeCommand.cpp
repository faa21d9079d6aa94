#include "ChangeCommand.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <utility>

#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VespermoorEngine::Host {

namespace {

constexpr std::chrono::seconds longestCollection{1};
constexpr std::chrono::seconds timeToTerminate{10};

/* Bytes of arguments for one process, far below what any system allows. */
constexpr std::size_t longestCommandLine = 131'072;

constexpr const char* placeholder = "{}";

std::string withPath(std::string argument, const std::string& path) {
    for (std::size_t at = argument.find(placeholder); at != std::string::npos;
         at = argument.find(placeholder, at + path.size())) {
        argument.replace(at, 2, path);
    }
    return argument;
}

bool takesPaths(const std::string& argument) {
    return argument.find(placeholder) != std::string::npos;
}

/* The words, with `paths` in place of the placeholder. */
std::vector<std::string> commandLine(const std::vector<std::string>& words,
                                     const std::vector<std::string>& paths) {
    std::vector<std::string> line;
    for (const std::string& word : words) {
        if (line.empty() || !takesPaths(word)) {
            line.push_back(word);
            continue;
        }
        for (const std::string& path : paths) {
            line.push_back(withPath(word, path));
        }
    }
    return line;
}

std::size_t sizeOf(const std::vector<std::string>& line) {
    std::size_t size = 0;
    for (const std::string& word : line) {
        size += word.size() + 1 + sizeof(char*);
    }
    return size;
}

/* Appends one command line, or several if it would be too long for one. */
void appendCommandLines(std::vector<std::vector<std::string>>& lines,
                        const std::vector<std::string>& words,
                        const std::vector<std::string>& paths) {
    std::vector<std::string> line = commandLine(words, paths);
    if (sizeOf(line) <= longestCommandLine || paths.size() < 2) {
        lines.push_back(std::move(line));
        return;
    }
    const auto middle = paths.begin() + std::ptrdiff_t(paths.size() / 2);
    appendCommandLines(lines, words, {paths.begin(), middle});
    appendCommandLines(lines, words, {middle, paths.end()});
}

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

} // namespace

ChangeCommand::ChangeCommand(std::vector<std::string> words, const bool repeats, ErrorQueue& errors)
    : words{std::move(words)}, repeats{repeats}, errors{errors} {}

ChangeCommand::~ChangeCommand() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

void ChangeCommand::noteEnd() {
    ranSinceLook = isRunning();
    int status = 0;
    if (process > 0 && waitpid(process, &status, WNOHANG) == process) {
        noteExit(status);
        startBatch();
    }
}

void ChangeCommand::take(const std::vector<Change>& changes) {
    if (!ranSinceLook || repeats) {
        for (const Change& change : changes) {
            if (firstEvents.empty()) {
                collectingSince = Clock::now();
            }
            if (firstEvents.emplace(change.path, change.event).second) {
                paths.push_back(change.path);
            }
        }
    }
    if (isCollecting() &&
        (changes.empty() || Clock::now() - collectingSince >= longestCollection)) {
        startRun();
    }
}

/* Skips entries that came and went again, such as temporary files of a save. */
std::vector<std::string> ChangeCommand::takePaths() {
    const auto collected = std::exchange(firstEvents, {});
    std::vector<std::string> taken = std::exchange(paths, {});
    taken.erase(std::remove_if(taken.begin(), taken.end(),
                               [&](const std::string& path) {
                                   return collected.at(path) != FileWatch::Event::Remove &&
                                          !exists(path);
                               }),
                taken.end());
    return taken;
}

void ChangeCommand::startRun() {
    const std::vector<std::string> taken = takePaths();
    const bool needsPaths = std::any_of(words.begin() + 1, words.end(), takesPaths);
    if (!needsPaths || !taken.empty()) {
        appendCommandLines(batches, words, taken);
        startBatch();
    }
}

/* Starts the next command line, if there is one. The program inherits open descriptors, which are
   the user's. */
void ChangeCommand::startBatch() {
    if (batches.empty()) {
        return;
    }
    std::vector<std::string> line = std::move(batches.front());
    batches.erase(batches.begin());
    std::vector<char*> arguments;
    arguments.reserve(line.size() + 1);
    for (std::string& word : line) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    if (const int error =
            posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ)) {
        process = 0;
        batches.clear();
        errors.addError(words.front() + ": " + std::strerror(error));
        return;
    }
    /* Not pidfd_open(): the header of glibc 2.36 declares it with C++ linkage. */
    descriptor = int(syscall(SYS_pidfd_open, process, 0));
}

void ChangeCommand::noteExit(const int status) {
    process = 0;
    if (descriptor >= 0) {
        close(std::exchange(descriptor, -1));
    }
    /* Exit codes are the program's own business; only a death by signal needs a message. */
    if (WIFSIGNALED(status) && WTERMSIG(status) != SIGINT) {
        errors.addError(words.front() + ": " + strsignal(WTERMSIG(status)));
    }
}

void ChangeCommand::finish(StopSignals& signals) {
    while (!signals.arriveWithin(std::chrono::seconds{isRunning()}, descriptor)) {
        if (!isRunning()) {
            if (firstEvents.empty()) {
                return;
            }
            startRun();
        }
        noteEnd();
    }
    terminate();
}

void ChangeCommand::terminate() {
    batches.clear();
    if (process <= 0) {
        return;
    }
    kill(process, SIGTERM);
    const Clock::time_point end = Clock::now() + timeToTerminate;
    while (waitpid(process, nullptr, WNOHANG) == 0) {
        if (Clock::now() >= end) {
            kill(process, SIGKILL);
        }
        pollfd ended{descriptor, POLLIN, 0};
        poll(&ended, 1, 100);
    }
    process = 0;
}

} // namespace VespermoorEngine::Host
