#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "CaseCommand.h"
#include "Failure.h"
#include "GenerateCommand.h"
#include "JsonCommand.h"
#include "RenderCommand.h"
#include "RootCommand.h"
#include "SearchCommand.h"
#include "TagsCommand.h"
#include "WatchCommand.h"

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

int run(const int argc, const char* const* const argv) {
    CLI::App program{"Services of the Vespermoor editor for the command line", "vespermoor-utils"};
    program.require_subcommand(1);
    VespermoorEngine::Host::addJsonCommand(program);
    VespermoorEngine::Host::addRenderCommand(program);
    VespermoorEngine::Host::addGenerateCommand(program);
    VespermoorEngine::Host::addTagsCommand(program);
    VespermoorEngine::Host::addCaseCommand(program);
    VespermoorEngine::Host::addSearchCommand(program);
    VespermoorEngine::Host::addRootCommand(program);
    VespermoorEngine::Host::addWatchCommand(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? 0 : wrongUsage;
    }
    return 0;
}

} // namespace

int main(const int argc, const char* const* const argv) {
    try {
        return run(argc, argv);
    } catch (const VespermoorEngine::Host::SilentFailure&) {
        return failed;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vespermoor-utils: %s\n", error.what());
        return failed;
    }
}
