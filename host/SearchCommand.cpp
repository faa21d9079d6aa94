#include "Commands.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Format.h>
#include <VespermoorEditor/Utils/String.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    bool all = false;
    std::string wanted;
    std::vector<std::string> paths;
};

/* Prints the matches in one file and returns whether there were any. */
bool search(const std::string& path, const Options& options) {
    const Containers::String content = readFile(path);
    const std::string name = escaped(path);
    const Containers::StringView text = content;
    std::size_t line = 1;
    std::size_t counted = 0;
    std::size_t from = 0;
    bool found = false;
    while (from < text.size()) {
        const std::uint64_t match =
            Utils::caseInsensitiveSearch(text.exceptPrefix(from), options.wanted);
        if (match == Utils::noMatch) {
            break;
        }
        found = true;
        const char* const begin = text.data() + from + match;
        line += std::size_t(std::count(text.data() + counted, begin, '\n'));
        counted = std::size_t(begin - text.data());
        const Containers::StringView newline = text.prefix(begin).findLast('\n');
        const char* const lineBegin = newline.data() ? newline.end() : text.begin();
        const char* const lineEnd = std::find(begin, text.end(), '\n');
        print(Corrade::Utility::format("{}:{}:{}: {}\n", Containers::StringView{name}, counted,
                                       line, text.slice(lineBegin, lineEnd)));
        if (!options.all) {
            break;
        }
        from = counted + options.wanted.size();
    }
    return found;
}

void run(const Options& options) {
    bool found = false;
    for (const std::string& path : options.paths) {
        found |= search(path, options);
    }
    if (!found) {
        throw SilentFailure{};
    }
}

} // namespace

void addSearchCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("search", "Find a text in files without regard to case");
    const auto options = std::make_shared<Options>();
    command->add_flag("--all", options->all, "All matches in place of the first of each file");
    command->add_option("TEXT", options->wanted, "The text to find")
        ->required()
        ->check([](const std::string& text) {
            return text.empty() ? std::string{"the text is empty"} : std::string{};
        });
    command->add_option("FILE", options->paths, "The files")->required();
    command->footer(
        "Prints file, offset in bytes, line and the line's text of each match, and ends "
        "with 1 where there is none.\n"
        "Example, in the root of the sources:\n"
        "  vespermoor-utils search HELLO examples/greeting/greeting.tmpl");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
