#include "TextPlace.h"

#include <algorithm>

#include <Corrade/Utility/Format.h>

namespace VespermoorEngine::Host {

Containers::String textPlace(const Containers::StringView path, const Containers::StringView text,
                             const std::size_t offset) {
    const Containers::StringView before = text.prefix(std::min(offset, text.size()));
    const Containers::StringView newline = before.findLast('\n');
    const std::size_t line = 1 + std::size_t(std::count(before.begin(), before.end(), '\n'));
    const std::size_t column =
        1 + std::size_t(before.end() - (newline.data() ? newline.end() : before.begin()));
    return Corrade::Utility::format("{}:{}:{}", path, line, column);
}

} // namespace VespermoorEngine::Host
