#include "GenerateReport.h"

#include <cstdio>
#include <sstream>
#include <utility>

#include <unistd.h>

#include <Corrade/Containers/StringStl.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* Time before the first count, so that short updates show none, and between counts. */
constexpr std::chrono::milliseconds firstCountAfter{300};
constexpr std::chrono::milliseconds countEvery{100};

std::string colouredDiff(const std::string& diff) {
    if (diff.empty() || !printsColours()) {
        return diff;
    }
    std::istringstream lines{diff};
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        result += line[0] == '-'   ? coloured(Colour::Red, line)
                  : line[0] == '+' ? coloured(Colour::Green, line)
                  : line[0] == '@' ? coloured(Colour::Cyan, line)
                                   : line;
        result += '\n';
    }
    return result;
}

} // namespace

GenerateReport::GenerateReport(std::string verb, const bool quiet)
    : verb{std::move(verb)}, quiet{quiet} {}

void GenerateReport::failure(const std::string& message) {
    eraseCount();
    printError(message);
}

void GenerateReport::note(const std::string& message) {
    if (!quiet) {
        eraseCount();
        std::fprintf(stderr, "%s\n", message.data());
    }
}

void GenerateReport::result(const Generator::Result& result) {
    eraseCount();
    for (const std::string& message : result.failures) {
        failure(message);
    }
    std::string lines;
    for (const Generator::Change& change : result.changes) {
        lines += quiet ? "" : verb + " " + escaped(change.path) + "\n";
        lines += colouredDiff(change.diff);
    }
    Host::print(lines);
}

Generator::Progress GenerateReport::progress() {
    if (quiet || !isatty(STDERR_FILENO)) {
        return {};
    }
    nextCount = std::chrono::steady_clock::now() + firstCountAfter;
    return [this](const std::size_t done, const std::size_t all) { count(done, all); };
}

void GenerateReport::count(const std::size_t done, const std::size_t all) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextCount) {
        nextCount = now + countEvery;
        isCounting = true;
        std::fprintf(stderr, "\r%zu of %zu outputs\x1b[K", done, all);
    }
}

void GenerateReport::eraseCount() {
    if (std::exchange(isCounting, false)) {
        std::fputs("\r\x1b[K", stderr);
    }
}

} // namespace VespermoorEngine::Host
