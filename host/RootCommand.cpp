#include "RootCommand.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/EditorUtils.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string directory;
};

void run(const Options& options) {
    const std::string executables{Utils::executablesPath()};
    print("executables: " + executables + '\n');
    const Containers::Optional<Containers::String> root =
        options.directory.empty()
            ? Utils::findEditorRoot()
            : Utils::findEditorRoot(Containers::StringView{options.directory});
    if (!root) {
        throw Failure{options.directory.empty() ? executables : options.directory,
                      "no data root is found from here"};
    }
    print("data root: " + std::string{*root} + '\n');
}

} // namespace

void addRootCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "root", "Print the directory of the executables and the data root of the editor");
    const auto options = std::make_shared<Options>();
    command->add_option("DIR", options->directory,
                        "Where the search for the data root starts; if not given, in the directory "
                        "of the executables");
    command->footer("Example:\n"
                    "  vespermoor-utils root /opt/vespermoor/bin");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
