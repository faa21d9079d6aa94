#include "Snippets.h"

#include <cstdio>
#include <cstdlib>

#include <Corrade/Containers/StringStl.h>

#include "Json.h"
#include "SceneValue.h"
#include "Support.h"

namespace VespermoorEngine::Test {

namespace {

constexpr const char* scene = R"({"scene": {"name": "Harbour", "visible": true, "scale": 0.5}})";

struct Row {
    const char* name;
    void (*run)(const TemporaryDirectory& d);
    const char* output;
};

class Snippets : public testing::TestWithParam<Row> {};

TEST_P(Snippets, PrintTheDocumentedOutput) {
    const TemporaryDirectory directory;
    writeFile(directory / "scene.json", scene);
    const Messages messages;
    std::ostringstream printed;
    {
        const Corrade::Utility::Debug redirected{&printed};
        GetParam().run(directory);
    }
    EXPECT_EQ(printed.str(), GetParam().output);
    EXPECT_EQ(messages.text(), "");
}

const Row rows[]{
    {"readJson", [](const TemporaryDirectory& d) { readJson(d / "scene.json"); },
     "Harbour\n0.5\n1\n"},
    {"renderTemplate", [](const TemporaryDirectory& d) { renderTemplate(d / "scene.json"); },
     "Harbour, visible\n"},
    {"renderAfterWriteJson",
     [](const TemporaryDirectory& d) {
         writeJson(d / "scene.json");
         renderTemplate(d / "scene.json");
     },
     "Harbour\n"},
    {"watchFolder", [](const TemporaryDirectory& d) { watchFolder(d.path(), d / "scene.json"); },
     "FileWatch::Event::Modify scene.json\n"},
    {"watchForever",
     [](const TemporaryDirectory& d) {
         writeFile(d / "folder/gone", "");
         ASSERT_EQ(std::remove((d / "folder/gone").data()), 0);
         watchForever(d / "folder");
     },
     "first\nsecond\n"},
    {"replaceRegion", [](const TemporaryDirectory&) { replaceRegion(); },
     "int a; /*begin*/ int made; /*end*/ int b;\n"},
    {"convertNames", [](const TemporaryDirectory&) { convertNames(); },
     "xml-parser PointLight\nfound at 2\n"},
    {"findData",
     [](const TemporaryDirectory& d) {
         writeFile(d / "editor/shaders/lit.glsl", "");
         findData(d / "editor/bin");
     },
     "data in editor\n"},
    {"addFog", [](const TemporaryDirectory& d) { addFog(d / "scene.json"); },
     "0\nstill missing\n0.25\n"},
    {"readTexture", [](const TemporaryDirectory&) { readTexture("walls/~old"); }, "old.png\n"},
    {"followScene", [](const TemporaryDirectory& d) { followScene(d / "scene.json"); },
     "Harbour\nLighthouse\n"},
    {"replaceLines", [](const TemporaryDirectory&) { replaceLines("// [a]\n// [/a]\n"); },
     "// [a]\nint made;\n// [/a]\n\n"},
    {"replaceLinesOfWindows",
     [](const TemporaryDirectory&) { replaceLines("// [a]\r\nold\r\n// [/a]\r\n"); },
     "// [a]\r\nint made;\r\n// [/a]\r\n\n"},
    {"backUp",
     [](const TemporaryDirectory& d) {
         writeFile(d / "project/maps/a.json", "{}");
         backUp(d / "project", d / "backup");
         EXPECT_EQ(readFile(d / "backup/maps/a.json"), "{}");
     },
     ""},
    {"discardWithoutTrash",
     [](const TemporaryDirectory& d) {
         setenv("XDG_DATA_HOME", d.path().data(), 1);
         discard(d / "scene.json");
         EXPECT_EQ(readFile(d / "scene.json"), scene);
     },
     "This cannot be undone\n"},
    {"discard",
     [](const TemporaryDirectory& d) {
         setenv("XDG_DATA_HOME", d.path().data(), 1);
         fs::create_directories(d / "Trash/files");
         discard(d / "scene.json");
         EXPECT_EQ(readFile(d / "Trash/files/scene.json"), scene);
     },
     ""},
    {"openScene",
     [](const TemporaryDirectory& d) {
         writeFile(d / "bin/zenity", "#!/bin/sh\necho /maps/harbour.json\n");
         fs::permissions(d / "bin/zenity", fs::perms::owner_all);
         setenv("PATH", (d / "bin:" + std::getenv("PATH")).data(), 1);
         setenv("XDG_SESSION_DESKTOP", "gnome", 1);
         openScene(d.path());
     },
     "opening harbour.json\n"},
    {"countScenes", [](const TemporaryDirectory& d) { countScenes(d.path()); }, "scenes: 1\n"},
    {"renderExamples", [](const TemporaryDirectory&) { EXPECT_TRUE(renderExamples()); }, ""},
};

TEST(SceneValue, AddressesNamesWithTildes) {
    rapidjson::Document document = parse(R"({"scene": {"a~b": 1, "a~1b": 2, "a": {"b": 3}}})");
    SceneValue root{document};
    root.member("scene/a~b")->setBool(false);
    root.member("scene")->member("a~1b")->setBool(true);
    EXPECT_FALSE(root.member("nothing~here")->exists());
    EXPECT_EQ(compact(document), R"({"scene":{"a~b":false,"a~1b":true,"a":{"b":3}}})");
}

TEST(SaveScene, ReplacesTheFileAsAWholeOrNotAtAll) {
    const TemporaryDirectory directory;
    const rapidjson::Document document = parse("{}");
    writeFile(directory / "scene.json", "before");
    fs::create_hard_link(directory / "scene.json", directory / "old.json");
    EXPECT_TRUE(saveScene(document, directory / "scene.json"));
    EXPECT_EQ(readFile(directory / "scene.json") + readFile(directory / "old.json"), "{}before");
    fs::create_symlink("/dev/full", directory / "scene.json.new");
    EXPECT_FALSE(saveScene(parse("[]"), directory / "scene.json"));
    EXPECT_EQ(readFile(directory / "scene.json"), "{}");
    EXPECT_FALSE(fs::is_symlink(directory / "scene.json.new"));
}

INSTANTIATE_TEST_SUITE_P(Rows, Snippets, testing::ValuesIn(rows), rowName<Row>);

} // namespace

} // namespace VespermoorEngine::Test
