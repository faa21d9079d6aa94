#include "DocumentScope.h"

#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Host::DocumentScope;

std::string compact(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
    value.Accept(writer);
    return buffer.GetString();
}

TEST(DocumentScopeTest, PathsLeadDown) {
    struct Row {
        const char* path;
        /* Null where there is nothing. */
        const char* expected;
    };
    const Row rows[]{
        {"a", "{\"b\":[1,{\"c\":null}],\"\":{\"\":3}}"},
        {"a/b/0", "1"},
        {"a/b/1/c", "null"},
        {"a//", "3"},
        {"a/b/2", nullptr},
        {"a/b/-1", nullptr},
        {"a/b/+1", nullptr},
        {"a/b/1x", nullptr},
        {"a/b/", nullptr},
        {"a/b/0/c", nullptr},
        {"x/y/z", nullptr},
        {"0", nullptr},
    };
    rapidjson::Document document;
    document.Parse(R"({"a": {"b": [1, {"c": null}], "": {"": 3}}})");
    DocumentScope root{document};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        Containers::Pointer<JsonObject> member = root.member(row.path);
        EXPECT_EQ(member->exists(), row.expected != nullptr);
        EXPECT_EQ(compact(member->value()), row.expected ? row.expected : "null");
    }
    EXPECT_TRUE(root.member("a")->member("b")->member("1/c")->exists());
    EXPECT_FALSE(root.member("x")->member("y")->exists());
}

TEST(DocumentScopeTest, WritesMakeWhatLacks) {
    struct Row {
        const char* document;
        const char* path;
        bool canBeMade;
        const char* expected;
    };
    const Row rows[]{
        {R"({"a": 1})", "a", true, R"({"a":7})"},
        {R"({"a": {}})", "a/b/c", true, R"({"a":{"b":{"c":7}}})"},
        {"null", "a", true, R"({"a":7})"},
        {"[1]", "1", true, "[1,7]"},
        {"[1]", "-", true, "[1,7]"},
        {"[1]", "-/a", true, R"([1,{"a":7}])"},
        {"[1]", "2", false, nullptr},
        {"[1]", "a", false, nullptr},
        {R"({"a": "text"})", "a/b", false, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string{row.document} + " " + row.path);
        rapidjson::Document document;
        document.Parse(row.document);
        DocumentScope root{document};
        Containers::Pointer<JsonObject> member = root.member(row.path);
        EXPECT_EQ(static_cast<DocumentScope&>(*member).canBeMade(), row.canBeMade);
        if (row.canBeMade) {
            member->mutableValue().SetInt(7);
            EXPECT_EQ(compact(document), row.expected);
            EXPECT_TRUE(member->exists());
            EXPECT_EQ(member->asInt(0), 7);
        }
    }
}

} // namespace
} // namespace VespermoorEngine::Test
