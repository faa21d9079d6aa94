#include "ErrorQueue.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace VespermoorEngine::Host {

namespace {

constexpr std::size_t capacity = 65536;

/* Polls instead of setting O_NONBLOCK: standard error is shared, so the flag would apply to other
   processes too. */
bool isReady() {
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    return poll(&standardError, 1, 0) > 0;
}

/* A writable pipe takes this many bytes at once, atomically. Only whole lines are written, so lines
   of other processes cannot split them. */
std::size_t firstPiece(const std::string& lines) {
    if (lines.size() <= PIPE_BUF) {
        return lines.size();
    }
    const std::size_t lineEnd = lines.rfind('\n', PIPE_BUF - 1);
    return lineEnd == std::string::npos ? PIPE_BUF : lineEnd + 1;
}

} // namespace

void ErrorQueue::addLine(const Containers::StringView text) {
    const std::string line = escaped(text) + '\n';
    if (lines.size() + line.size() > capacity) {
        ++dropped;
    } else {
        lines += line;
    }
}

void ErrorQueue::addError(const Containers::StringView message) {
    addLine("vespermoor-utils: " + std::string{message.data(), message.size()});
}

void ErrorQueue::flush() {
    while (!lines.empty() && isReady() && writeSome()) {
        if (lines.empty() && dropped != 0) {
            addError(std::to_string(std::exchange(dropped, 0)) +
                     " messages are lost, since nobody read standard error");
        }
    }
}

/* Returns false if the pipe is full or the write failed. */
bool ErrorQueue::writeSome() {
    const ssize_t written = write(STDERR_FILENO, lines.data(), firstPiece(lines));
    if (written < 0) {
        return errno == EINTR;
    }
    lines.erase(0, std::size_t(written));
    return true;
}

} // namespace VespermoorEngine::Host
