#ifndef Vespermoor_Fuzz_Naive_h
#define Vespermoor_Fuzz_Naive_h

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <VespermoorEditor/Utils/RapidJson.h>

/**
 * Versions of the library's operations that are too simple to be wrong in the same way: each can be
 * read as the definition of its operation.
 */
namespace VespermoorEngine::Fuzz::Naive {

/** @brief The value of a name with slashes, or null if there is none. */
using Lookup = std::function<const rapidjson::Value*(const std::string& name)>;

/** @brief The output of a template, empty after a failure, and all lines printed on the way. */
struct Rendered {
    std::string text;
    std::string messages;
};

/** @brief Compiles @p source and renders it. */
Rendered render(const std::string& source, const Lookup& lookup);

/** @brief Whether an expression in the template @p source has @p name as its first token. */
bool hasEval(const std::string& source, const std::string& name);

/** @brief Two tags and the new text between them. */
struct Region {
    std::string start;
    std::string end;
    std::string content;
};

/** @brief The text with the regions replaced and true, or a message and false. */
std::pair<std::string, bool> replaceTagContent(const std::string& text,
                                               const std::vector<Region>& regions);

/** @brief Position of @p tag in @p text, or `npos` if it is empty or does not occur. */
std::size_t findTag(const std::string& text, const std::string& tag);

std::string toKebapCase(const std::string& name);
std::string toBigCamelCase(const std::string& name);

/**
 * @brief The JSON document @p text, as RapidJSON reads it.
 *
 * In addition to RapidJSON's own errors, refuses texts nested deeper than 1,024 levels, a partial
 * byte order mark, numbers that are not finite, and zero bytes.
 */
std::optional<rapidjson::Document> parse(const std::string& text);

/**
 * @brief A text that is equal for two values only if they are equal, down to the kind and the bits
 * of each number.
 */
std::string describe(const rapidjson::Value& value);

/** @brief The child of @p value at the step @p step, or null. */
const rapidjson::Value* child(const rapidjson::Value& value, const std::string& step);

/** @brief The value below @p root at @p path, with a slash for each step, or null. */
const rapidjson::Value* walk(const rapidjson::Value& root, const std::string& path);

/**
 * @brief The value at the JSON Pointer @p pointer, or null; @p root itself if it is not a pointer.
 * Does not support the form that begins with `#`.
 */
const rapidjson::Value* walkPointer(const rapidjson::Value& root, const std::string& pointer);

/** @brief The parts of @p text between the bytes of @p separators, empty ones included. */
std::vector<std::string> split(const std::string& text, const char* separators);

} // namespace VespermoorEngine::Fuzz::Naive

#endif
