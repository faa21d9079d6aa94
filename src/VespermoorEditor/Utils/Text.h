#ifndef VespermoorEditor_Utils_Text_h
#define VespermoorEditor_Utils_Text_h

#include <cstddef>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "VespermoorEngine/Corrade.h"

/** @cond internal */
namespace VespermoorEngine::Implementation {

/* Data of `text`, or of the empty text for a view without data. RapidJSON and the standard library
   read the first byte of a text, however short it is. */
inline const char* dataOrEmpty(const Containers::StringView text) {
    return text.data() ? text.data() : "";
}

/* Moves the first `size` bytes of `buffer` into a string without copying them. `buffer` is empty
   afterwards. Unless it is empty already, it needs room for a terminator after those bytes. */
inline Containers::String takeString(Containers::Array<char>& buffer, const std::size_t size) {
    if (buffer.isEmpty()) {
        return {};
    }
    buffer[size] = '\0';
    const auto deleter = buffer.deleter();
    return Containers::String{buffer.release(), size, deleter};
}

} // namespace VespermoorEngine::Implementation
/** @endcond */

#endif
