#include "VespermoorEditor/Utils/JsonObject.h"

#include <csignal>
#include <limits>

#include <gmock/gmock.h>

#include "DocumentScope.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Host::DocumentScope;

/* A document and the accessor of its root. */
struct Json {
    explicit Json(const char* const json) : scope{document} {
        document.Parse(json);
        EXPECT_FALSE(document.HasParseError()) << json;
    }

    const JsonObject& root() const { return scope; }

    rapidjson::Document document;
    DocumentScope scope;
};

TEST(JsonObjectTest, SingleValues) {
    struct Row {
        const char* json;
        bool isNull;
        std::size_t size;
        bool asBool;
    };
    const Row rows[]{
        {"null", true, 0, false},   {"true", false, 0, true},
        {"false", false, 0, false}, {"[1, 2, 3]", false, 3, false},
        {"[]", false, 0, false},    {R"({"a": 1, "b": 2})", false, 2, false},
        {"1", false, 0, false},     {R"("true")", false, 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        const Json json{row.json};
        EXPECT_EQ(json.root().isNull(), row.isNull);
        EXPECT_EQ(json.root().size(), row.size);
        EXPECT_EQ(json.root().asBool(), row.asBool);
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
        {"null", -7, 9, 0.0f},
        {"0", 0, 0, 0.0f},
        {"3", 3, 3, 3.0f},
        {"-1", -1, 4294967295, -1.0f},
        {"4294967295", -1, 4294967295, 4294967295.0f},
        {"4294967301", 5, 5, 4294967301.0f},
        {"-4294967301", -5, 4294967291, -4294967301.0f},
        {"18446744073709551615", -1, 4294967295, 18446744073709551615.0f},
        /* Through double first: rounding to float at once would give 2^60 + 2^37. */
        {"1152921573326323713", 1, 1, 1152921504606846976.0f},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.json);
        const Json json{row.json};
        EXPECT_EQ(json.root().asInt(-7), row.asInt);
        EXPECT_EQ(json.root().asUnsignedInt(9), row.asUnsignedInt);
        EXPECT_EQ(json.root().asFloat(), row.asFloat);
    }
    EXPECT_EQ(Json{"3.0"}.root().asFloat(), 3.0f);
    EXPECT_EQ(Json{"0.1"}.root().asFloat(), 0.1f);
    EXPECT_EQ(Json{"true"}.root().asFloat(), 0.0f);
    EXPECT_EQ(Json{"-1e300"}.root().asFloat(), -std::numeric_limits<float>::infinity());
}

TEST(JsonObjectTest, AValueThatWasMovedFromReadsAsNull) {
    Json json{"[1.5, 2.5]"};
    rapidjson::Value taken;
    taken = json.document[0];
    EXPECT_EQ(json.root().asVector2(), (Magnum::Vector2{0.0f, 2.5f}));
}

TEST(JsonObjectTest, StringsAreViewsOfTheValue) {
    const Json json{R"("a string that is too long to stand in the value itself")"};
    EXPECT_EQ(json.root().asString().data(), json.document.GetString());
    EXPECT_EQ(json.root().asString().size(), json.document.GetStringLength());
    EXPECT_FALSE(json.root().asString().flags());
    EXPECT_EQ(text(Json{R"("a\u0000b")"}.root().asString()), std::string("a\0b", 3));
    EXPECT_NE(Json{R"("")"}.root().asString().data(), nullptr);
    EXPECT_EQ(Json{"null"}.root().asString().data(), nullptr);
    EXPECT_EQ(Json{"5"}.root().asString().data(), nullptr);
}

