#ifndef Vespermoor_Test_Processes_h
#define Vespermoor_Test_Processes_h

#include <cstdlib>
#include <functional>
#include <optional>

#include "Support.h"

namespace VespermoorEngine::Test {

/** @brief Sets or unsets an environment variable during its lifetime. */
class ScopedVariable : NotCopied {
public:
    ScopedVariable(const char* name, const std::optional<std::string>& value)
        : _name{name},
          _before{std::getenv(name) ? std::optional{std::getenv(name)} : std::nullopt} {
        set(value);
    }
    ~ScopedVariable() { set(_before); }

private:
    void set(const std::optional<std::string>& value) const {
        value ? setenv(_name.data(), value->data(), 1) : unsetenv(_name.data());
    }

    const std::string _name;
    const std::optional<std::string> _before;
};

/** @brief Changes the current directory during its lifetime. */
class ScopedCurrentDirectory : NotCopied {
public:
    explicit ScopedCurrentDirectory(const std::string& path) { fs::current_path(path); }
    ~ScopedCurrentDirectory() { fs::current_path(_before, _ignored); }

private:
    const fs::path _before = fs::current_path();
    std::error_code _ignored;
};

/**
 * @brief Programs that record their runs, in a directory that is the current one.
 *
 * `PATH` holds only its folder `bin`.
 */
class Stubs {
public:
    /** @brief Each of the programs at @p paths records its run and then runs @p commands. */
    explicit Stubs(const std::vector<std::string>& paths, const std::string& commands = {});

    /**
     * @brief Path, current directory and arguments of each run so far.
     *
     * The path of the directory is written as an at sign.
     */
    std::vector<std::string> runs() const;

    /**
     * @brief Arguments of a dialog helper that was run once.
     *
     * An option and its value are joined by a `=`, and a `--` that ends the options is left out:
     * these differ between the headers that run the helper.
     */
    std::vector<std::string> options() const;

    /**
     * @brief Result of @p show, which shows one dialog and must leave neither a child nor a
     * descriptor.
     *
     * Runs in a process of its own, since a header may look up its helper once per process.
     */
    static std::string result(const std::function<std::string()>& show);

    /** @brief The current directory. */
    const TemporaryDirectory directory;

private:
    const ScopedVariable _path{"PATH", directory / "bin"};
    const ScopedVariable _desktop{"XDG_SESSION_DESKTOP", std::nullopt};
    const ScopedCurrentDirectory _current{directory.path()};
};

/**
 * @brief Process with a group of its own, which the destructor kills as a whole.
 *
 * So no process that it started survives, however the test ends.
 */
class ChildProcess : NotCopied {
public:
    /** @brief Runs @p command by `/bin/sh`; it should begin with `exec`. */
    explicit ChildProcess(const std::string& command);

    /**
     * @brief Calls @p operation in a copy of this process.
     *
     * For an operation that blocks until another process has done something, or that keeps state
     * for the rest of its process.
     */
    explicit ChildProcess(const std::function<std::string()>& operation);

    ~ChildProcess();

    /** @brief Result of the operation, or nothing if it has not ended after @p patience. */
    std::optional<std::string> result(std::chrono::milliseconds patience = std::chrono::minutes{1});

    /**
     * @brief Sends @p signals, waits for the end and returns the exit code, or -1 if a signal
     * ended it.
     *
     * Fails the test if it does not end.
     */
    int stop(const std::vector<int>& signals);

private:
    pid_t _process;
    int _pipe;
    std::string _received;
};

/**
 * @brief Result of @p operation in a copy of this process without the privileges of root, which
 * bypass permissions.
 */
int unprivileged(const std::function<int()>& operation);

/** @brief Output of the shell's @p command. */
std::string outputOf(const std::string& command);

/**
 * @brief Expects a result of @p operation in a copy of this process that alone sees an empty tmpfs
 * on each of @p paths.
 *
 * Skips the test if this user may not mount.
 */
void expectWithMounts(const std::vector<std::string>& paths,
                      const std::function<std::string()>& operation, const std::string& expected);

} // namespace VespermoorEngine::Test

#endif
