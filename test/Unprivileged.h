#ifndef Vespermoor_Test_Unprivileged_h
#define Vespermoor_Test_Unprivileged_h

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace VespermoorEngine::Test {

/**
 * @brief Runs @p body in a process of its own without the privileges of root, who is refused
 * nothing.
 *
 * Returns what @p body returns, from 0 to 98.
 */
template <class Body>
int unprivileged(Body&& body) {
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            _exit(99);
        }
        _exit(body());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace VespermoorEngine::Test

#endif
