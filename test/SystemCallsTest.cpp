#include <filesystem>
#include <fstream>
#include <regex>
#include <vector>

#include <gmock/gmock.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

struct CallsRow {
    const char* name;
    std::vector<const char*> directories;
    const char* arguments;
    std::vector<std::string> calls;
};

class SystemCalls : public testing::TestWithParam<CallsRow> {};

/* The file-system calls of the probe from its first mark to its last, with `D` for the directory of
   the test: the path that was asked about, or the whole call where none is seen from the current
   directory. Asking where that is counts, and that the buffer was too small for the answer not. */
std::vector<std::string> tracedCalls(const std::string& arguments, const std::string& directory) {
    const std::string log = directory + "/trace";
    outputOf("strace -qq -e trace=%file -o '" + log + "' '" VESPERMOOR_SYSTEM_CALLS_PROBE "' " +
             arguments);
    const std::regex path{"^\\w+\\((?:AT_FDCWD, )?\"([^\"]*)\".*"};
    std::ifstream file{log};
    std::vector<std::string> calls;
    for (std::string line; std::getline(file, line);) {
        const std::string call = std::regex_replace(line, path, "$1");
        if (call == "/begin") {
            calls.clear();
        }
        if (call.find("ERANGE") == std::string::npos) {
            calls.push_back(std::regex_replace(call, std::regex{directory}, "D"));
        }
    }
    return calls;
}

TEST_P(SystemCalls, AreNoMoreThanNeeded) {
    const CallsRow& row = GetParam();
    const TemporaryDirectory directory;
    for (const char* const made : row.directories) {
        fs::create_directories(directory / made);
    }
    if (!missingPrograms({"strace"}).empty() ||
        outputOf("strace -qq -o /dev/null echo traced") != "traced\n") {
        GTEST_SKIP() << "strace is not installed or not allowed here";
    }
    const ScopedVariable home{"HOME", directory.path()};
    const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
    const ScopedCurrentDirectory current{directory.path()};
    const std::string arguments =
        std::regex_replace(row.arguments, std::regex{"D"}, directory.path());
    std::vector<std::string> expected = row.calls;
    expected.insert(expected.begin(), "/begin");
    expected.push_back("/end");
    EXPECT_EQ(tracedCalls(arguments, directory.path()), expected);
}

const CallsRow callsRows[]{
    {"trash with files", {"data/Trash/files"}, "trash", {"D/data/Trash/files"}},
    {"no trash", {}, "trash", {"D/data/Trash/files", "D/data/Trash"}},
    {"shaders above", {"a/b", "a/shaders"}, "root a/b", {"D", "a/b/shaders", "a/shaders"}},
    {"installed data",
     {"a/bin", "a/share/vespermoorengine"},
     "root a/bin",
     {"D", "a/bin/shaders", "a/shaders", "D/a/share/vespermoorengine"}},
    {"no data", {"bin"}, "root bin", {"D", "bin/shaders", "D/share/vespermoorengine"}},
    {"absolute", {"shaders", "bin"}, "root D/bin", {"D/bin/shaders", "D/shaders"}},
};
INSTANTIATE_TEST_SUITE_P(, SystemCalls, testing::ValuesIn(callsRows), rowName<CallsRow>);

} // namespace
} // namespace VespermoorEngine::Test
