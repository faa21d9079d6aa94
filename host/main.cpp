#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Failure.h"

namespace Host = VespermoorEngine::Host;

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

constexpr const char* commonUses =
    "Common uses:\n"
    "  vespermoor-utils json FILE --pointer POINTER\n"
    "  vespermoor-utils render TEMPLATE --data FILE --output FILE\n"
    "  vespermoor-utils generate MANIFEST\n"
    "  vespermoor-utils tags FILE --region START END FILE --output FILE\n"
    "  vespermoor-utils case kebab TEXT\n"
    "  vespermoor-utils search TEXT DIRECTORY\n"
    "  vespermoor-utils root\n"
    "  vespermoor-utils watch DIRECTORY";

/* Options in 80 columns, without CLI11's names of types and rules: arguments have names, and
   descriptions give their ranges. */
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* const option) const override {
        const std::string name = option->get_type_name();
        return option->get_positional() || name.empty() ? "" : " " + name.substr(0, name.find(':'));
    }

    std::string make_option_desc(const CLI::Option* const option) const override {
        constexpr std::size_t columns = 50;
        std::istringstream words{option->get_description()};
        std::string text;
        std::size_t width = 0;
        for (std::string word; words >> word;) {
            const bool fits = width + 1 + word.size() <= columns;
            text += width == 0 ? "" : fits ? " " : "\n";
            width = word.size() + (width == 0 || !fits ? 0 : width + 1);
            text += word;
        }
        return text;
    }
};

/* Edit distance in bytes from `from` to `to`; 0 if `from` is a prefix of `to`. */
std::size_t distance(const std::string& from, const std::string& to) {
    if (to.compare(0, from.size(), from) == 0) {
        return 0;
    }
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i != from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j != to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] != to[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string nearestCommand(const CLI::App& program, const std::string& typed) {
    std::string nearest;
    for (const CLI::App* const command : program.get_subcommands({})) {
        if (nearest.empty() || distance(typed, command->get_name()) < distance(typed, nearest)) {
            nearest = command->get_name();
        }
    }
    return nearest;
}

/* The error in the command line. CLI11 only says that it found no command. */
std::string usageError(const CLI::App& program, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = program.remaining();
    if (!program.get_subcommands().empty() || unknown.empty()) {
        return error.what();
    }
    if (unknown.front().compare(0, 1, "-") == 0) {
        return "Unknown option " + unknown.front();
    }
    return "Unknown command " + unknown.front() + "; did you mean " +
           nearestCommand(program, unknown.front()) + "?";
}

int exitWith(const CLI::App& program, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        return program.exit(error);
    }
    Host::printError(usageError(program, error));
    std::fputs("Run with --help for more information.\n", stderr);
    return wrongUsage;
}

int run(const int argc, const char* const* const argv) {
    CLI::App program{"Services of the Vespermoor editor for the command line", "vespermoor-utils"};
    program.require_subcommand(1);
    program.set_version_flag("--version", "vespermoor-utils " VESPERMOOR_VERSION,
                             "Print the version and exit");
    program.formatter(std::make_shared<HelpFormatter>());
    program.footer(commonUses);
    Host::addJsonCommand(program);
    Host::addRenderCommand(program);
    Host::addGenerateCommand(program);
    Host::addTagsCommand(program);
    Host::addCaseCommand(program);
    Host::addSearchCommand(program);
    Host::addRootCommand(program);
    Host::addWatchCommand(program);
    try {
        std::vector<std::string> words{argv + 1, argv + argc};
        Host::joinExecCommand(words);
        std::reverse(words.begin(), words.end());
        program.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        return exitWith(program, error);
    }
    return 0;
}

} // namespace

int main(const int argc, const char* const* const argv) {
    try {
        return run(argc, argv);
    } catch (const Host::SilentFailure& failure) {
        return failure.exitCode;
    } catch (const std::bad_alloc&) {
        Host::printError(std::strerror(ENOMEM));
        return failed;
    } catch (const std::exception& error) {
        Host::printError(error.what());
        return failed;
    }
}
