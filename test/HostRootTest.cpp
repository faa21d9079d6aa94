#include <filesystem>

#include "Processes.h"
#include "Program.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

TEST(HostRootTest, FindsTheDataRoot) {
    /* The real program, copied into a tree such as an installation makes. */
    const TemporaryDirectory directory;
    const std::string program = directory / "bin/vespermoor-utils";
    fs::create_directories(directory / "elsewhere/shaders");
    fs::create_directories(directory / "bin");
    fs::copy_file(VESPERMOOR_PROGRAM, program);
    fs::create_directory_symlink(fs::path{VESPERMOOR_PROGRAM}.parent_path() / "../lib",
                                 directory / "lib");
    const ScopedCurrentDirectory current{directory / "elsewhere"};

    const auto expectRoot = [&](const std::string& start, const std::string& expected) {
        EXPECT_EQ(outputOf("'" + program + "' root " + start + " 2>&1; echo \"exit $?\""),
                  "executables: " + directory / "bin" + '\n' + expected);
    };
    const std::string none = ": no data root is found from here\nexit 1\n";
    const std::string above = "data root: " + directory / "elsewhere" + "\nexit 0\n";
    expectRoot("", "vespermoor-utils: " + directory / "bin" + none);
    expectRoot("/proc/self", "vespermoor-utils: /proc/self" + none);
    expectRoot("'" + directory / "elsewhere/bin" + "'", above);
    expectRoot("bin/", above);
    expectRoot("''", above);
    /* The installed one, and in front of it that of the sources. */
    fs::create_directories(directory / "share/vespermoorengine");
    expectRoot("", "data root: " + directory / "share/vespermoorengine" + "\nexit 0\n");
    fs::create_directories(directory / "shaders");
    expectRoot("", "data root: " + directory.path() + "\nexit 0\n");
}

} // namespace
} // namespace VespermoorEngine::Test
