#include "Program.h"

namespace VespermoorEngine::Test {

namespace {

/* The files exist, still empty, as soon as there is a process. */
std::string commandOf(const std::string& directory, const std::vector<std::string>& arguments) {
    const std::string output = directory + "/program.output", error = directory + "/program.error";
    writeFile(output, "");
    writeFile(error, "");
    std::string command = "exec '" VESPERMOOR_PROGRAM "'";
    for (const std::string& argument : arguments) {
        command += " '" + argument + "'";
    }
    return command + " > '" + output + "' 2> '" + error + "'";
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
    : ChildProcess{commandOf(directory, arguments)}, directory{directory} {}

} // namespace VespermoorEngine::Test