TEST(JsonObjectTest, FixedSizeTypes) {
    EXPECT_EQ(Json{"[1, 2.5]"}.root().asVector2(), (Magnum::Vector2{1.0f, 2.5f}));
    EXPECT_EQ(Json{"[1, -2, 3]"}.root().asVector3(), (Magnum::Vector3{1.0f, -2.0f, 3.0f}));
    EXPECT_EQ(Json{"[1, 2, 3, 4]"}.root().asVector4(), (Magnum::Vector4{1.0f, 2.0f, 3.0f, 4.0f}));
    EXPECT_EQ(Json{"[-1, 2]"}.root().asVector2i(), (Magnum::Vector2i{-1, 2}));
    EXPECT_EQ(Json{"[null, true]"}.root().asVector2(), Magnum::Vector2{});

    const Magnum::Math::Matrix4<float> matrix =
        Json{"[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16]"}.root().asMatrix4();
    EXPECT_EQ(matrix[0], (Magnum::Vector4{1.0f, 2.0f, 3.0f, 4.0f}));
    EXPECT_EQ(matrix[3], (Magnum::Vector4{13.0f, 14.0f, 15.0f, 16.0f}));

    const Magnum::Math::Quaternion<float> quaternion =
        Json{"[0.5, -0.5, 0.25, 0.75, 99]"}.root().asQuaternion();
    EXPECT_EQ(quaternion.vector(), (Magnum::Vector3{0.5f, -0.5f, 0.25f}));
    EXPECT_EQ(quaternion.scalar(), 0.75f);
}

TEST(JsonObjectTest, ArraysIntoMemoryOfTheCaller) {
    float floats[3];
    Json{"[1, 2.5, null]"}.root().asFloatArray(floats);
    EXPECT_THAT(floats, testing::ElementsAre(1.0f, 2.5f, 0.0f));
    int ints[2];
    Json{"[-1, 4294967301]"}.root().asIntArray(ints);
    EXPECT_THAT(ints, testing::ElementsAre(-1, 5));
    unsigned int unsignedInts[2];
    Json{"[-1, 4294967295]"}.root().asUnsignedIntArray(unsignedInts);
    EXPECT_THAT(unsignedInts, testing::ElementsAre(4294967295, 4294967295));
    Containers::StringView strings[2];
    const Json json{R"(["a\u0000b", "a string that is too long to stand in the value itself"])"};
    json.root().asStringArray(strings);
    EXPECT_EQ(text(strings[0]), std::string("a\0b", 3));
    EXPECT_EQ(strings[1].data(), json.document[1].GetString());
    EXPECT_EQ(strings[1].flags(), Containers::StringViewFlag::NullTerminated);
    EXPECT_EQ(text(json.root().elementAsString(0)), std::string("a\0b", 3));
    EXPECT_EQ(json.root().elementAsString(1).data(), strings[1].data());
    EXPECT_EQ(json.root().elementAsString(1).flags(), Containers::StringViewFlag::NullTerminated);
}

TEST(JsonObjectTest, AllocatedArrays) {
    EXPECT_THAT(elements(Json{"[1, 2.5]"}.root().asFloatArray()), testing::ElementsAre(1.0f, 2.5f));
    EXPECT_THAT(elements(Json{"[1, -2]"}.root().asIntArray()), testing::ElementsAre(1, -2));
    EXPECT_THAT(elements(Json{"[1, 2]"}.root().asUnsignedIntArray()), testing::ElementsAre(1, 2));
    const Json json{R"(["a\u0000b", ""])"};
    const Containers::Array<Containers::StringView> views = json.root().asStringViewArray();
    ASSERT_EQ(views.size(), 2);
    EXPECT_EQ(views[0].data(), json.document[0].GetString());
    EXPECT_EQ(views[1].flags(), Containers::StringViewFlag::NullTerminated);
    const Containers::Array<Containers::String> strings = json.root().asStringArray();
    ASSERT_EQ(strings.size(), 2);
    EXPECT_EQ(text(strings[0]), std::string("a\0b", 3));
    EXPECT_NE(strings[0].data(), views[0].data());
}

