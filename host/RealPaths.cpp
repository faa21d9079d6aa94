#include "RealPaths.h"

#include <filesystem>

#include "Files.h"

namespace VespermoorEngine::Host {

namespace fs = std::filesystem;

namespace {

/* A directory that cannot be resolved, such as a loop of links, is identified by its name. */
std::string resolveDirectory(const std::string& directory) {
    std::error_code error;
    const fs::path absolute = fs::absolute(directory, error);
    const fs::path real = fs::weakly_canonical(absolute, error);
    return error ? absolute.lexically_normal() : real;
}

} // namespace

const std::string& RealPaths::file(const std::string& path) {
    const auto [file, isNew] = files.try_emplace(path);
    if (isNew) {
        file->second = entry(linkChain(path).back());
    }
    return file->second;
}

std::string RealPaths::entry(const std::string& path) {
    const auto [directory, isNew] = directories.try_emplace(parentOf(path));
    if (isNew) {
        directory->second = resolveDirectory(directory->first);
    }
    const std::string& real = directory->second;
    return real + (real.back() == '/' ? "" : "/") + path.substr(path.rfind('/') + 1);
}

} // namespace VespermoorEngine::Host
