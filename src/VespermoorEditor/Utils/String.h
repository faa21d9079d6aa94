#ifndef VespermoorEditor_Utils_String_h
#define VespermoorEditor_Utils_String_h

#include <cstdint>
#include <initializer_list>
#include <locale>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Containers/Triple.h>

#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Corrade.h"

namespace VespermoorEngine {

/** @brief Services of the editor that need no object. */
namespace Utils {

/** @brief Start tag, end tag, and the new content between the two. */
using TagReplacement =
    Containers::Triple<Containers::StringView, Containers::StringView, Containers::StringView>;

/**
 * @brief Copy of @p text with new content between pairs of tags.
 *
 * Each tag matches at its first occurrence in @p text, byte for byte; a tag of zero length is never
 * found. A replacement is ignored if neither of its tags is found. The tags and all text outside
 * them stay, and the order of @p replacements does not matter. An end tag before its own start tag
 * is no error: the text between the two then occurs twice in the result.
 *
 * Returns the new text, owned by the caller, and true. On failure it returns a message and false:
 * ``missing tag '{}'`` with the missing tag if only one of a pair was found, for the first such
 * replacement in the list; or ``overlapping tags: '{}' should appear before '{}'`` with the end tag
 * of one region and the start tag of the next if they are not in this order.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Pair<Containers::String, bool>
replaceTagContent(Containers::StringView text, std::initializer_list<TagReplacement> replacements);

/** @brief The same for a list that is made at run time. */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::Pair<Containers::String, bool>
replaceTagContent(Containers::StringView text,
                  Containers::ArrayView<const TagReplacement> replacements);

/**
 * @brief Lower-case form of @p name with hyphens between its words.
 *
 * A word begins at a capital after anything but a capital, a space or a hyphen, as in `parse-xml`,
 * and at the last capital of a run if anything but a space or a hyphen follows, as in `xml-parser`.
 * Spaces become hyphens, and several hyphens in a row become one. All other bytes stay. Capitals
 * are those of `std::isupper()`, and only ASCII capitals become lower case.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String toKebapCase(Containers::StringView name);

/**
 * @brief @p name as capitalised words with nothing between them.
 *
 * Only ASCII letters and digits stay, without the digits before the first letter. A word begins
 * after every byte that is neither, and capitals stay capitals.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String toBigCamelCase(Containers::StringView name);

/** @brief Whether two bytes have the same upper case in a locale. */
struct CaseInsensitiveStringEqual {
    /** @brief Locale whose `std::ctype<char>` is used; not owned. */
    const std::locale& locale;

    /** @brief Compares the upper case of @p a with that of @p b. */
    bool operator()(const char a, const char b) const {
        return std::toupper(a, locale) == std::toupper(b, locale);
    }
};

/** @brief Result of @ref caseInsensitiveSearch() if nothing matches. */
constexpr std::uint64_t noMatch = ~std::uint64_t{0};

/**
 * @brief Offset in bytes of the first match of @p substring in @p text, without regard to case.
 *
 * Bytes match by @ref CaseInsensitiveStringEqual with @p locale. An empty @p substring matches at
 * offset 0 of any text, and one with null data counts as empty. Returns @ref noMatch if nothing
 * matches.
 *
 * A `std::ctype<char>` that the caller derived is called for one byte at a time, and only for bytes
 * that `std::search()` would ask about. Its exceptions reach the caller.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT std::uint64_t caseInsensitiveSearch(Containers::StringView text,
                                                                   Containers::StringView substring,
                                                                   const std::locale& locale);

/** @brief The same with the current global locale. */
VESPERMOOR_EDITOR_UTILS_EXPORT std::uint64_t
caseInsensitiveSearch(Containers::StringView text, Containers::StringView substring);

} // namespace Utils
} // namespace VespermoorEngine

#endif
