#include "Corrade/Utility/Debug.h"

#include <array>
#include <iostream>
#include <limits>
#include <string_view>
#include <type_traits>

#include "Corrade/Containers/StringView.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace {

/* The current output of each channel: its default one or the innermost redirection. */
thread_local std::array<std::ostream*, 3> outputs{&std::cout, &std::cerr, &std::cerr};

} // namespace

std::ostream* Debug::defaultOutput() {
    return &std::cout;
}
std::ostream* Warning::defaultOutput() {
    return &std::cerr;
}
std::ostream* Error::defaultOutput() {
    return &std::cerr;
}

Debug::Debug(Channel channel, std::ostream* output, Flags flags)
    : _output{output},
      _previousOutput{outputs[std::size_t(channel)]},
      _channel{channel},
      _flags{flags} {
    outputs[std::size_t(channel)] = output;
}

Debug::Debug(Channel channel, Flags flags) : Debug{channel, outputs[std::size_t(channel)], flags} {}

Debug::~Debug() {
    if (_output && _written && !(_flags & Flag::NoNewlineAtTheEnd))
        *_output << std::endl;
    outputs[std::size_t(_channel)] = _previousOutput;
}

void Debug::nospace(Debug& debug) {
    debug._spaceBefore = false;
}

template <class T>
Debug& Debug::print(const T& value) {
    if (!_output)
        return *this;
    if (_spaceBefore)
        *_output << ' ';
    if constexpr (std::is_floating_point_v<T>)
        _output->precision(std::numeric_limits<T>::digits10);
    *_output << value;
    _spaceBefore = _written = true;
    return *this;
}

Debug& Debug::operator<<(Modifier modifier) {
    modifier(*this);
    return *this;
}
Debug& Debug::operator<<(const char* value) {
    return print(value ? value : "");
}
Debug& Debug::operator<<(Containers::StringView value) {
    return print(std::string_view{value.data(), value.size()});
}
Debug& Debug::operator<<(bool value) {
    return print(value ? "true" : "false");
}
Debug& Debug::operator<<(int value) {
    return print(value);
}
Debug& Debug::operator<<(unsigned long value) {
    return print(value);
}
Debug& Debug::operator<<(float value) {
    return print(value);
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
