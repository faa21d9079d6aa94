#include "DependencyFile.h"

namespace VespermoorEngine::Host {

namespace {

/* `path`, escaped as compilers do it: a blank, `#` and `$` have a meaning in rules. */
std::string quoted(const std::string& path) {
    std::string result;
    for (const char c : path) {
        result += c == '$' ? "$" : c == ' ' || c == '#' ? "\\" : "";
        result += c;
    }
    return result;
}

} // namespace

std::string dependencyRule(const std::set<std::string>& targets,
                           const std::set<std::string>& inputs) {
    std::string left, right, phony;
    for (const std::string& path : targets) {
        left += (left.empty() ? "" : " ") + quoted(path);
    }
    for (const std::string& path : inputs) {
        right += " \\\n  " + quoted(path);
        phony += "\n" + quoted(path) + ":\n";
    }
    return left + ":" + right + "\n" + phony;
}

} // namespace VespermoorEngine::Host
