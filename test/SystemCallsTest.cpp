#include <fstream>
#include <regex>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

/* The file-system calls of the probe from its first mark to its last, with @ for the directory of
   the test: the path that was asked about, or the whole call where none is seen from the current
   directory. Asking where that is counts, and that the buffer was too small for the answer not. */
std::vector<std::string> tracedCalls(const std::string& start,
                                     const TemporaryDirectory& directory) {
    const std::string log = directory / "trace";
    outputOf("strace -qq -e trace=%file -o '" + log + "' '" VESPERMOOR_SYSTEM_CALLS_PROBE "' " +
             start);
    const std::regex path{"^\\w+\\((?:AT_FDCWD, )?\"([^\"]*)\".*"};
    std::ifstream file{log};
    std::vector<std::string> calls;
    for (std::string line; std::getline(file, line);) {
        const std::string call = std::regex_replace(line, path, "$1");
        if (call == "/begin") {
            calls.clear();
        }
        if (call != "/begin" && call != "/end" && call.find("ERANGE") == std::string::npos) {
            calls.push_back(directory.shortened(call));
        }
    }
    return calls;
}

TEST(SystemCalls, AreNoMoreThanNeeded) {
    const struct {
        std::vector<const char*> directories;
        /* Where the root is searched from; the trash is searched where there is none. */
        std::string start;
        std::vector<std::string> calls;
    } rows[]{
        // clang-format off
        {{"data/Trash/files"}, "", {"@/data/Trash/files"}},
        {{}, "", {"@/data/Trash/files", "@/data/Trash"}},
        {{"a/b", "a/shaders"}, "a/b", {"@", "a/b/shaders", "a/shaders"}},
        {{"a/bin", "a/share/vespermoorengine"}, "a/bin",
         {"@", "a/bin/shaders", "a/shaders", "@/a/share/vespermoorengine"}},
        {{"bin"}, "bin", {"@", "bin/shaders", "@/share/vespermoorengine"}},
        {{"shaders", "bin"}, "@/bin", {"@/bin/shaders", "@/shaders"}},
        // clang-format on
    };
    if (outputOf("strace -qq -o /dev/null echo traced 2> /dev/null") != "traced\n") {
        GTEST_SKIP() << "strace is not installed or not allowed here";
    }
    for (const auto& row : rows) {
        SCOPED_TRACE(row.start);
        const TemporaryDirectory directory;
        for (const char* const made : row.directories) {
            fs::create_directories(directory / made);
        }
        const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
        const ScopedCurrentDirectory current{directory.path()};
        EXPECT_EQ(tracedCalls(directory.expanded(row.start), directory), row.calls);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
