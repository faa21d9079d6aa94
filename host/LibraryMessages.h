#ifndef Vespermoor_Host_LibraryMessages_h
#define Vespermoor_Host_LibraryMessages_h

#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <Corrade/Utility/Debug.h>

#include "ErrorQueue.h"

namespace VespermoorEngine::Host {

/**
 * @brief Captures the library's `Warning` and `Error` output while it lives.
 *
 * At the end the messages go to an @ref ErrorQueue, each once with a count. Messages about vanished
 * entries are left out: that is normal in a tree that others work in.
 */
class LibraryMessages : private std::streambuf {
public:
    explicit LibraryMessages(ErrorQueue& errors);
    ~LibraryMessages() override;
    LibraryMessages(const LibraryMessages&) = delete;
    LibraryMessages& operator=(const LibraryMessages&) = delete;

    /** @brief Drops the messages so far and returns the system's reason from the first, if any. */
    std::string takeReason();

private:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

    ErrorQueue& errors;
    std::vector<std::pair<std::string, std::size_t>> messages;
    std::string unfinished;
    std::ostream stream;
    Corrade::Utility::Warning warning;
    Corrade::Utility::Error error;
};

} // namespace VespermoorEngine::Host

#endif
