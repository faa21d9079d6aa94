#include "Failure.h"

#include <cstdio>

namespace VespermoorEngine::Host {

namespace {

struct Character {
    char32_t code;
    std::size_t size;
};

/* The first character of a non-empty text. A byte that begins no UTF-8 sequence is a character of
   its own, with the code it has in Latin-1, since old terminals read it so. */
Character firstCharacter(const Containers::StringView text) {
    const auto byte = [&](const std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t size = lead < 0xc2 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (size == 1 || lead > 0xf4 || text.size() < size) {
        return {lead, 1};
    }
    char32_t code = lead & (0xffu >> (size + 1));
    for (std::size_t i = 1; i != size; ++i) {
        if ((byte(i) & 0xc0) != 0x80) {
            return {lead, 1};
        }
        code = code << 6 | (byte(i) & 0x3f);
    }
    return {code, size};
}

/* Control characters, line separators, and marks that change the direction of text. */
bool isControl(const char32_t code) {
    constexpr struct {
        char32_t first, last;
    } ranges[]{{0x00, 0x1f},     {0x7f, 0x9f},     {0x61c, 0x61c},
               {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069}};
    for (const auto& range : ranges) {
        if (code >= range.first && code <= range.last) {
            return true;
        }
    }
    return false;
}

void appendEscape(std::string& text, const char c) {
    constexpr const char* digits = "0123456789abcdef";
    text += "\\x";
    text += digits[static_cast<unsigned char>(c) >> 4];
    text += digits[c & 15];
}

} // namespace

std::string escaped(Containers::StringView text) {
    std::string line;
    line.reserve(text.size());
    while (!text.isEmpty()) {
        const Character character = firstCharacter(text);
        for (const char c : text.prefix(character.size)) {
            if (isControl(character.code)) {
                appendEscape(line, c);
            } else {
                line += c;
            }
        }
        text = text.exceptPrefix(character.size);
    }
    return line;
}

void printError(const Containers::StringView message) {
    const std::string line = "vespermoor-utils: " + escaped(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

Failure::Failure(const Containers::StringView about, const Containers::StringView reason)
    : std::runtime_error{escaped(about) + ": " + escaped(reason)} {}

} // namespace VespermoorEngine::Host
