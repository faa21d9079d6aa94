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

namespace VespermoorEngine {

namespace Containers = Corrade::Containers;

/** @brief Services of the editor that need no object. */
namespace Utils {

/** @brief Start tag, end tag, and what shall stand between the two. */
using TagReplacement =
    Containers::Triple<Containers::StringView, Containers::StringView, Containers::StringView>;

/**
 * @brief Copy of @p text with new content between pairs of tags.
 *
 * Of each tag the first occurrence in the whole @p text counts, byte for byte; a tag of zero
 * length is never found. A replacement of which neither tag is found is left out. The tags and all
 * text outside them stay, and the order of @p replacements does not matter. That an end tag stands
 * behind its own start tag is not tested: where it does not, the stretch between the two occurs
 * twice in the result.
 *
 * Returns the new text, owned by the caller, and true. On failure it returns a message and false:
 * ``missing tag '{}'`` with the tag that was not found where its counterpart was, for the first
 * such replacement in the list; or ``overlapping tags: '{}' should appear before '{}'`` with the
 * end tag of one region and the start tag of the next where the former does not stand in front of
 * the latter.
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
 * A word begins at a capital behind anything but a capital, a space or a hyphen, as in `parse-xml`,
 * and at the last capital of a run with anything but a space or a hyphen behind it, as in
 * `xml-parser`. Spaces become hyphens, and hyphens that follow one another in @p name become one.
 * All other bytes stay. What counts as a capital is decided by `std::isupper()`, and only those of
 * ASCII become lower case.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String toKebapCase(Containers::StringView name);

/**
 * @brief Form of @p name with capitalised words and nothing between them.
 *
 * Only ASCII letters and digits stay, without the digits in front of the first letter. A word
 * begins behind every byte that is dropped for being neither, and capitals stay capitals.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT Containers::String toBigCamelCase(Containers::StringView name);

/** @brief Whether two bytes have the same upper case in a locale. */
struct CaseInsensitiveStringEqual {
    /** @brief Locale whose `std::ctype<char>` is asked; not owned. */
    const std::locale& locale;

    /** @brief Compares the upper case of @p a with that of @p b. */
    bool operator()(const char a, const char b) const {
        return std::toupper(a, locale) == std::toupper(b, locale);
    }
};

/** @brief Result of @ref caseInsensitiveSearch() if nothing matches. */
constexpr std::uint64_t noMatch = ~std::uint64_t{0};

/**
 * @brief Offset in bytes of the first match of @p substring in @p text, whatever the case.
 *
 * Bytes match by @ref CaseInsensitiveStringEqual with @p locale. An empty @p substring matches at
 * offset 0 of any text, and one with null data is empty, whatever its size. Returns @ref noMatch
 * if nothing matches.
 *
 * A `std::ctype<char>` that the caller derived is asked about one byte at a time, and about no byte
 * that `std::search()` would not ask about. What it throws goes to the caller.
 */
VESPERMOOR_EDITOR_UTILS_EXPORT std::uint64_t caseInsensitiveSearch(Containers::StringView text,
                                                                   Containers::StringView substring,
                                                                   const std::locale& locale);

/** @brief The same with the global locale of the moment. */
VESPERMOOR_EDITOR_UTILS_EXPORT std::uint64_t
caseInsensitiveSearch(Containers::StringView text, Containers::StringView substring);

} // namespace Utils
} // namespace VespermoorEngine

#endif
