#include "CommandLine.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "Files.h"

namespace VespermoorEngine::Host {

void addOutputOption(CLI::App& command, std::string& path) {
    command
        .add_option(
            "--output", path,
            "Replace this file with the result, instead of printing it; - for standard output")
        ->type_name("FILE")
        ->check([](const std::string& name) {
            return name.empty() ? std::string{"the name is empty"} : std::string{};
        });
}

void expectOneStandardInput(const std::vector<std::string>& paths) {
    if (std::count(paths.begin(), paths.end(), standardStream) > 1) {
        throw CLI::ValidationError{standardStream, "standard input can be read only once"};
    }
}

} // namespace VespermoorEngine::Host
