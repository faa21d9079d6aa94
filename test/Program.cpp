#include "Program.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include "Support.h"

namespace VespermoorEngine::Test {

namespace {

std::string quoted(const std::string& argument) {
    std::string result = "'";
    for (const char c : argument) {
        result += c == '\'' ? "'\\''" : std::string{c};
    }
    return result + "'";
}

} // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    const TemporaryDirectory directory;
    std::string line = quoted(VESPERMOOR_PROGRAM);
    for (const std::string& argument : arguments) {
        line += " " + quoted(argument);
    }
    line += " >" + quoted(directory / "output") + " 2>" + quoted(directory / "error");
    const int status = std::system(line.data());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(directory / "output"),
            readFile(directory / "error")};
}

BackgroundProgram::BackgroundProgram(const std::string& directory,
                                     const std::vector<std::string>& arguments)
    : outputPath{directory + "/program.output"}, errorPath{directory + "/program.error"} {
    writeFile(outputPath, "");
    writeFile(errorPath, "");
    std::vector<char*> words{const_cast<char*>(VESPERMOOR_PROGRAM)};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.data()));
    }
    words.push_back(nullptr);
    process = fork();
    if (process == 0) {
        if (std::freopen(outputPath.data(), "w", stdout) &&
            std::freopen(errorPath.data(), "w", stderr)) {
            execv(words[0], words.data());
        }
        _exit(127);
    }
}

BackgroundProgram::~BackgroundProgram() {
    if (process > 0) {
        stop(SIGKILL);
    }
}

std::string BackgroundProgram::output() const {
    return readFile(outputPath);
}

std::string BackgroundProgram::error() const {
    return readFile(errorPath);
}

int BackgroundProgram::stop(const int signal) {
    kill(process, signal);
    int status = 0;
    waitpid(std::exchange(process, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace VespermoorEngine::Test
