#include "Corrade/Utility/Debug.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <ostream>
#include <streambuf>
#include <string>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/DebugStl.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace {

/* Where each channel goes just now: its default output or the innermost redirection. */
thread_local std::array<std::ostream*, 3> outputs{&std::cout, &std::cerr, &std::cerr};

/* Gathers text and hands it to the string at each flush, so that the string is never seen half
   changed and may be changed by its owner between two lines. */
class StringBuffer : public std::streambuf {
public:
    explicit StringBuffer(Containers::String& string) : _string(string) {}
    StringBuffer(const StringBuffer&) = delete;
    StringBuffer& operator=(const StringBuffer&) = delete;
    ~StringBuffer() override { flush(); }

private:
    void flush() {
        _string = Containers::StringView{_string} +
                  Containers::StringView{_pending.data(), _pending.size()};
        _pending.clear();
    }

    int sync() override {
        flush();
        return 0;
    }

    int_type overflow(int_type character) override {
        _pending += traits_type::to_char_type(character);
        return character;
    }

    std::streamsize xsputn(const char* data, std::streamsize size) override {
        _pending.append(data, std::size_t(size));
        return size;
    }

    Containers::String& _string;
    std::string _pending;
};

class StringStream : public std::ostream {
public:
    explicit StringStream(Containers::String& string) : std::ostream{nullptr}, _buffer{string} {
        rdbuf(&_buffer);
    }

private:
    StringBuffer _buffer;
};

} // namespace

void Debug::nospace(Debug& debug) {
    debug._immediateFlags |= Flag::NoSpace;
}

void Debug::newline(Debug& debug) {
    if (debug._output)
        *debug._output << std::endl;
    debug << nospace;
}

void Debug::space(Debug& debug) {
    debug << nospace << " " << nospace;
}

void Debug::packed(Debug& debug) {
    debug._immediateFlags |= Flag::Packed;
}

void Debug::hex(Debug& debug) {
    debug._immediateFlags |= Flag::Hex;
}

std::ostream* Debug::defaultOutput() {
    return &std::cout;
}
std::ostream* Warning::defaultOutput() {
    return &std::cerr;
}
std::ostream* Error::defaultOutput() {
    return &std::cerr;
}

std::ostream* Debug::output(Channel channel) {
    return outputs[std::size_t(channel)];
}
std::ostream* Debug::output() {
    return output(Channel::Debug);
}
std::ostream* Warning::output() {
    return Debug::output(Channel::Warning);
}
std::ostream* Error::output() {
    return Debug::output(Channel::Error);
}

Debug::Debug(Channel channel, std::ostream* output, Flags flags)
    : _output{output},
      _previousOutput{Debug::output(channel)},
      _channel{channel},
      _flags{flags},
      _immediateFlags{Flag::NoSpace} {
    outputs[std::size_t(channel)] = output;
}

Debug::Debug(Channel channel, Flags flags) : Debug{channel, output(channel), flags} {}

Debug::Debug(Channel channel, Containers::String* output, Flags flags)
    : Debug{channel, output ? new StringStream{*output} : nullptr, flags} {
    _ownedOutput = _output;
}

Debug::Debug(Flags flags) : Debug{Channel::Debug, flags} {}
Debug::Debug(std::ostream* output, Flags flags) : Debug{Channel::Debug, output, flags} {}
Debug::Debug(std::nullptr_t, Flags flags) : Debug{static_cast<std::ostream*>(nullptr), flags} {}
Debug::Debug(Containers::String* output, Flags flags) : Debug{Channel::Debug, output, flags} {}

Debug::~Debug() {
    finish();
}

void Debug::finish() {
    if (_output && _written && !(_flags & Flag::NoNewlineAtTheEnd))
        *_output << std::endl;
    outputs[std::size_t(_channel)] = _previousOutput;
    delete _ownedOutput;
}

Fatal::~Fatal() {
    finish();
    std::exit(_exitCode);
}

Debug::Flags Debug::immediateFlags() const {
    return _flags | _immediateFlags;
}

template <class T>
Debug& Debug::print(const T& value) {
    if (!_output)
        return *this;
    if (!(immediateFlags() & Flag::NoSpace))
        *_output << ' ';
    *_output << value;
    _immediateFlags = {};
    _written = true;
    return *this;
}

template <class T>
Debug& Debug::printInteger(T value) {
    if (!_output || !(immediateFlags() & Flag::Hex))
        return print(value);
    print("0x");
    *_output << std::hex << value << std::dec;
    return *this;
}

template <class T>
Debug& Debug::printFloat(T value, int digits) {
    if (_output)
        _output->precision(digits);
    return print(value);
}

Debug& Debug::operator<<(Modifier modifier) {
    modifier(*this);
    return *this;
}

/* An unformatted write: the text may hold zeros and takes no notice of a field width. */
Debug& Debug::operator<<(Containers::StringView value) {
    if (!print("")._output)
        return *this;
    _output->write(value.data(), std::streamsize(value.size()));
    return *this;
}

Debug& Debug::operator<<(const char* value) {
    return print(value ? value : "");
}
Debug& Debug::operator<<(Containers::MutableStringView value) {
    return *this << Containers::StringView{value};
}
Debug& Debug::operator<<(const Containers::String& value) {
    return *this << Containers::StringView{value};
}
Debug& Debug::operator<<(const void* value) {
    return *this << hex << reinterpret_cast<std::uintptr_t>(value);
}
Debug& Debug::operator<<(std::nullptr_t) {
    return print("nullptr");
}
Debug& Debug::operator<<(bool value) {
    return print(value ? "true" : "false");
}
Debug& Debug::operator<<(char value) {
    return printInteger(int(value));
}
Debug& Debug::operator<<(unsigned char value) {
    return printInteger(int(value));
}
Debug& Debug::operator<<(int value) {
    return printInteger(value);
}
Debug& Debug::operator<<(long value) {
    return printInteger(value);
}
Debug& Debug::operator<<(long long value) {
    return printInteger(value);
}
Debug& Debug::operator<<(unsigned value) {
    return printInteger(value);
}
Debug& Debug::operator<<(unsigned long value) {
    return printInteger(value);
}
Debug& Debug::operator<<(unsigned long long value) {
    return printInteger(value);
}

Debug& Debug::operator<<(float value) {
    return printFloat(value, std::numeric_limits<float>::digits10);
}
Debug& Debug::operator<<(double value) {
    return printFloat(value, std::numeric_limits<double>::digits10);
}
Debug& Debug::operator<<(long double value) {
    return printFloat(value, std::numeric_limits<long double>::digits10);
}

Debug& operator<<(Debug& debug, Implementation::DebugOstreamFallback&& value) {
    return debug.print(value);
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
