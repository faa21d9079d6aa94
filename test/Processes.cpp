#include "Processes.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support.h"

namespace VespermoorEngine::Test {

namespace fs = std::filesystem;

namespace {

void setVariable(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.data(), value->data(), 1);
    } else {
        unsetenv(name.data());
    }
}

bool isInPath(const std::string& program) {
    std::istringstream path{std::getenv("PATH") ? std::getenv("PATH") : ""};
    for (std::string directory; std::getline(path, directory, ':');) {
        if (access((directory + '/' + program).data(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace

ScopedVariable::ScopedVariable(const char* const name, const std::optional<std::string>& value)
    : _name{name} {
    if (const char* const before = std::getenv(name)) {
        _before = before;
    }
    setVariable(_name, value);
}

ScopedVariable::~ScopedVariable() {
    setVariable(_name, _before);
}

ScopedCurrentDirectory::ScopedCurrentDirectory(const std::string& path)
    : _before{fs::current_path()} {
    fs::current_path(path);
}

ScopedCurrentDirectory::~ScopedCurrentDirectory() {
    std::error_code ignored;
    fs::current_path(_before, ignored);
}

std::string missingPrograms(const std::vector<std::string>& programs) {
    std::string missing;
    for (const std::string& program : programs) {
        if (!isInPath(program)) {
            missing += (missing.empty() ? "" : " ") + program;
        }
    }
    return missing;
}

void writeScript(const std::string& path, const std::string& commands) {
    writeFile(path, "#!/bin/sh\n" + commands + '\n');
    fs::permissions(path, fs::perms::owner_all);
}

bool mayMountPrivately() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(mountPrivately("/proc") ? 0 : 1);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

bool mountPrivately(const std::string& path) {
    const uid_t user = geteuid();
    if (unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0) {
        return false;
    }
    if (user != 0) {
        writeFile("/proc/self/uid_map", std::to_string(user) + ' ' + std::to_string(user) + " 1");
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", path.data(), "tmpfs", 0, nullptr) == 0;
}

} // namespace VespermoorEngine::Test
