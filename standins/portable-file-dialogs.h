#ifndef VespermoorStandins_portable_file_dialogs_h
#define VespermoorStandins_portable_file_dialogs_h

/** @file @brief Stand-in for portable-file-dialogs: file dialogs and notifications through
    `zenity`, `matedialog`, `qarma` or `kdialog`. */

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace pfd {
inline namespace VespermoorStandins {

enum class icon { info, warning, error, question };

enum class opt : std::uint8_t { none = 0, multiselect = 1 };

namespace internal {

inline std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

inline mode_t modeOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

/* The directories to search if PATH is not set. */
inline std::string standardPath() {
    std::string path(confstr(_CS_PATH, nullptr, 0), '\0');
    confstr(_CS_PATH, path.data(), path.size());
    path.pop_back();
    return path;
}

/* The path of a program, or nothing if PATH has none of that name. An empty element of PATH, at
   its end too, is the current directory, but an empty PATH has no elements. */
inline std::string findProgram(const std::string& name) {
    const std::string path = std::getenv("PATH") ? environment("PATH") : standardPath();
    for (std::size_t begin = 0, end; !path.empty() && begin <= path.size(); begin = end + 1) {
        end = std::min(path.find(':', begin), path.size());
        std::string program = begin == end ? "." : path.substr(begin, end - begin);
        program.append("/").append(name);
        if (S_ISREG(modeOf(program)) && access(program.c_str(), X_OK) == 0)
            return program;
    }
    return {};
}

enum class HelperKind { Zenity, Kdialog };

struct Helper {
    std::string program;
    HelperKind kind = HelperKind::Zenity;
};

/* The first available helper, GTK's before KDE's, except on a KDE desktop, which skips zenity. Not
   cached: the lookup is cheap compared with showing a dialog. */
inline Helper findHelper() {
    const std::string kdialog = findProgram("kdialog");
    const bool preferKdialog = !kdialog.empty() && environment("XDG_SESSION_DESKTOP") == "KDE";
    for (const char* name : {"zenity", "matedialog", "qarma"}) {
        if (preferKdialog && name == std::string{"zenity"})
            continue;
        std::string program = findProgram(name);
        if (!program.empty())
            return {std::move(program), HelperKind::Zenity};
    }
    return {kdialog, HelperKind::Kdialog};
}

/* Starts a program; the shell runs a script without an interpreter line. 0 on failure. */
inline pid_t spawn(std::vector<char*> argv, const posix_spawn_file_actions_t& actions) {
    static char shell[] = "/bin/sh";
    pid_t process;
    int error = posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), environ);
    if (error == ENOEXEC) {
        argv.insert(argv.begin(), shell);
        error = posix_spawn(&process, shell, &actions, nullptr, argv.data(), environ);
    }
    return error ? 0 : process;
}

/* A running program whose standard output is collected. */
class Process {
public:
    Process() = default;
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() { output(); }

    /* Passes the arguments unchanged, without a shell. Standard error is dropped, since toolkits
       are talkative. On failure nothing runs and the output is empty. */
    void start(std::string program, std::vector<std::string> arguments) {
        std::vector<char*> argv{program.data()};
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);

        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        _pid = spawn(std::move(argv), actions);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        _pipe = ends[0];
        if (_pid)
            _exited = int(syscall(SYS_pidfd_open, _pid, 0));
        else
            closeDescriptor(_pipe);
    }

    /* The whole output, after the program has ended. Waits for the program and not for the end of
       its output, which a daemon it started may hold open, unless the system cannot report the end
       of the program. */
    const std::string& output() {
        while (_pid) {
            pollfd events[]{{_pipe, POLLIN, 0}, {_exited, POLLIN, 0}};
            if (poll(events, 2, -1) == -1)
                continue;
            readAvailable();
            if (_exited != -1 ? events[1].revents != 0 : _pipe == -1)
                reap();
        }
        return _output;
    }

private:
    static void closeDescriptor(int& descriptor) {
        if (descriptor != -1)
            close(descriptor);
        descriptor = -1;
    }

    void readAvailable() {
        char block[4096];
        ssize_t count;
        while (_pipe != -1 && (count = read(_pipe, block, sizeof(block))) != -1) {
            _output.append(block, std::size_t(count));
            if (!count)
                closeDescriptor(_pipe);
        }
    }

    void reap() {
        while (waitpid(_pid, nullptr, 0) == -1 && errno == EINTR)
            continue;
        _pid = 0;
        closeDescriptor(_pipe);
        closeDescriptor(_exited);
    }

    pid_t _pid = 0;
    int _pipe = -1;
    int _exited = -1;
    std::string _output;
};

using Arguments = std::vector<std::string>;

class dialog {
protected:
    dialog() : _helper{findHelper()} {}

