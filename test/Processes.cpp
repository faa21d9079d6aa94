#include "Processes.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <regex>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VespermoorEngine::Test {

namespace {

/* For a process of one thread. */
bool mountPrivately(const std::vector<std::string>& paths) {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    const bool isRoot = geteuid() == 0;
    if (unshare(CLONE_NEWNS | (isRoot ? 0 : CLONE_NEWUSER)) != 0) {
        return false;
    }
    if (!isRoot) { // Without a user id in the new namespace it may not create files.
        writeFile("/proc/self/setgroups", "deny");
        writeFile("/proc/self/uid_map", user + ' ' + user + " 1");
        writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           std::all_of(paths.begin(), paths.end(), [](const std::string& path) {
               return mount("tmpfs", path.data(), "tmpfs", 0, nullptr) == 0;
           });
}

} // namespace

/* The links are the programs that a header runs to find or replace a helper. */
Stubs::Stubs(const std::vector<std::string>& paths, const std::string& commands) {
    fs::create_directories("bin");
    fs::create_symlink("/usr/bin/which", "bin/which");
    fs::create_symlink("/bin/echo", "bin/echo");
    for (const std::string& path : paths) {
        writeFile(directory / path, "#!/bin/sh\n"
                                    R"(printf '%s\0' "$0" "$PWD" "$@" >> ')" +
                                        directory / "record" + "'\n" + commands + '\n');
        fs::permissions(path, fs::perms::owner_all);
    }
}

std::vector<std::string> Stubs::runs() const {
    std::ifstream file{directory / "record", std::ios::binary};
    std::vector<std::string> all;
    for (std::string text; std::getline(file, text, '\0');) {
        all.push_back(directory.shortened(text));
    }
    return all;
}

std::vector<std::string> Stubs::options() const {
    const std::regex hasValue{"--(title|file-filter|window-icon|text|passivepopup|icon)"};
    const std::vector<std::string> all = runs();
    std::vector<std::string> options;
    for (std::size_t i = 2; i < all.size(); ++i) {
        if (i + 1 < all.size() && std::regex_match(all[i], hasValue)) {
            options.push_back(all[i] + '=' + all[i + 1]);
            ++i;
        } else if (all[i] != "--") {
            options.push_back(all[i]);
        }
    }
    return options;
}

std::string Stubs::result(const std::function<std::string()>& show) {
    ChildProcess dialog{[&]() -> std::string {
        const auto descriptors = [] {
            return std::distance(fs::directory_iterator{"/proc/self/fd"}, {});
        };
        const auto before = descriptors();
        const std::string result = show();
        return waitpid(-1, nullptr, WNOHANG) != -1 ? "a child is left"
               : descriptors() != before           ? "a descriptor is left"
                                                   : result;
    }};
    return dialog.result().value_or("the dialog goes on");
}

ChildProcess::ChildProcess(const std::string& command)
    : ChildProcess{[&] {
          execl("/bin/sh", "sh", "-c", command.data(), nullptr);
          return std::string{};
      }} {}

ChildProcess::ChildProcess(const std::function<std::string()>& operation) {
    std::fflush(nullptr); // Otherwise the copy would write the same text.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || (_process = fork()) == -1) {
        throw std::runtime_error{"no process"};
    }
    if (_process == 0) {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL); // If the test itself is killed.
        const std::string result = operation();
        _exit(write(ends[1], result.data(), result.size()) == ssize_t(result.size()) ? 0 : 1);
    }
    setpgid(_process, _process);
    close(ends[1]);
    _pipe = ends[0];
}

ChildProcess::~ChildProcess() {
    kill(-_process, SIGKILL);
    waitpid(_process, nullptr, 0);
    close(_pipe);
}

std::optional<std::string> ChildProcess::result(const std::chrono::milliseconds patience) {
    pollfd readable{_pipe, POLLIN, 0};
    while (poll(&readable, 1, int(patience.count())) > 0) {
        char block[4096];
        const ssize_t count = read(_pipe, block, sizeof(block));
        if (count <= 0) {
            return _received;
        }
        _received.append(block, std::size_t(count));
    }
    return std::nullopt;
}

int ChildProcess::stop(const std::vector<int>& signals) {
    for (const int signal : signals) {
        kill(_process, signal);
    }
    siginfo_t end{};
    waitUntil([&] { // Until it is reaped, no other process gets its id.
        return waitid(P_PID, id_t(_process), &end, WEXITED | WNOHANG | WNOWAIT) != 0 || end.si_pid;
    });
    return end.si_code == CLD_EXITED ? end.si_status : -1;
}

int unprivileged(const std::function<int()>& operation) {
    ChildProcess child{[&]() -> std::string {
        const bool dropped = geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
        return dropped ? std::to_string(operation()) : "-1";
    }};
    return std::stoi(child.result().value_or("-1"));
}

std::string outputOf(const std::string& command) {
    std::FILE* const pipe = popen(command.data(), "re");
    std::string output;
    char block[4096];
    while (const std::size_t count = std::fread(block, 1, sizeof(block), pipe)) {
        output.append(block, count);
    }
    pclose(pipe);
    return output;
}

void expectWithMounts(const std::vector<std::string>& paths,
                      const std::function<std::string()>& operation, const std::string& expected) {
    const std::string refused = "not mounted";
    ChildProcess child{[&] { return mountPrivately(paths) ? operation() : refused; }};
    const std::string result = child.result().value_or("it goes on");
    if (result == refused) {
        GTEST_SKIP() << "mounts are not allowed here";
    }
    EXPECT_EQ(result, expected);
}

} // namespace VespermoorEngine::Test
