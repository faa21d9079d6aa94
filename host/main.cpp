#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>
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

int run(const int argc, const char* const* const argv) {
    CLI::App program{"Services of the Vespermoor editor for the command line", "vespermoor-utils"};
    program.require_subcommand(1);
    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return Host::escaped(error.what()) + "\nRun with --help for more information.\n";
    });
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
        return program.exit(error) == 0 ? 0 : wrongUsage;
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
