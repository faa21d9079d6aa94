#include "Commands.h"

#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/EditorUtils.h>
#include <VespermoorEngine/Path.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::optional<std::string> directory;
};

void run(const Options& options) {
    const std::string executables{Utils::executablesPath()};
    print("executables: " + executables + '\n');
    const std::string start =
        options.directory ? std::string{Path::absolute(*options.directory)} : executables;
    const Containers::Optional<Containers::String> root =
        options.directory ? Utils::findEditorRoot(Containers::StringView{start})
                          : Utils::findEditorRoot();
    if (!root) {
        throw Failure{start,
                      "no data root: no directory from here upwards has an entry shaders, and "
                      "there is no ../share/vespermoorengine"};
    }
    print("data root: " + std::string{*root} + '\n');
}

} // namespace

void addRootCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("root", "Print the editor's executable and data directories");
    const auto options = std::make_shared<Options>();
    command->add_option_function<std::string>(
        "DIR", [options](const std::string& directory) { options->directory = directory; },
        "Directory to search from; default: the directory of the executables");
    command->footer("The data root is the directory of the editor's shaders and other data: the "
                    "nearest one\nfrom the executables upwards that has an entry shaders, or "
                    "../share/vespermoorengine of an\ninstalled editor.\n\n"
                    "Example, in the root of the sources:\n"
                    "  vespermoor-utils root examples/installation/bin");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
