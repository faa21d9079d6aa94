#include "VespermoorEditor/Utils/JsonObject.h"

#include <csignal>
#include <limits>

#include "DocumentScope.h"
#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Containers::StringView;
using testing::ElementsAre;

/* A document and the accessor of its root, which only reads. */
struct Json {
    explicit Json(const char* const json) : document{parse(json)} {}

    const JsonObject* operator->() const { return &scope; }

    rapidjson::Document document;
    Host::DocumentScope scope{document};
};

TEST(JsonObjectTest, SizesAndBooleans) {
    EXPECT_EQ(Json("[1, 2, 3]")->size(), 3);
    EXPECT_EQ(Json(R"({"a": 1, "b": 2})")->size(), 2);
    EXPECT_TRUE(Json("true")->asBool());
    for (const char* const json : {"null", "false", "1", "\"true\""}) {
        EXPECT_EQ(Json(json)->size(), 0) << json;
        EXPECT_FALSE(Json(json)->asBool()) << json;
    }
}

TEST(JsonObjectTest, Numbers) {
    struct Row {
        const char* json;
        int asInt;
        unsigned int asUnsignedInt;
        float asFloat;
    };
    const Row rows[]{
        // clang-format off
        {"null", -7, 9, 0.0f}, {"0", 0, 0, 0.0f}, {"-1", -1, 4294967295, -1.0f},
        {"4294967295", -1, 4294967295, 4294967295.0f}, {"4294967301", 5, 5, 4294967301.0f},
        {"-4294967301", -5, 4294967291, -4294967301.0f},
        {"18446744073709551615", -1, 4294967295, 18446744073709551615.0f},
        /* Through double first: rounding to float at once would give 2^60 + 2^37. */
        {"1152921573326323713", 1, 1, 1152921504606846976.0f},
        // clang-format on
    };
    for (const auto& [json, asInt, asUnsignedInt, asFloat] : rows) {
        EXPECT_EQ(Json(json)->asInt(-7), asInt) << json;
        EXPECT_EQ(Json(json)->asUnsignedInt(9), asUnsignedInt) << json;
        EXPECT_EQ(Json(json)->asFloat(), asFloat) << json;
    }
}

TEST(JsonObjectTest, FixedSizeTypes) {
    EXPECT_EQ(Json("[1, 2.5]")->asVector2(), (Magnum::Vector2{1.0f, 2.5f}));
    EXPECT_EQ(Json("[1, -2, 3]")->asVector3(), (Magnum::Vector3{1.0f, -2.0f, 3.0f}));
    EXPECT_EQ(Json("[1, 2, 3, 4]")->asVector4(), (Magnum::Vector4{1.0f, 2.0f, 3.0f, 4.0f}));
    EXPECT_EQ(Json("[-1, 2]")->asVector2i(), (Magnum::Vector2i{-1, 2}));
    EXPECT_EQ(Json("[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16]")->asMatrix4()[3],
              (Magnum::Vector4{13.0f, 14.0f, 15.0f, 16.0f}));
    const auto quaternion = Json("[0.5, -0.5, 0.25, 0.75, 99]")->asQuaternion();
    EXPECT_EQ(quaternion.vector(), (Magnum::Vector3{0.5f, -0.5f, 0.25f}));
    EXPECT_EQ(quaternion.scalar(), 0.75f);
}

TEST(JsonObjectTest, AllocatedArrays) {
    EXPECT_THAT(elements(Json("[0.1, null, true, \"1\", -1e300]")->asFloatArray()),
                ElementsAre(0.1f, 0.0f, 0.0f, 0.0f, -std::numeric_limits<float>::infinity()));
    EXPECT_THAT(elements(Json("[-1, 4294967301]")->asIntArray()), ElementsAre(-1, 5));
    EXPECT_THAT(elements(Json("[-1, 2]")->asUnsignedIntArray()), ElementsAre(4294967295, 2));
    EXPECT_EQ(Json("null")->asFloatArray().data(), nullptr);
    EXPECT_EQ(Json("null")->asStringArray().data(), nullptr);
}

