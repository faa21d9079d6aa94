#include "Support.h"

#include <cstdlib>
#include <fstream>
#include <regex>

namespace VespermoorEngine::Test {

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = fs::canonical(fs::temp_directory_path()) / "vespermoor-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error{"no temporary directory"};
    }
    directory = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
}

std::string TemporaryDirectory::expanded(const std::string& text) const {
    return std::regex_replace(text, std::regex{"@"}, directory);
}

std::string TemporaryDirectory::shortened(const std::string& text) const {
    return std::regex_replace(text, std::regex{directory}, "@");
}

void writeFile(const std::string& path, const std::string& content) {
    fs::create_directories(fs::absolute(path).parent_path());
    std::ofstream file{path, std::ios::binary};
    file << content;
    ASSERT_TRUE(file.flush().good()) << path;
}

std::string readFile(const std::string& path) {
    std::ifstream file{path, std::ios::binary};
    EXPECT_TRUE(file.good()) << path;
    return {std::istreambuf_iterator<char>{file}, {}};
}

} // namespace VespermoorEngine::Test
