#include <filesystem>

#include <gmock/gmock.h>

#include "Processes.h"
#include "Program.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

/* The real program, copied into a tree such as an installation makes. */
class HostRootTest : public testing::Test {
protected:
    HostRootTest() {
        fs::create_directories(directory / "bin");
        fs::copy_file(VESPERMOOR_PROGRAM, directory / "bin/vespermoor-utils");
        fs::create_directory_symlink(fs::path{VESPERMOOR_PROGRAM}.parent_path() / "../lib",
                                     directory / "lib");
    }

    /* Output, errors included, and the exit code. */
    std::string root(const std::string& start = {}) const {
        return outputOf("'" + directory / "bin/vespermoor-utils" + "' root " + start +
                        " 2>&1; echo \"exit $?\"");
    }

    const TemporaryDirectory directory;
    const std::string executables = "executables: " + directory / "bin" + '\n';
};

TEST_F(HostRootTest, SaysThatThereIsNone) {
    EXPECT_EQ(root(), executables + "vespermoor-utils: " + directory / "bin" +
                          ": no data root is found from here\nexit 1\n");
    EXPECT_EQ(root("/proc/self"), executables +
                                      "vespermoor-utils: /proc/self: no data root is found from "
                                      "here\nexit 1\n");
}

TEST_F(HostRootTest, FindsTheInstalledOneAndThenTheOneOfTheSources) {
    fs::create_directories(directory / "share/vespermoorengine");
    EXPECT_EQ(root(),
              executables + "data root: " + directory / "share/vespermoorengine" + "\nexit 0\n");
    fs::create_directories(directory / "shaders");
    EXPECT_EQ(root(), executables + "data root: " + directory.path() + "\nexit 0\n");
    fs::create_directories(directory / "elsewhere/shaders");
    EXPECT_EQ(root("'" + directory / "elsewhere/bin" + "'"),
              executables + "data root: " + directory / "elsewhere" + "\nexit 0\n");
}

TEST_F(HostRootTest, SearchesAboveARelativeDirectoryAndTakesAnEmptyOneForTheCurrent) {
    fs::create_directories(directory / "elsewhere/shaders");
    const ScopedCurrentDirectory current{directory / "elsewhere"};
    for (const char* const start : {"bin/", "''"}) {
        EXPECT_EQ(root(start),
                  executables + "data root: " + directory / "elsewhere" + "\nexit 0\n");
    }
}

} // namespace
} // namespace VespermoorEngine::Test
