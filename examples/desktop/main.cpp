/* A host that uses the services of the desktop: copies a folder, counts the files of the copy with
   a shell command, and moves the copy to the trash.

   Usage: desktop-host FOLDER COPY */

#include <cstdio>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Utility/Debug.h>
#include <VespermoorEditor/Utils/System.h>

using namespace Corrade;
using namespace VespermoorEngine;

int main(const int argc, const char* const* const argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: desktop-host FOLDER COPY\n");
        return 2;
    }
    const Containers::StringView copy{argv[2]};
    if (!copyRecursive(argv[1], copy)) {
        return 1;
    }
    Containers::String count;
    if (runShellCommandCapture("find . -type f | wc -l", count, copy) != 0) {
        return 1;
    }
    Utility::Debug{Utility::Debug::Flag::NoNewlineAtTheEnd} << "files:" << count;
    return moveToTrash({copy}) ? 0 : 1;
}
