/* A host in one page: keeps the title of a scene up to date while the scene is edited.

   Usage: scene-host FOLDER, which contains scene.json and title.tmpl. */

#include <cstdio>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/FileWatch.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/Template.h>

#include "SceneValue.h"

using namespace Corrade;
using namespace VespermoorEngine;

namespace {

Containers::Optional<rapidjson::Document> readScene(const Containers::StringView path) {
    ValueOrError<rapidjson::Document> scene = RapidJsonUtils::parseJsonFile(path);
    if (!scene) {
        Utility::Error{} << scene.error();
        return {};
    }
    return std::move(scene).value();
}

//! [title]
/* Empty if the template or the scene is invalid, and prints the reason. */
Containers::String title(const Containers::StringView templatePath,
                         const Containers::StringView scenePath) {
    const Containers::Optional<Containers::String> source = Utility::Path::readString(templatePath);
    Containers::Optional<rapidjson::Document> scene = readScene(scenePath);
    if (!source || !scene) {
        return {};
    }
    SceneValue root{*scene};
    return Template{*source}.render(root);
}
//! [title]

//! [edit]
/* The edit after the user hides everything and marks the scene. */
bool hideScene(const Containers::StringView path) {
    Containers::Optional<rapidjson::Document> scene = readScene(path);
    if (!scene) {
        return false;
    }
    SceneValue root{*scene};
    root.member("scene/visible")->setBool(false);
    root.member("scene/tags")->pushBackStringUnique("hidden");
    return saveScene(*scene, path);
}
//! [edit]

} // namespace

int main(const int argc, const char* const* const argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: scene-host FOLDER\n");
        return 2;
    }
    const Containers::String scenePath = Utility::Path::join(argv[1], "scene.json");
    const Containers::String templatePath = Utility::Path::join(argv[1], "title.tmpl");

    //! [watch]
    bool stale = true;
    const auto onChange = [&stale](const Containers::StringView path, FileWatch::Event) {
        Utility::Debug{} << "changed:" << Utility::Path::split(path).second();
        stale = true;
    };
    FileWatch files;
    for (const Containers::StringView file : {scenePath, templatePath}) {
        if (!files.watch(file, FileWatch::Callback{DefaultInit, onChange})) {
            return 1;
        }
    }
    /* Two ticks of an editor, with an edit in between. */
    for (int tick = 0; tick != 2; ++tick) {
        files.update();
        if (stale) {
            Utility::Debug{} << title(templatePath, scenePath);
            stale = false;
        }
        if (tick == 0 && !hideScene(scenePath)) {
            return 1;
        }
    }
    //! [watch]
}
