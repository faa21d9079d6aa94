#ifndef Vespermoor_Test_Processes_h
#define Vespermoor_Test_Processes_h

#include <functional>
#include <optional>

#include "Support.h"

namespace VespermoorEngine::Test {

/** @brief Gives an environment variable another value, or none, for as long as it lives. */
class ScopedVariable {
public:
    explicit ScopedVariable(const char* name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    std::string _name;
    std::optional<std::string> _before;
};

/** @brief Makes another directory the current one for as long as it lives. */
class ScopedCurrentDirectory {
public:
    explicit ScopedCurrentDirectory(const std::string& path);
    ~ScopedCurrentDirectory();
    ScopedCurrentDirectory(const ScopedCurrentDirectory&) = delete;
    ScopedCurrentDirectory& operator=(const ScopedCurrentDirectory&) = delete;

private:
    std::string _before;
};

/** @brief The @p programs that `PATH` does not lead to, with blanks in between. */
std::string missingPrograms(const std::string& programs);

/**
 * @brief Makes @p name a program that adds to the file `record` of @p directory how it was run.
 *
 * Then it does what the shell's @p commands say.
 */
void writeRecorder(const TemporaryDirectory& directory, const std::string& name,
                   const std::string& commands = {});

/**
 * @brief How those programs were run so far: path, current directory and arguments.
 *
 * With an at sign for the path of @p directory.
 */
std::vector<std::string> recorded(const TemporaryDirectory& directory);

/**
 * @brief Arguments that a recording helper of dialogs was run with.
 *
 * An option and its value are one here, with a `=` in between, and a `--` that ends the options is
 * left out: those are up to the header that runs the helper.
 */
std::vector<std::string> recordedOptions(const TemporaryDirectory& directory);

/**
 * @brief Process with a group of its own, which is killed as a whole at the end.
 *
 * So nothing that it started is left behind, however the test ends.
 */
class ChildProcess {
public:
    /** @brief Runs @p command by `/bin/sh`, which best begins with `exec`. */
    explicit ChildProcess(const std::string& command);

    /**
     * @brief Calls @p operation in a copy of this process.
     *
     * For an operation that blocks until another process has done something, or that keeps state
     * for the rest of its process.
     */
    explicit ChildProcess(const std::function<std::string()>& operation);

    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** @brief Result of the operation, or nothing if it has not ended after that time. */
    std::optional<std::string> result(std::chrono::milliseconds patience);

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
 * @brief Result of @p operation in a copy of this process without the privileges of root, who is
 * refused nothing.
 */
int unprivileged(const std::function<int()>& operation);

/** @brief Output of the shell's @p command. */
std::string outputOf(const std::string& command);

/**
 * @brief Result of @p operation in a copy of this process that alone sees an empty tmpfs on
 * @p path.
 *
 * Nothing if the machine does not let this user mount.
 */
std::optional<std::string> resultWithMount(const std::string& path,
                                           const std::function<std::string()>& operation);

} // namespace VespermoorEngine::Test

#endif
