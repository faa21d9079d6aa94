#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/FileWatch.h>

#include "Snippets.h"

using namespace Corrade;
using namespace VespermoorEngine;

//! [fresh]
/* Watches a folder that other programs may delete and recreate. */
class FolderWatch {
public:
    explicit FolderWatch(const Containers::StringView folder) : folder{folder} { begin(); }

    void tick() {
        if (!Utility::Path::exists(folder)) {
            files = Containers::NullOpt;
        } else if (!files) {
            begin();
        }
        if (files) {
            files->update();
        }
    }

private:
    void begin() {
        files.emplace();
        files->watch(folder, FileWatch::Callback{
                                 DefaultInit, [](Containers::StringView path, FileWatch::Event) {
                                     Utility::Debug{} << Utility::Path::split(path).second();
                                 }});
    }

    Containers::String folder;
    Containers::Optional<FileWatch> files;
};
//! [fresh]

void watchForever(const Containers::StringView folder) {
    FolderWatch watch{folder};
    Utility::Path::write(Utility::Path::join(folder, "first"), Containers::StringView{});
    watch.tick();
    Utility::Path::remove(Utility::Path::join(folder, "first"));
    Utility::Path::remove(folder);
    watch.tick();
    Utility::Path::make(folder);
    watch.tick();
    Utility::Path::write(Utility::Path::join(folder, "second"), Containers::StringView{});
    watch.tick();
}
