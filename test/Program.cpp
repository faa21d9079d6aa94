#include "Program.h"

#include <csignal>
#include <cstdio>

#include <sys/wait.h>
#include <unistd.h>

#include "Support.h"

namespace VespermoorEngine::Test {

ProgramRun runProgram(const std::vector<std::string>& arguments) {
    const TemporaryDirectory directory;
    BackgroundProgram program{directory.path(), arguments};
    const int exitCode = program.stop({});
    return {exitCode, program.output(), program.error()};
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
    std::fflush(nullptr); // Or the copy would have the same text to write.
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
    stop({SIGKILL});
}

std::string BackgroundProgram::output() const {
    return readFile(outputPath);
}

std::string BackgroundProgram::error() const {
    return readFile(errorPath);
}

int BackgroundProgram::stop(const std::vector<int>& signals) {
    if (process == -1) { // As a receiver of signals that would mean every process there is.
        return -1;
    }
    for (const int signal : signals) {
        kill(process, signal);
    }
    int status = -1;
    waitUntil([&] { return waitpid(process, &status, WNOHANG) == process; });
    process = status == -1 ? process : -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace VespermoorEngine::Test
