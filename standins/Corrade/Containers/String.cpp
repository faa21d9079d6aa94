#include "Corrade/Containers/String.h"

#include <algorithm>

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace {

void keep(char*, std::size_t) {}

} // namespace

char String::emptyText[1]{};

String String::nullTerminatedView(const StringView view) {
    if (!(view.flags() & StringViewFlag::NullTerminated))
        return String{view};
    String referring{const_cast<char*>(view.data()), view.size(), keep};
    referring._sizeAndGlobal |= std::size_t(view.flags() & StringViewFlag::Global);
    return referring;
}

String::String(const char* const data, const std::size_t size) : String{} {
    VESPERMOOR_STANDINS_ASSERT(data || !size,
                               "Containers::String: received a null string of size %zu", size);
    if (size) {
        *this = String{NoInit, size};
        std::copy_n(data, size, _data);
    }
}

String::String(NoInitT, const std::size_t size)
    : _data{new char[size + 1]}, _sizeAndGlobal{size}, _deleter{} {
    _data[size] = '\0';
}

String::String(char* const data, const std::size_t size, const Deleter deleter) noexcept
    : _data{data}, _sizeAndGlobal{size}, _deleter{deleter} {
    VESPERMOOR_STANDINS_ASSERT(
        data && !data[size],
        "Containers::String: can only take ownership of a non-null null-terminated array");
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade
