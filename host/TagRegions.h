#ifndef Vespermoor_Host_TagRegions_h
#define Vespermoor_Host_TagRegions_h

#include <Corrade/Containers/String.h>
#include <VespermoorEditor/Utils/String.h>

namespace VespermoorEngine::Host {

/**
 * @brief The @p text of the file @p path with new content in its tagged regions.
 *
 * Replacing the same regions again changes nothing. The file keeps its line ends: tags and contents
 * are converted to those of its first line.
 *
 * Throws @ref Failure if a tag is missing, regions overlap, an end tag is not after its start tag,
 * or a content contains a tag, even one that only forms together with the surrounding text. The
 * library refuses only the first two, and ignores a region without tags; here that is an error,
 * since the user asked for the region.
 */
Containers::String replaceRegions(Containers::StringView path, Containers::StringView text,
                                  Containers::ArrayView<const Utils::TagReplacement> given);

} // namespace VespermoorEngine::Host

#endif
