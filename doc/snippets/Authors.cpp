#include <cstring>
#include <string>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/FileWatch.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>
#include <VespermoorEditor/Utils/String.h>

#include "SceneValue.h"
#include "Snippets.h"

using namespace Corrade;
using namespace VespermoorEngine;

void addFog(const Containers::StringView scenePath) {
    ValueOrError<rapidjson::Document> scene = RapidJsonUtils::parseJsonFile(scenePath);
    if (!scene) {
        return;
    }
    //! [missing]
    SceneValue root{scene.value()};
    Containers::Pointer<JsonObject> density = root.member("scene/fog/density");
    Utility::Debug{} << density->asFloat(); /* Reading a missing value gives the default. */
    if (!density->exists()) {
        Utility::Debug{} << "still missing";
    }
    density->setFloat(0.25f); /* Writing creates "fog" and "density". */
    Utility::Debug{} << density->asFloat();
    //! [missing]
}

//! [escape]
/* The member `name` as a step of a JSON Pointer. */
std::string escaped(const Containers::StringView name) {
    std::string step;
    for (const char character : name) {
        if (character == '~') {
            step += "~0";
        } else if (character == '/') {
            step += "~1";
        } else {
            step += character;
        }
    }
    return step;
}
//! [escape]

void readTexture(const Containers::StringView name) {
    rapidjson::Document document;
    document.Parse(R"({"textures": {"walls/~old": "old.png"}})");
    //! [escape-use]
    const std::string pointer = "/textures/" + escaped(name);
    Utility::Debug{} << SceneValue{document, pointer}.asString();
    //! [escape-use]
}

//! [live]
/* A scene that follows its file. The callback captures `this`, so it cannot be moved. */
class LiveScene {
public:
    explicit LiveScene(const Containers::StringView path) : path{path} {
        /* Watch before the first read, or a save in between would be missed. */
        files.watch(path, FileWatch::Callback{
                              DefaultInit, [this](Containers::StringView, FileWatch::Event event) {
                                  stale = stale || event == FileWatch::Event::Modify;
                              }});
    }
    LiveScene(const LiveScene&) = delete;
    LiveScene& operator=(const LiveScene&) = delete;

    /* Returns whether there is a new document. */
    bool tick() {
        files.update();
        if (!stale) {
            return false;
        }
        stale = false;
        ValueOrError<rapidjson::Document> saved = RapidJsonUtils::parseJsonFile(path);
        if (!saved) {
            /* Half saved: the rest of the save is another change. Keep the old document. */
            return false;
        }
        document = std::move(saved).value();
        return true;
    }

    rapidjson::Document document;

private:
    Containers::String path;
    FileWatch files;
    bool stale = true;
};
//! [live]

void followScene(const Containers::StringView scenePath) {
    LiveScene scene{scenePath};
    const Containers::StringView saves[]{
        R"({"scene": {"name": "Harb)",
        R"({"scene": {"name": "Lighthouse"}})",
    };
    SceneValue name{scene.document, "/scene/name"};
    if (scene.tick()) {
        Utility::Debug{} << name.asString();
    }
    for (const Containers::StringView save : saves) {
        Utility::Path::write(scenePath, save);
        if (scene.tick()) {
            Utility::Debug{} << name.asString();
        }
    }
}

void replaceLines(const Containers::StringView text) {
    //! [lines]
    const bool windows = std::strstr(text.data(), "\r\n");
    const Containers::StringView begin = windows ? "// [a]\r\n" : "// [a]\n";
    const Containers::StringView content = windows ? "int made;\r\n" : "int made;\n";
    const Containers::Pair<Containers::String, bool> result =
        Utils::replaceTagContent(text, {Utils::TagReplacement{begin, "// [/a]", content}});
    //! [lines]
    if (result.second()) {
        Utility::Debug{} << result.first();
    }
}