    const Helper& helper() const { return _helper; }

    void show(Arguments arguments) {
        if (!_helper.program.empty())
            _process.start(_helper.program, std::move(arguments));
    }

    const std::string& output() { return _process.output(); }

private:
    Helper _helper;
    Process _process;
};

/* Every text follows a `=` or a `--`, so none can be taken for an option. */
class file_dialog : public dialog {
protected:
    enum class Type { Open, Save, Folder };
    using Filters = std::vector<std::string>;

    file_dialog(Type type, const std::string& title, const std::string& path,
                const Filters& filters, opt options) {
        show(helper().kind == HelperKind::Zenity
                 ? zenityArguments(type, title, path, filters, options)
                 : kdialogArguments(type, title, path, filters, options));
    }

    /* Removes the line end, and the slash that some helpers put after a directory. */
    std::string onePath() {
        std::string path = output();
        while (!path.empty() && (path.back() == '\n' || path.back() == '/'))
            path.pop_back();
        return path;
    }

    /* One path in each line, up to an empty line. */
    std::vector<std::string> allPaths() {
        std::vector<std::string> paths;
        const std::string& lines = output();
        for (std::size_t begin = 0, end;
             (end = lines.find('\n', begin)) != std::string::npos && end != begin; begin = end + 1)
            paths.push_back(lines.substr(begin, end - begin));
        return paths;
    }

private:
    static Arguments zenityArguments(Type type, const std::string& title, const std::string& path,
                                     const Filters& filters, opt options) {
        /* Without the slash zenity opens the parent directory. */
        const bool needsSlash =
            type != Type::Folder && !path.empty() && path.back() != '/' && S_ISDIR(modeOf(path));
        Arguments arguments{"--file-selection", "--filename=" + path + (needsSlash ? "/" : ""),
                            "--title=" + title, "--separator=\n"};
        for (std::size_t i = 0; i + 1 < filters.size(); i += 2)
            arguments.push_back("--file-filter=" + filters[i] + '|' + filters[i + 1]);
        if (type == Type::Save)
            arguments.push_back("--save");
        if (type == Type::Folder)
            arguments.push_back("--directory");
        arguments.push_back("--confirm-overwrite");
        if (options == opt::multiselect)
            arguments.push_back("--multiple");
        return arguments;
    }

    static Arguments kdialogArguments(Type type, const std::string& title, const std::string& path,
                                      const Filters& filters, opt options) {
        Arguments arguments{type == Type::Open   ? "--getopenfilename"
                            : type == Type::Save ? "--getsavefilename"
                                                 : "--getexistingdirectory"};
        if (options == opt::multiselect) {
            arguments.push_back("--multiple");
            arguments.push_back("--separate-output");
        }
        std::string filter;
        for (std::size_t i = 0; i + 1 < filters.size(); i += 2)
            filter += (i ? " | " : "") + filters[i] + '(' + filters[i + 1] + ')';
        arguments.push_back("--title=" + title);
        arguments.push_back("--");
        arguments.push_back(path);
        arguments.push_back(filter);
        return arguments;
    }
};

} // namespace internal

/** Shows a notification; the destructor waits for the helper to end. */
class notify : public internal::dialog {
public:
    notify(const std::string& title, const std::string& message, icon icon = icon::info) {
        if (helper().kind == internal::HelperKind::Zenity)
            show({"--notification", std::string{"--window-icon="} + iconName(icon),
                  "--text=" + title + '\n' + message});
        else
            show({std::string{"--icon="} + iconName(icon), "--title=" + title,
                  "--passivepopup=" + message, "5"});
    }

private:
    static const char* iconName(icon icon) {
        switch (icon) {
        case icon::warning:
            return "warning";
        case icon::error:
            return "error";
        default:
            return "information";
        }
    }
};

class open_file : public internal::file_dialog {
public:
    open_file(const std::string& title, const std::string& path = "",
              const std::vector<std::string>& filters = {"All Files", "*"}, opt options = opt::none)
        : file_dialog{Type::Open, title, path, filters, options} {}

    std::vector<std::string> result() { return allPaths(); }
};

class save_file : public internal::file_dialog {
public:
    save_file(const std::string& title, const std::string& path = "",
              const std::vector<std::string>& filters = {"All Files", "*"}, opt options = opt::none)
        : file_dialog{Type::Save, title, path, filters, options} {}

    std::string result() { return onePath(); }
};

class select_folder : public internal::file_dialog {
public:
    select_folder(const std::string& title, const std::string& path = "", opt options = opt::none)
        : file_dialog{Type::Folder, title, path, {}, options} {}

    std::string result() { return onePath(); }
};

} // namespace VespermoorStandins
} // namespace pfd

#endif
