#ifndef VespermoorEditor_Utils_TagSearch_h
#define VespermoorEditor_Utils_TagSearch_h

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/StringView.h>

namespace VespermoorEngine {

namespace Containers = Corrade::Containers;

namespace Utils {

/** @brief A tag to look for, and where to note the place at which it stands. */
struct SoughtTag {
    Containers::StringView bytes;
    Containers::StringView* found;
};

/**
 * @brief Finds the first occurrence of each tag, in one scan of @p text for all of them.
 *
 * Each is the one that a search for that tag alone finds: tags may overlap, begin alike and be
 * equal. What is noted is a view of @p text. A tag that does not occur, or has zero length, leaves
 * its empty `*found` as it is.
 *
 * Takes time in proportion to the text, and so much again for each tag of one byte. It does not
 * where the text is full of what tags begin with: at each such place tags are compared for as long
 * as they match, and tags that each begin with the one before, such as `aa` and `aaa`, may all be
 * compared. In the worst case that is the text's size times that of the tags.
 */
void findFirstOccurrences(Containers::StringView text,
                          Containers::ArrayView<const SoughtTag> sought);

} // namespace Utils
} // namespace VespermoorEngine

#endif
