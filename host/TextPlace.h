#ifndef Vespermoor_Host_TextPlace_h
#define Vespermoor_Host_TextPlace_h

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/**
 * @brief The place @p offset of the @p text in the file @p path, in the form `path:line:column`.
 *
 * Line and column count from 1, the column in bytes. An offset past the end counts as the end.
 */
Containers::String textPlace(Containers::StringView path, Containers::StringView text,
                             std::size_t offset);

} // namespace VespermoorEngine::Host

#endif