TEST(JsonObjectTest, StringsAreViewsOfTheDocumentOrCopies) {
    const Json json{R"(["a\u0000b", "a string that is too long to stand in the value itself", 5])"};
    const Containers::Array<StringView> views = json->asStringViewArray();
    const Containers::Array<Containers::String> strings = json->asStringArray();
    ASSERT_EQ(views.size(), 3);
    for (const rapidjson::SizeType i : {0, 1}) {
        for (const StringView view : {views[i], json->elementAsString(i)}) {
            EXPECT_EQ(view.data(), json.document[i].GetString());
            EXPECT_EQ(view.size(), json.document[i].GetStringLength());
            EXPECT_EQ(view.flags(), Containers::StringViewFlag::NullTerminated);
        }
        EXPECT_EQ(strings[i], views[i]);
        EXPECT_NE(strings[i].data(), views[i].data());
    }
    EXPECT_EQ(views[2].data(), nullptr);
    const Json single{R"("a\u0000b")"};
    EXPECT_EQ(single->asString().data(), single.document.GetString());
    EXPECT_EQ(single->asString().size(), 3);
    EXPECT_FALSE(single->asString().flags());
}

TEST(JsonObjectTest, WhatAWriteMadeIsThereForTheNext) {
    Json json{"{}"};
    Containers::Pointer<JsonObject> member = json.scope.member("a/b");
    member->pushBackString("x");
    member->pushBackString("y");
    EXPECT_EQ(compact(json.document), R"({"a":{"b":["x","y"]}})");
}

float floats[]{7.0f, 7.0f, 7.0f};
int ints[]{7, 7, 7};
unsigned int unsignedInts[]{7, 7, 7};
StringView strings[3];

/* Takes the place of the abort: the process ends with 3 where nothing was written until then. */
void exitUnlessWritten(int) {
    std::_Exit(floats[0] == 7.0f && ints[0] == 7 && unsignedInts[0] == 7 && !strings[0] ? 3 : 4);
}

TEST(JsonObjectDeathTest, ContractsAbortBeforeAnythingIsWritten) {
    using J = const JsonObject;
    struct Row {
        const char* json;
        void (*read)(J&);
        const char *function, *reason;
    };
    const char* const sizes = "Sizes do not match";
    const Row rows[]{
        // clang-format off
        {"[1, 2]", [](J& o) { o.asFloatArray(floats); }, "asFloatArray", sizes},
        {"[1, 2, 3, 4]", [](J& o) { o.asFloatArray(floats); }, "asFloatArray", sizes},
        {"null", [](J& o) { o.asFloatArray(floats); }, "asFloatArray", sizes},
        {"[1, 2]", [](J& o) { o.asIntArray(ints); }, "asIntArray", sizes},
        {"[1, 2]", [](J& o) { o.asUnsignedIntArray(unsignedInts); }, "asUnsignedIntArray", sizes},
        {"[\"a\"]", [](J& o) { o.asStringArray(strings); }, "asStringArray", sizes},
        {"[1, 2, 3]", [](J& o) { o.asQuaternion(); }, "asQuaternion", sizes},
        {"{}", [](J& o) { o.elementAsString(0); }, "elementAsString", "Not an array"},
        {"[]", [](J& o) { o.elementAsString(0); }, "elementAsString", "Index is out of bounds"},
        // clang-format on
    };
    for (const auto& [json, read, function, reason] : rows) {
        const auto readHandled = [&json = json, &read = read] {
            std::signal(SIGABRT, exitUnlessWritten);
            read(Json{json}.scope);
        };
        EXPECT_EXIT(readHandled(), testing::ExitedWithCode(3),
                    "^JsonObject::" + std::string{function} + "\\(\\): " + reason + "\n$");
    }
}

} // namespace
} // namespace VespermoorEngine::Test
