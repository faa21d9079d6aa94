#include "Commands.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/String.h>

#include "CommandLine.h"
#include "Failure.h"
#include "FileTree.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    bool all = false;
    std::string wanted;
    std::vector<std::string> paths;
};

/* A file with a NUL among its first bytes, up to this number, is binary. */
constexpr std::size_t binaryPrefix = 8192;

/* Maximum printed bytes of a line: lines of generated files can be as long as the file. */
constexpr std::size_t excerptSize = 200;

/* Output is written in pieces of about this size. */
constexpr std::size_t outputPiece = 65536;

/* A match and the printed part of its line. */
struct Excerpt {
    Containers::StringView before, match, after;
};

bool isContinuation(const char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

/* Cuts the line that begins at `lineBegin` to the excerpt around `match`. Linear in the size of the
   excerpt, not of the line, which may be long and have many matches. */
Excerpt excerptAround(Containers::StringView match, const char* const lineBegin,
                      const char* const textEnd) {
    match = match.prefix(match.findOr('\n', match.end()).begin());
    match = match.prefix(std::min(match.size(), excerptSize));
    const std::size_t room = excerptSize - match.size();
    const char* const limit = match.end() + std::min(room, std::size_t(textEnd - match.end()));
    const char* end = std::find(match.end(), limit, '\n');
    const std::size_t after = end - match.end();
    const std::size_t before =
        std::min(std::size_t(match.begin() - lineBegin), std::max(room / 2, room - after));
    end = match.end() + std::min(after, room - before);
    const char* begin = match.begin() - before;
    /* Excludes the CR of a CRLF line end. */
    if (end != match.end() && end != textEnd && *end == '\n' && end[-1] == '\r') {
        --end;
    }
    /* No partial characters at either end. */
    while (begin != match.begin() && begin != lineBegin && isContinuation(*begin)) {
        ++begin;
    }
    while (end != match.end() && end != textEnd && isContinuation(*end)) {
        --end;
    }
    return {{begin, std::size_t(match.begin() - begin)},
            match,
            {match.end(), std::size_t(end - match.end())}};
}

/* Text of a file: unchanged in a pipe, with control characters escaped on a terminal. */
std::string shown(const Containers::StringView text) {
    static const bool onTerminal = isatty(STDOUT_FILENO);
    if (!onTerminal) {
        return text;
    }
    std::string line;
    const char* separator = "";
    for (const Containers::StringView part : text.split('\t')) {
        line += std::exchange(separator, "\t") + escaped(part);
    }
    return line;
}

/* Whether a regular file begins like a binary one. Other kinds cannot be read twice. */
bool beginsBinary(const std::string& path) {
    std::error_code error;
    if (path == standardStream || !std::filesystem::is_regular_file(path, error)) {
        return false;
    }
    char bytes[binaryPrefix];
    std::ifstream file{path, std::ios::binary};
    file.read(bytes, sizeof(bytes));
    return std::memchr(bytes, 0, std::size_t(file.gcount())) != nullptr;
}

class Search {
public:
    explicit Search(const Options& options) : options{options} {}

    void run();

private:
    void searchFile(const std::string& path);
    void searchText(const std::string& name, Containers::StringView text);
    void report(const std::string& message);

    const Options& options;
    std::string output;
    bool found = false;
    bool failed = false;
};

void Search::searchText(const std::string& name, const Containers::StringView text) {
    std::size_t line = 1;
    const char* lineBegin = text.begin();
    const char* scanned = text.begin();
    Containers::StringView rest = text;
    do {
        const std::uint64_t offset = Utils::caseInsensitiveSearch(rest, options.wanted);
        if (offset == Utils::noMatch) {
            return;
        }
        found = true;
        const Containers::StringView match = rest.slice(offset, offset + options.wanted.size());
        for (const char* end; (end = std::find(scanned, match.begin(), '\n')) != match.begin();
             ++line) {
            scanned = lineBegin = end + 1;
        }
        scanned = match.begin();
        const Excerpt excerpt = excerptAround(match, lineBegin, text.end());
        output += name + ':' + coloured(Colour::Green, std::to_string(line)) + ':' +
                  std::to_string(match.begin() - lineBegin + 1) + ": " + shown(excerpt.before) +
                  coloured(Colour::Red, shown(excerpt.match)) + shown(excerpt.after) + '\n';
        if (output.size() >= outputPiece) {
            print(std::exchange(output, {}));
        }
        rest = rest.slice(match.end(), rest.end());
    } while (options.all && !rest.isEmpty());
}

void Search::searchFile(const std::string& path) {
    if (beginsBinary(path)) {
        return;
    }
    try {
        const Input input = readInput(path);
        const Containers::StringView text = input.content;
        if (!text.prefix(std::min(text.size(), binaryPrefix)).contains('\0')) {
            searchText(coloured(Colour::Magenta, escaped(input.name)), text);
        }
    } catch (const Failure& failure) {
        report(failure.what());
    }
}

/* Earlier matches are printed before the error. */
void Search::report(const std::string& message) {
    print(std::exchange(output, {}));
    printError(message);
    failed = true;
}

void Search::run() {
    expectOneStandardInput(options.paths);
    for (const std::string& path : options.paths) {
        visitFiles(
            path, [this](const std::string& file) { searchFile(file); },
            [this](const std::string& directory, const std::string& reason) {
                report(Failure{directory, reason}.what());
            });
    }
    print(output);
    if (failed || !found) {
        throw SilentFailure{failed ? 2 : 1};
    }
}

} // namespace

void addSearchCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "search", "Find a text in files and directories without regard to case");
    const auto options = std::make_shared<Options>();
    command->add_flag("--all", options->all, "Print all matches, not only the first of each file");
    command->add_option("TEXT", options->wanted, "The text to find")
        ->required()
        ->check([](const std::string& text) {
            return text.empty() ? std::string{"the text is empty"} : std::string{};
        });
    command
        ->add_option("PATH", options->paths,
                     "Files, directories (with all files below them), or - for standard input")
        ->required();
    command->footer(
        "Only ASCII letters match without regard to case. Links in directories are not followed,\n"
        "and files with a NUL in their first 8 KiB are skipped. Prints file, line, column in "
        "bytes\n"
        "and the line's text, cut to 200 bytes around the match. Ends with 0 if anything is "
        "found,\n"
        "1 if nothing is, 2 if something cannot be read.\n\n"
        "Example, in the root of the sources:\n"
        "  vespermoor-utils search HELLO examples/greeting/greeting.tmpl");
    command->callback([options] { Search{*options}.run(); });
}

} // namespace VespermoorEngine::Host
