#include "DocumentScope.h"

#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Host::DocumentScope;

TEST(DocumentScopeTest, PathsLeadDown) {
    const char* const missing = "null is missing";
    const std::pair<const char*, const char*> rows[]{
        // clang-format off
        {"a", R"({"b":[1,{"c":null}],"":{"":3}})"}, {"a/b/0", "1"}, {"a/b/1/c", "null"},
        {"a//", "3"}, {"a/b/2", missing}, {"a/b/-1", missing}, {"a/b/+1", missing},
        {"a/b/1x", missing}, {"a/b/", missing}, {"a/b/0/c", missing}, {"x/y/z", missing},
        {"0", missing},
        // clang-format on
    };
    rapidjson::Document document = parse(R"({"a": {"b": [1, {"c": null}], "": {"": 3}}})");
    DocumentScope root{document};
    for (const auto& [path, expected] : rows) {
        Containers::Pointer<JsonObject> member = root.member(path);
        EXPECT_EQ(compact(member->value()) + (member->exists() ? "" : " is missing"), expected)
            << path;
    }
    EXPECT_TRUE(root.member("a")->member("b")->member("1/c")->exists());
    EXPECT_FALSE(root.member("x")->member("a")->exists());
}

TEST(DocumentScopeTest, WritesMakeWhatLacks) {
    struct Row {
        const char *document, *path;
        /* Empty where it cannot be made. */
        const char* expected;
    };
    const Row rows[]{
        // clang-format off
        {R"({"a": 1})", "a", R"({"a":7})"}, {R"({"a": {}})", "a/b/c", R"({"a":{"b":{"c":7}}})"},
        {"null", "a", R"({"a":7})"}, {"[1]", "1", "[1,7]"}, {"[1]", "-", "[1,7]"},
        {"[1]", "-/a", R"([1,{"a":7}])"}, {"[1]", "2", ""}, {"[1]", "a", ""},
        {R"({"a": "text"})", "a/b", ""},
        // clang-format on
    };
    for (const auto& [json, path, expected] : rows) {
        rapidjson::Document document = parse(json);
        DocumentScope root{document};
        Containers::Pointer<JsonObject> member = root.member(path);
        const bool canBeMade = static_cast<DocumentScope&>(*member).canBeMade();
        if (canBeMade) {
            member->mutableValue().SetInt(7);
            EXPECT_TRUE(member->exists());
            EXPECT_EQ(member->asInt(0), 7);
        }
        EXPECT_EQ(canBeMade ? compact(document) : "", expected) << json << ' ' << path;
    }
}

} // namespace
} // namespace VespermoorEngine::Test
