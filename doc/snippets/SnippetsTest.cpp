#include "Snippets.h"

#include <cstdio>

#include <Corrade/Containers/StringStl.h>

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

TEST_P(Snippets, PrintWhatThePagesSay) {
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
    {"renderExamples", [](const TemporaryDirectory&) { EXPECT_TRUE(renderExamples()); }, ""},
};

INSTANTIATE_TEST_SUITE_P(Rows, Snippets, testing::ValuesIn(rows), rowName<Row>);

} // namespace

} // namespace VespermoorEngine::Test