TEST(JsonObjectTest, NullAndTheEmptyArrayAreEmptyArrays) {
    for (const char* const empty : {"null", "[]"}) {
        SCOPED_TRACE(empty);
        const Json json{empty};
        EXPECT_EQ(json.root().asFloatArray().data(), nullptr);
        EXPECT_EQ(json.root().asIntArray().data(), nullptr);
        EXPECT_EQ(json.root().asUnsignedIntArray().data(), nullptr);
        EXPECT_EQ(json.root().asStringArray().data(), nullptr);
        EXPECT_EQ(json.root().asStringViewArray().data(), nullptr);
        json.root().asFloatArray({});
        json.root().asIntArray({});
        json.root().asUnsignedIntArray({});
        json.root().asStringArray({});
    }
}

struct ContractRow {
    const char* name;
    const char* json;
    void (*read)(const JsonObject&);
    const char* message;
};

class JsonObjectContractDeathTest : public testing::TestWithParam<ContractRow> {};

TEST_P(JsonObjectContractDeathTest, Aborts) {
    const Json json{GetParam().json};
    EXPECT_EXIT(GetParam().read(json.scope), testing::KilledBySignal(SIGABRT),
                "^JsonObject::" + std::string{GetParam().message} + "\n$");
}

template <class T>
Containers::ArrayView<T> room(const std::size_t size) {
    static T memory[4];
    return {memory, size};
}

INSTANTIATE_TEST_SUITE_P(
    , JsonObjectContractDeathTest,
    testing::ValuesIn(std::initializer_list<ContractRow>{
        {"floats", "[1, 2]", [](const JsonObject& o) { o.asFloatArray(room<float>(3)); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"floats of null", "null", [](const JsonObject& o) { o.asFloatArray(room<float>(1)); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"floats of a string", "\"ab\"",
         [](const JsonObject& o) { o.asFloatArray(room<float>(2)); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"ints", "[1, 2]", [](const JsonObject& o) { o.asIntArray(room<int>(1)); },
         "asIntArray\\(\\): Sizes do not match"},
        {"unsigned ints", "[1, 2]",
         [](const JsonObject& o) { o.asUnsignedIntArray(room<unsigned int>(0)); },
         "asUnsignedIntArray\\(\\): Sizes do not match"},
        {"strings", "[]",
         [](const JsonObject& o) { o.asStringArray(room<Containers::StringView>(1)); },
         "asStringArray\\(\\): Sizes do not match"},
        {"vector2", "[1, 2, 3]", [](const JsonObject& o) { o.asVector2(); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"vector3", "[1, 2]", [](const JsonObject& o) { o.asVector3(); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"vector4", "null", [](const JsonObject& o) { o.asVector4(); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"vector2i", "[1]", [](const JsonObject& o) { o.asVector2i(); },
         "asIntArray\\(\\): Sizes do not match"},
        {"matrix", "[1, 2, 3, 4]", [](const JsonObject& o) { o.asMatrix4(); },
         "asFloatArray\\(\\): Sizes do not match"},
        {"quaternion", "[1, 2, 3]", [](const JsonObject& o) { o.asQuaternion(); },
         "asQuaternion\\(\\): Sizes do not match"},
        {"element of an object", "{}", [](const JsonObject& o) { o.elementAsString(0); },
         "elementAsString\\(\\): Not an array"},
        {"element past the end", "[\"a\"]", [](const JsonObject& o) { o.elementAsString(1); },
         "elementAsString\\(\\): Index is out of bounds"},
    }),
    rowName<ContractRow>);

TEST(JsonObjectDeathTest, NothingIsWrittenWhereSizesDiffer) {
    const Json json{"[1, 2]"};
    float floats[]{7.0f, 8.0f, 9.0f};
    EXPECT_EXIT(
        {
            /* The handler runs where the process ends, and sees what was written until then. */
            static float* const watched = floats;
            std::signal(SIGABRT, [](int) { std::_Exit(watched[0] == 7.0f ? 3 : 4); });
            json.root().asFloatArray(floats);
        },
        testing::ExitedWithCode(3), "Sizes do not match");
}

} // namespace
} // namespace VespermoorEngine::Test
