#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/System.h>

#include "Snippets.h"

using namespace Corrade;
using namespace VespermoorEngine;

void backUp(const Containers::StringView project, const Containers::StringView backup) {
    //! [copy]
    if (!copyRecursive(project, backup)) {
        Utility::Error{} << "Not all of" << project << "could be copied";
    }
    //! [copy]
}

void discard(const Containers::StringView asset) {
    //! [trash]
    /* Without a trash the file is deleted for good, so ask the user first. */
    if (!findTrashPath()) {
        Utility::Debug{} << "This cannot be undone";
        return;
    }
    if (!moveToTrash({asset})) {
        Utility::Error{} << asset << "stays";
    }
    //! [trash]
}

void openScene(const Containers::StringView folder) {
    //! [dialog]
    for (const Containers::String& scene : openFileDialog(
             "Open a scene", folder, {"Scenes", "*.json", "All files", "*"}, /*multiple*/ false)) {
        Utility::Debug{} << "opening" << Utility::Path::split(scene).second();
    }
    //! [dialog]
}

void countScenes(const Containers::StringView project) {
    //! [capture]
    /* A fixed command, without any text of the user. The folder must contain no character with a
       meaning between the shell's double quotes. */
    for (const char character : project) {
        if (character == '"' || character == '$' || character == '`' || character == '\\') {
            Utility::Error{} << "The shell would not take" << project << "as it is";
            return;
        }
    }
    Containers::String output;
    const int status = runShellCommandCapture("ls *.json | wc -l", output, project);
    if (status == 0) {
        Utility::Debug{Utility::Debug::Flag::NoNewlineAtTheEnd} << "scenes:" << output;
    }
    //! [capture]
}
