#ifndef Vespermoor_Test_Tree_h
#define Vespermoor_Test_Tree_h

#include <map>

#include "Support.h"

namespace VespermoorEngine::Test {

/**
 * @brief Makes the entries below @p root, in order, with the directories above them.
 *
 * `a/` is a directory, `a -> b` a link with the text `b`, everything else a file with its own name
 * as content.
 */
inline void makeTree(const std::string& root, const std::vector<std::string>& entries) {
    for (const std::string& entry : entries) {
        const std::size_t arrow = entry.find(" -> ");
        const fs::path path = root + '/' + entry.substr(0, arrow);
        if (arrow != std::string::npos) {
            fs::create_directories(path.parent_path());
            fs::create_symlink(entry.substr(arrow + 4), path);
        } else if (entry.back() == '/') {
            fs::create_directories(path);
        } else {
            writeFile(path, entry);
        }
    }
}

/** @brief Everything below @p root, in the form of @ref makeTree(), sorted by name. */
inline std::vector<std::string> tree(const std::string& root) {
    std::map<std::string, std::string> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{root}) {
        const std::string name = entry.path().lexically_relative(root);
        entries[name] = entry.is_symlink()     ? " -> " + fs::read_symlink(entry).string()
                        : entry.is_directory() ? "/"
                                               : "";
    }
    std::vector<std::string> names;
    for (const auto& [name, suffix] : entries) {
        names.push_back(name + suffix);
    }
    return names;
}

} // namespace VespermoorEngine::Test

#endif
