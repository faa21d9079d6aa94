#include "Program.h"

#include <cstdlib>

#include <sys/wait.h>

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

} // namespace VespermoorEngine::Test
