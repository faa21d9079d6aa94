#include <cstdint>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/EditorUtils.h>
#include <VespermoorEditor/Utils/FileWatch.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/String.h>
#include <VespermoorEditor/Utils/Template.h>

#include "SceneValue.h"
#include "Snippets.h"

using namespace Corrade;
using namespace VespermoorEngine;

void readJson(const Containers::StringView scenePath) {
    //! [json]
    ValueOrError<rapidjson::Document> scene = RapidJsonUtils::parseJsonFile(scenePath);
    if (!scene) {
        Utility::Error{} << scene.error();
        return;
    }
    SceneValue root{scene.value()};
    Utility::Debug{} << root.member("scene/name")->asString();
    Utility::Debug{} << root.member("scene/scale")->asFloat();
    Utility::Debug{} << root.member("scene/layers")->asInt(1); /* Missing, so the default. */
    //! [json]
}

void writeJson(const Containers::StringView scenePath) {
    ValueOrError<rapidjson::Document> scene = RapidJsonUtils::parseJsonFile(scenePath);
    if (!scene) {
        return;
    }
    //! [json-write]
    SceneValue root{scene.value()};
    root.member("scene/visible")->setBool(false);
    root.member("scene/tags")->pushBackStringUnique("hidden");
    if (!saveScene(scene.value(), scenePath)) {
        Utility::Error{} << "Not saved:" << scenePath;
    }
    //! [json-write]
}

void renderTemplate(const Containers::StringView scenePath) {
    ValueOrError<rapidjson::Document> scene = RapidJsonUtils::parseJsonFile(scenePath);
    if (!scene) {
        return;
    }
    //! [template]
    Template title{"{{ scene.name }}{{ if scene.visible }}, visible{{ end }}"};
    SceneValue root{scene.value()};
    Utility::Debug{} << title.render(root);
    //! [template]
}

void watchFolder(const Containers::StringView folder, const Containers::StringView saved) {
    //! [watch]
    FileWatch files;
    const int id =
        files.watch(folder, FileWatch::Callback{DefaultInit, [](const Containers::StringView path,
                                                                const FileWatch::Event event) {
                                                    Utility::Debug{}
                                                        << event
                                                        << Utility::Path::split(path).second();
                                                }});
    if (id == 0) {
        Utility::Error{} << "Nothing to watch at" << folder;
    }
    Utility::Path::write(saved, Containers::StringView{"changed"});
    files.update(); /* On every tick. */
    files.remove(id);
    //! [watch]
}

void replaceRegion() {
    //! [tags]
    const Containers::Pair<Containers::String, bool> result =
        Utils::replaceTagContent("int a; /*begin*/ old /*end*/ int b;",
                                 {Utils::TagReplacement{"/*begin*/", "/*end*/", " int made; "}});
    if (!result.second()) {
        Utility::Error{} << result.first();
        return;
    }
    Utility::Debug{} << result.first();
    //! [tags]
}

void convertNames() {
    //! [case]
    Utility::Debug{} << Utils::toKebapCase("XMLParser") << Utils::toBigCamelCase("point light");
    const std::uint64_t found = Utils::caseInsensitiveSearch("a Point Light", "point");
    if (found != ~std::uint64_t{}) {
        Utility::Debug{} << "found at" << found;
    }
    //! [case]
}

void findData(const Containers::StringView programs) {
    //! [desktop]
    /* Without an argument it starts at Utils::executablesPath(), the directory of the running
       program. */
    if (const Containers::Optional<Containers::String> data = Utils::findEditorRoot(programs)) {
        Utility::Debug{} << "data in" << Utility::Path::split(*data).second();
    }
    //! [desktop]
}
