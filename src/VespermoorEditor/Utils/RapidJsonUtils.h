#ifndef VespermoorEditor_Utils_RapidJsonUtils_h
#define VespermoorEditor_Utils_RapidJsonUtils_h

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>

#include "VespermoorEditor/Utils/RapidJson.h"
#include "VespermoorEditor/Utils/ValueOrError.h"
#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Corrade.h"

namespace VespermoorEngine {

/** @brief Reading, printing and stepping through JSON values. */
namespace RapidJsonUtils {

/** @brief RapidJSON's own default for the fractional digits of a printed number: all of them. */
constexpr int defaultMaxDecimalPlaces = 324;

/** @brief Levels of nested arrays and objects that @ref parseJsonFile() accepts. */
constexpr int maxNesting = 1024;

/**
 * @brief Prints @p value as indented JSON text in UTF-8.
 *
 * Four blanks per level, every member and element on its own line, members in stored order, no
 * trailing newline. Doubles print with at most @p maxDecimalPlaces fractional digits, expected to
 * be at least 1; digits past that are cut off, not rounded, and at least one stays. A number that
 * prints with an exponent keeps all its digits. NaN prints as 0.0 and an infinity as the largest
 * finite double of its sign, so every number has a text.
 *
 * Empty if the writer fails; a string that is not UTF-8 does not make it fail. The writer recurses,
 * so a value nested tens of thousands of levels deep exhausts the stack. A @p maxDecimalPlaces
 * below 1 aborts with `RapidJsonUtils::jsonToString(): maxDecimalPlaces must be
 * greater than 0`.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Optional<Containers::String>
jsonToString(const rapidjson::Value& value, int maxDecimalPlaces = defaultMaxDecimalPlaces);

/**
 * @brief Reads the file @p filename into a document that owns its content.
 *
 * The text is strict JSON (RFC 8259) in UTF-8, which is not validated inside strings. A whole byte
 * order mark before it is dropped. If the file cannot be read, for any reason, the message is `File
 * does not exist: {}` with the file name as passed, and `Corrade::Utility::Path::readString()`
 * prints its own line. If the text is not JSON, is nested deeper than @ref maxNesting levels or
 * holds a number too large for a double, the message is `Invalid JSON in file: {}`. Numbers are
 * read without full precision: the last digit can be rounded wrongly, and numbers such as `0e400`,
 * with an exponent past that of a double, are refused too. @p type is the document's kind before
 * the parse and does not restrict the root of the file.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT ValueOrError<rapidjson::Document>
parseJsonFile(Containers::StringView filename, rapidjson::Type type = rapidjson::kObjectType);

/**
 * @brief The child of @p value under the single step @p key, with its name.
 *
 * In an object, the first member whose name equals @p key. In an array, @p key is an index as
 * `std::stoul()` reads it in base 10: leading white space and a sign are accepted, and everything
 * after the digits is ignored. The text is read up to its NUL, so @p key has to be NUL-terminated
 * if @p value is an array.
 *
 * The name is a NUL-terminated view of the member's name, or a default-constructed one for an array
 * element; it and the pointer live until the object or array changes. The pair is empty (a
 * default-constructed view and a null pointer) if there is no such child or @p value is of another
 * kind. A key on an array that is not a number throws `std::invalid_argument`, one too
 * large for `unsigned long` `std::out_of_range`.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Pair<Containers::StringView, rapidjson::Value*>
getSubValue(rapidjson::Value& value, Containers::StringView key);

/**
 * @brief The child of @p value at the position @p index in stored order, with its name.
 *
 * Name, pointer and the empty pair are those of the other overload, so that a caller can walk the
 * members of an object by number. Throws nothing.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Pair<Containers::StringView, rapidjson::Value*>
getSubValue(rapidjson::Value& value, unsigned int index);

/**
 * @brief Value of the first member of @p object whose name equals @p name, or null.
 *
 * The kind is not tested: @p object has to be an object. The pointer lives until the object
 * changes.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT rapidjson::Value* getMember(rapidjson::Value& object,
                                                           const rapidjson::Value& name);
/** @overload */
VESPERMOOR_EDITOR_UTILS_EXPORT rapidjson::Value* getMember(rapidjson::Value& object,
                                                           Containers::StringView name);
/** @overload */
VESPERMOOR_EDITOR_UTILS_EXPORT const rapidjson::Value* getMember(const rapidjson::Value& object,
                                                                 Containers::StringView name);

/**
 * @brief Value of the first member of @p object whose name equals @p name, added if it is missing.
 *
 * A new member goes to the end, with a copy of @p name and an empty object as its value, both in
 * memory of @p allocator; that can move the other members. The kind is not tested: @p object has to
 * be an object.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT rapidjson::Value&
getOrAddMember(rapidjson::Value& object, Containers::StringView name,
               rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator);

/**
 * @brief The value that the JSON Pointer @p pointer leads to from @p root.
 *
 * @p pointer is a JSON Pointer as in RFC 6901, or its URI fragment form, which begins with `#`.
 * Names are compared by length and bytes, so a name may hold a NUL. The first of two members with
 * one name is found. Returns null if a step does not exist. Text that is not a pointer, an empty
 * one and a view with null data all give the root itself. The result lives until the value it
 * points to, or a value above it, changes.
 *
 * RapidJSON reads fragments more strictly than RFC 6901 in one way and differently in another:
 *
 * -    Every character except letters, digits and `-._~` must be percent-encoded, so `#/a:b` is not
 *      a pointer and gives the root.
 * -    Steps are split before they are decoded, so `#/a%2Fb` is the one step `a/b`.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT rapidjson::Value* valueByPointer(rapidjson::Value& root,
                                                                Containers::StringView pointer);
/** @overload */
VESPERMOOR_EDITOR_UTILS_EXPORT const rapidjson::Value*
valueByPointer(const rapidjson::Value& root, Containers::StringView pointer);

} // namespace RapidJsonUtils
} // namespace VespermoorEngine

namespace rapidjson {

/**
 * @brief Prints @p value as @ref VespermoorEngine::RapidJsonUtils::jsonToString() does, with all
 * fractional digits; `Containers::NullOpt` if that is empty.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Corrade::Utility::Debug& operator<<(Corrade::Utility::Debug& debug,
                                                                   const Value& value);

} // namespace rapidjson

#endif
