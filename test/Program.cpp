#include "Program.h"

#include <cstdio>

#include <unistd.h>

#include "Support.h"

namespace VespermoorEngine::Test {

namespace {

/* The files are there, though empty, as soon as there is a process. */
std::function<std::string()> runOf(const std::string& directory,
                                   const std::vector<std::string>& arguments) {
    const std::string output = directory + "/program.output", error = directory + "/program.error";
    writeFile(output, "");
    writeFile(error, "");
    return [=]() -> std::string {
        std::vector<char*> words{const_cast<char*>(VESPERMOOR_PROGRAM)};
        for (const std::string& argument : arguments) {
            words.push_back(const_cast<char*>(argument.data()));
        }
        words.push_back(nullptr);
        if (std::freopen(output.data(), "w", stdout) && std::freopen(error.data(), "w", stderr)) {
            execv(words[0], words.data());
        }
        std::abort();
    };
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    const TemporaryDirectory directory;
    BackgroundProgram program{directory.path(), arguments};
    const int exitCode = program.stop({});
    return {exitCode, program.output(), program.error()};
}

BackgroundProgram::BackgroundProgram(const std::string& directory,
                                     const std::vector<std::string>& arguments)
    : ChildProcess{runOf(directory, arguments)}, directory{directory} {}

std::string BackgroundProgram::output() const {
    return readFile(directory + "/program.output");
}

std::string BackgroundProgram::error() const {
    return readFile(directory + "/program.error");
}

} // namespace VespermoorEngine::Test
