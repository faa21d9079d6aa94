#ifndef Vespermoor_Host_TagRegions_h
#define Vespermoor_Host_TagRegions_h

#include <Corrade/Containers/String.h>
#include <VespermoorEditor/Utils/String.h>

namespace VespermoorEngine::Host {

/**
 * @brief The @p text of the file @p path with the content of its tagged regions replaced.
 *
 * Throws @ref Failure where tags are missing or overlap. The library leaves out a region of which
 * neither tag is there; here that is an error, since somebody asked for it by name.
 */
Containers::String replaceRegions(Containers::StringView path, Containers::StringView text,
                                  Containers::ArrayView<const Utils::TagReplacement> replacements);

} // namespace VespermoorEngine::Host

#endif
