#include "LibraryMessages.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace VespermoorEngine::Host {

namespace {

/* Corrade's messages end with the reason in brackets, the library's without them. */
bool endsWithReason(Containers::StringView message, const int error) {
    if (message.hasSuffix(')')) {
        message = message.exceptSuffix(1);
    }
    return message.hasSuffix(std::strerror(error));
}

bool tellsOfVanishedEntry(const Containers::StringView message) {
    return endsWithReason(message, ENOENT) || endsWithReason(message, ENOTDIR);
}

} // namespace

LibraryMessages::LibraryMessages(ErrorQueue& errors)
    : errors{errors}, stream{this}, warning{&stream}, error{&stream} {}

LibraryMessages::~LibraryMessages() {
    for (const auto& [message, count] : messages) {
        errors.addLine(count == 1 ? message : message + " (" + std::to_string(count) + " times)");
    }
}

std::string LibraryMessages::takeReason() {
    const auto taken = std::exchange(messages, {});
    const std::string first = taken.empty() ? "" : taken.front().first;
    const std::size_t colon = first.rfind(": ");
    return colon == std::string::npos ? first : first.substr(colon + 2);
}

LibraryMessages::int_type LibraryMessages::overflow(const int_type c) {
    unfinished += traits_type::to_char_type(c);
    return c;
}

std::streamsize LibraryMessages::xsputn(const char* const text, const std::streamsize size) {
    unfinished.append(text, std::size_t(size));
    return size;
}

/* The end of a message, not of a line: names can contain newlines. */
int LibraryMessages::sync() {
    std::string message = std::exchange(unfinished, {});
    if (!message.empty() && message.back() == '\n') {
        message.pop_back();
    }
    if (!messages.empty() && messages.back().first == message) {
        ++messages.back().second;
    } else if (!message.empty() && !tellsOfVanishedEntry(message)) {
        messages.emplace_back(std::move(message), 1);
    }
    return 0;
}

} // namespace VespermoorEngine::Host
