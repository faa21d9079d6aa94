#include "Processes.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
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

void setVariable(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.data(), value->data(), 1);
    } else {
        unsetenv(name.data());
    }
}

/* For a process of one thread. */
bool mountPrivately(const std::string& path) {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    const bool isRoot = geteuid() == 0;
    if (unshare(CLONE_NEWNS | (isRoot ? 0 : CLONE_NEWUSER)) != 0) {
        return false;
    }
    if (!isRoot) { // Without a number of its own in the new namespace it may not make files.
        writeFile("/proc/self/setgroups", "deny");
        writeFile("/proc/self/uid_map", user + ' ' + user + " 1");
        writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", path.data(), "tmpfs", 0, nullptr) == 0;
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

std::string missingPrograms(const std::string& programs) {
    return outputOf("for program in " + programs +
                    "; do command -v $program > /dev/null || printf '%s ' $program; done");
}

void writeRecorder(const TemporaryDirectory& directory, const std::string& name,
                   const std::string& commands) {
    writeFile(directory / name, "#!/bin/sh\n"
                                R"(printf '%s\0' "$0" "$PWD" "$@" >> ')" +
                                    directory / "record" + "'\n" + commands + '\n');
    fs::permissions(directory / name, fs::perms::owner_all);
}

std::vector<std::string> recorded(const TemporaryDirectory& directory) {
    std::ifstream file{directory / "record", std::ios::binary};
    std::vector<std::string> all;
    for (std::string text; std::getline(file, text, '\0');) {
        all.push_back(directory.shortened(text));
    }
    return all;
}

std::vector<std::string> recordedOptions(const TemporaryDirectory& directory) {
    const std::set<std::string> withValue{"--title", "--file-filter",  "--window-icon",
                                          "--text",  "--passivepopup", "--icon"};
    const std::vector<std::string> all = recorded(directory);
    std::vector<std::string> options;
    for (std::size_t i = 2; i < all.size(); ++i) {
        if (all[i] == "--") {
            continue;
        }
        options.push_back(all[i]);
        if (withValue.count(all[i]) && i + 1 < all.size()) {
            options.back() += '=' + all[++i];
        }
    }
    return options;
}

ChildProcess::ChildProcess(const std::string& command)
    : ChildProcess{[&] {
          execl("/bin/sh", "sh", "-c", command.data(), nullptr);
          return std::string{};
      }} {}

ChildProcess::ChildProcess(const std::function<std::string()>& operation) {
    std::fflush(nullptr); // Or the copy would have the same text to write.
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
    waitUntil([&] { // Until it is destroyed, no other process gets its number.
        return waitid(P_PID, id_t(_process), &end, WEXITED | WNOHANG | WNOWAIT) != 0 || end.si_pid;
    });
    return end.si_code == CLD_EXITED ? end.si_status : -1;
}

int unprivileged(const std::function<int()>& operation) {
    ChildProcess child{[&]() -> std::string {
        const bool dropped = geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
        return dropped ? std::to_string(operation()) : "-1";
    }};
    return std::stoi(child.result(std::chrono::minutes{1}).value_or("-1"));
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

std::optional<std::string> resultWithMount(const std::string& path,
                                           const std::function<std::string()>& operation) {
    const std::string refused = "not mounted";
    ChildProcess child{[&] { return mountPrivately(path) ? operation() : refused; }};
    const std::string result = child.result(std::chrono::minutes{1}).value_or("it goes on");
    return result == refused ? std::nullopt : std::optional{result};
}

} // namespace VespermoorEngine::Test
