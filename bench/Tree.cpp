#include "Tree.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VespermoorEngine::Bench {

namespace fs = std::filesystem;

namespace {

/* Starts a program with its output discarded. */
pid_t start(const std::vector<std::string>& arguments) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.data()));
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error) {
        throw std::runtime_error{"cannot start " + arguments[0]};
    }
    return child;
}

/* Number of kernel watches held by a process. */
std::size_t watchCount(const pid_t process) {
    std::size_t count = 0;
    std::error_code ignored;
    const std::string directory = "/proc/" + std::to_string(process) + "/fdinfo";
    for (const fs::directory_entry& entry : fs::directory_iterator{directory, ignored}) {
        std::ifstream info{entry.path()};
        for (std::string line; std::getline(info, line);) {
            count += line.rfind("inotify wd:", 0) == 0;
        }
    }
    return count;
}

} // namespace

Tree::Tree(const Place place, const std::size_t directoryCount, const std::size_t filesEach) {
    const fs::path parent = place == Place::Memory ? "/dev/shm" : fs::temp_directory_path();
    root = parent / "vespermoor-bench-XXXXXX";
    if (!mkdtemp(root.data())) {
        throw std::runtime_error{"no temporary directory"};
    }
    all.push_back(root);
    while (all.size() != directoryCount) {
        all.push_back(all[(all.size() - 1) / 10] + "/directory" + std::to_string(all.size() % 10));
        mkdir(all.back().data(), 0777);
    }
    for (const std::string& directory : all) {
        for (std::size_t i = 0; i != filesEach; ++i) {
            std::ofstream{directory + "/file" + std::to_string(i)} << "content of a small file\n";
        }
    }
}

Tree::~Tree() {
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null").data()) == 0;
}

double runProgram(const std::vector<std::string>& arguments) {
    return seconds([&] { peakMemoryOfProgram(arguments); });
}

std::size_t peakMemoryOfProgram(const std::vector<std::string>& arguments) {
    int status = 0;
    struct rusage usage {};
    if (wait4(start(arguments), &status, 0, &usage) < 0 || status != 0) {
        throw std::runtime_error{arguments[0] + " failed"};
    }
    return std::size_t(usage.ru_maxrss);
}

Program::Program(const std::vector<std::string>& arguments) : process{start(arguments)} {}

Program::~Program() {
    if (process > 0) {
        waitpid(process, nullptr, 0);
    }
}

bool Program::isRunning() {
    if (process > 0 && waitpid(process, nullptr, WNOHANG) == process) {
        process = 0;
    }
    return process > 0;
}

double establish(const Peer& peer, const std::string& path, const std::size_t watches) {
    std::vector<std::string> arguments = peer.arguments;
    arguments.push_back(path);
    pid_t child = 0;
    const double taken = seconds([&] {
        child = start(arguments);
        /* Counting takes the peer's lock, so it pauses in between. */
        while (watchCount(child) < watches && waitpid(child, nullptr, WNOHANG) == 0) {
            usleep(2000);
        }
    });
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return taken;
}

} // namespace VespermoorEngine::Bench
