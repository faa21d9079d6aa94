#ifndef Vespermoor_Test_Support_h
#define Vespermoor_Test_Support_h

#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <gmock/gmock.h>

namespace VespermoorEngine::Test {

namespace fs = std::filesystem;

/** @brief Base of classes that restore or remove something at their end. */
struct NotCopied {
    NotCopied() = default;
    NotCopied(const NotCopied&) = delete;
    NotCopied& operator=(const NotCopied&) = delete;
};

/** @brief Empty directory for one test, removed with its content at the end. */
class TemporaryDirectory : NotCopied {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();

    /** @brief Absolute path without links and without a trailing slash. */
    const std::string& path() const { return directory; }

    /** @brief Path of @p name inside the directory. */
    std::string operator/(const std::string& name) const { return directory + '/' + name; }

    /** @brief Copy of @p text with every at sign replaced by the path. */
    std::string expanded(const std::string& text) const;

    /** @brief Copy of @p text with every occurrence of the path replaced by an at sign. */
    std::string shortened(const std::string& text) const;

private:
    std::string directory;
};

/** @brief Makes @p path and the directories above it hold exactly @p content. */
void writeFile(const std::string& path, const std::string& content);

/** @brief Whole content of @p path; fails the test if it cannot be read. */
std::string readFile(const std::string& path);

/** @brief Collects the output of `Error` and `Warning` while it lives. */
class Messages {
public:
    Messages() : error{&collected}, warning{&collected} {}

    /** @brief The output so far. */
    std::string text() const { return collected.str(); }

private:
    std::ostringstream collected;
    Corrade::Utility::Error error;
    Corrade::Utility::Warning warning;
};

/** @brief Copy of @p view for comparisons and messages of GoogleTest. */
inline std::string text(const Corrade::Containers::StringView view) {
    return {view.data(), view.size()};
}

/** @brief View of @p string, which keeps the memory. */
inline Corrade::Containers::StringView view(const std::string& string) {
    return {string.data(), string.size()};
}

/** @brief Waits until @p condition holds; fails the test if that takes more than a minute. */
template <class Condition>
void waitUntil(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes{1};
    while (!condition()) {
        ASSERT_LT(std::chrono::steady_clock::now(), end) << "waited in vain";
        std::this_thread::yield();
    }
}

/** @brief Copy of @p array for comparisons and messages of GoogleTest. */
template <class T>
std::vector<T> elements(const Corrade::Containers::Array<T>& array) {
    return {array.begin(), array.end()};
}

/** @brief Name of a table's row in the form that GoogleTest accepts: letters and digits only. */
template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& info) {
    std::string name;
    for (const char c : std::string{info.param.name}) {
        if (std::isalnum(static_cast<unsigned char>(c))) {
            name += c;
        }
    }
    return name;
}

} // namespace VespermoorEngine::Test

#endif
