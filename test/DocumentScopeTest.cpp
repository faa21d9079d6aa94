#include "DocumentScope.h"

#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

TEST(DocumentScopeTest, FollowsPaths) {
    rapidjson::Document document = parse(R"({"": {"x": "below"}, "a/b": "slash",
        "list": ["first", {"item1": "a", "item2": "b", "atem2": "c"}]})");
    const std::pair<const char*, const char*> rows[]{
        {"/x", "below"},     {"list/0", "first"},   {"list/1/item2", "b"},    {"list/2", nullptr},
        {"list/-", nullptr}, {"list/+0", nullptr},  {"list/00", nullptr},     {"list/0x", nullptr},
        {"list/", nullptr},  {"list/0/x", nullptr}, {"list/1/item", nullptr}, {"a/b", nullptr},
        {"x/y", nullptr},
    };
    for (const auto& [path, expected] : rows) {
        auto place = Host::DocumentScope{document}.member(path);
        EXPECT_EQ(place->exists(), expected != nullptr) << path;
        EXPECT_EQ(text(place->asString()), expected ? expected : "") << path;
    }
    /* Missing steps are created one after the other. */
    Host::DocumentScope{document}.member("new")->member("n1/n2")->mutableValue().SetInt(7);
    EXPECT_EQ(compact(document["new"]), R"({"n1":{"n2":7}})");
}

} // namespace
} // namespace VespermoorEngine::Test
