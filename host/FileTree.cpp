#include "FileTree.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* The names in descending order; those read so far if `error` is set. */
std::vector<fs::directory_entry> entriesOf(const fs::path& directory, std::error_code& error) {
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator entry{directory, error}, end; !error && entry != end;
         entry.increment(error)) {
        entries.push_back(*entry);
    }
    std::sort(entries.begin(), entries.end(),
              [](const auto& a, const auto& b) { return a.path() > b.path(); });
    return entries;
}

} // namespace

void visitFiles(const std::string& path, const std::function<void(const std::string&)>& visit,
                const std::function<void(const std::string&, const std::string&)>& report) {
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        visit(path);
        return;
    }
    /* The paths to visit, the next one last. */
    std::vector<fs::directory_entry> waiting{fs::directory_entry{path, error}};
    while (!waiting.empty()) {
        const fs::directory_entry next = waiting.back();
        waiting.pop_back();
        const bool isRoot = next.path() == path;
        if (next.is_symlink(error) && !isRoot) {
            continue;
        }
        if (next.is_directory(error)) {
            const std::vector<fs::directory_entry> entries = entriesOf(next.path(), error);
            waiting.insert(waiting.end(), entries.begin(), entries.end());
            if (error) {
                report(next.path(), error.message());
            }
        } else if (next.is_regular_file(error)) {
            visit(next.path());
        }
    }
}

} // namespace VespermoorEngine::Host
