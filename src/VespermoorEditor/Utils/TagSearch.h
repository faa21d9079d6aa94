#ifndef VespermoorEditor_Utils_TagSearch_h
#define VespermoorEditor_Utils_TagSearch_h

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/StringView.h>

#include "VespermoorEngine/Corrade.h"

namespace VespermoorEngine::Utils {

/** @brief A tag to find, and the destination for its first occurrence. */
struct SoughtTag {
    Containers::StringView bytes;
    Containers::StringView* found;
};

/**
 * @brief Finds the first occurrence of each tag, in one scan of @p text for all of them.
 *
 * Tags may overlap, be prefixes of each other and be equal; each matches as if it were the only
 * one. Occurrences are stored as views of @p text. A tag that does not occur, or has zero length,
 * leaves its empty `*found` as it is.
 *
 * Linear in the text, plus one scan for each tag of one byte. Worst case: text size times total tag
 * size, for texts full of tag prefixes.
 */
void findFirstOccurrences(Containers::StringView text,
                          Containers::ArrayView<const SoughtTag> sought);

} // namespace VespermoorEngine::Utils

#endif
