#ifndef Vespermoor_Test_Processes_h
#define Vespermoor_Test_Processes_h

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

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

/** @brief Those of @p programs that `PATH` does not lead to, with blanks in between. */
std::string missingPrograms(const std::vector<std::string>& programs);

/** @brief Makes @p path an executable shell script. */
void writeScript(const std::string& path, const std::string& commands);

/**
 * @brief Process with a group of its own, which is killed as a whole at the end.
 *
 * So nothing that it started is left behind, however the test ends.
 */
class ChildProcess {
public:
    /** @brief Runs @p command by `/bin/sh`, best with an `exec` in front. */
    explicit ChildProcess(const std::string& command);

    /**
     * @brief Calls @p operation in a copy of this process.
     *
     * For what blocks until somebody else has done something, or keeps things for the rest of its
     * process.
     */
    explicit ChildProcess(const std::function<std::string()>& operation);

    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** @brief What the operation returned, or nothing if it has not yet after that time. */
    std::optional<std::string> result(std::chrono::milliseconds patience);

private:
    pid_t _process;
    int _pipe;
    std::string _received;
};

/** @brief What the shell's @p command printed. */
std::string outputOf(const std::string& command);

/**
 * @brief What @p operation returns in a copy of this process that alone sees an empty tmpfs on
 * @p path.
 *
 * Nothing where the machine does not let this user mount.
 */
std::optional<std::string> resultWithMount(const std::string& path,
                                           const std::function<std::string()>& operation);

} // namespace VespermoorEngine::Test

#endif
