#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "Support.h"
#include "VespermoorEditor/Utils/JsonObject.h"

namespace VespermoorEngine::Test {
namespace {

/* One value to read and to write, or one for each, with a record of what it was asked for. */
class RecordingObject : public JsonObject {
public:
    explicit RecordingObject(const char* const readable, const char* const writable = nullptr)
        : _writable{writable ? &_documents[1] : &_documents[0]} {
        _documents[0].Parse(readable);
        if (writable) {
            _documents[1].Parse(writable);
        }
    }

    bool exists() override { return true; }
    Containers::Pointer<JsonObject> member(Containers::StringView) override { return nullptr; }

    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override {
        calls += 'a';
        return _writable->GetAllocator();
    }
    const rapidjson::Value& value() const override {
        calls += 'v';
        return _documents[0];
    }
    rapidjson::Value& mutableValue() override {
        calls += 'm';
        return *_writable;
    }

    std::string readable() const { return print(_documents[0]); }
    std::string writable() const { return print(*_writable); }
    std::size_t capacity() const { return _writable->Capacity(); }

    /* `v`, `m` and `a` for the three operations above, in the order of the calls. */
    mutable std::string calls;

private:
    static std::string print(const rapidjson::Value& json) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
        json.Accept(writer);
        return {buffer.GetString(), buffer.GetSize()};
    }

    rapidjson::Document _documents[2];
    rapidjson::Document* _writable;
};

/* Makes a write of a view of a string that ends with the write. */
template <class Write>
auto withText(const char* const text, const Write& write) {
    return [text, write](JsonObject& object) {
        const std::string copy = text;
        write(object, Containers::StringView{copy.data(), copy.size()});
    };
}

auto setString(const char* const text) {
    return withText(
        text, [](JsonObject& object, Containers::StringView string) { object.setString(string); });
}

auto pushBack(const char* const text) {
    return withText(text, [](JsonObject& object, Containers::StringView string) {
        object.pushBackString(string);
    });
}

auto pushBackUnique(const char* const text) {
    return withText(text, [](JsonObject& object, Containers::StringView string) {
        object.pushBackStringUnique(string);
    });
}

struct WriteRow {
    const char* name;
    const char* before;
    std::function<void(JsonObject&)> write;
    const char* expected;
    const char* expectedCalls;
};

class JsonObjectWrite : public testing::TestWithParam<WriteRow> {};

TEST_P(JsonObjectWrite, Stores) {
    RecordingObject object{GetParam().before};
    GetParam().write(object);
    EXPECT_EQ(object.calls, GetParam().expectedCalls);
    EXPECT_EQ(object.writable(), GetParam().expected);
}

constexpr const char* anyObject = R"({"a":1})";
const float floats[]{0.1f, 3.0f, -0.0f};
const int ints[]{-1, 0, 7};
const unsigned char bytes[]{0, 255};
const Containers::StringView strings[]{"short", {}, "long enough for the pool of the document"};
constexpr const char* storedStrings = R"(["short","","long enough for the pool of the document"])";

INSTANTIATE_TEST_SUITE_P(
    Rows, JsonObjectWrite,
    testing::Values(
        WriteRow{"null", anyObject, [](JsonObject& o) { o.setNull(); }, "null", "m"},
        WriteRow{"bool", "[1]", [](JsonObject& o) { o.setBool(true); }, "true", "m"},
        WriteRow{"int", anyObject, [](JsonObject& o) { o.setInt(-5); }, "-5", "m"},
        WriteRow{"float", "[1]", [](JsonObject& o) { o.setFloat(0.1f); }, "0.10000000149011612",
                 "m"},
        WriteRow{"whole float", "1", [](JsonObject& o) { o.setFloat(3.0f); }, "3.0", "m"},
        WriteRow{"short string", anyObject, setString("short"), R"("short")", "ma"},
        WriteRow{"long string", "1", setString(strings[2].data()),
                 R"("long enough for the pool of the document")", "ma"},
        WriteRow{"null data", "1", [](JsonObject& o) { o.setString({}); }, R"("")", "ma"},
        WriteRow{"part of itself", R"("abcdef")",
                 [](JsonObject& o) { o.setString(o.asString().exceptPrefix(1)); }, R"("bcdef")",
                 "vma"},
        WriteRow{"float array", anyObject, [](JsonObject& o) { o.setFloatArray(floats); },
                 "[0.10000000149011612,3.0,-0.0]", "maaaa"},
        WriteRow{"int array", "[9]", [](JsonObject& o) { o.setIntArray(ints); }, "[-1,0,7]",
                 "maaaa"},
        WriteRow{"unsigned char array", "true",
                 [](JsonObject& o) { o.setUnsignedCharArray(bytes); }, "[0,255]", "maaa"},
        WriteRow{"strings", anyObject,
                 [](JsonObject& o) { o.setArray(Containers::StringIterable{strings}); },
                 storedStrings, "maaaa"},
        WriteRow{"floats", "1",
                 [](JsonObject& o) { o.setArray(Containers::arrayView(floats).exceptSuffix(2)); },
                 "[0.10000000149011612]", "maa"},
        WriteRow{"ints", "1", [](JsonObject& o) { o.setArray(Containers::arrayView(ints)); },
                 "[-1,0,7]", "maaaa"},
        WriteRow{"unsigned chars", "1",
                 [](JsonObject& o) { o.setArray(Containers::arrayView(bytes)); }, "[0,255]",
                 "maaa"},
        WriteRow{"string views", "1",
                 [](JsonObject& o) { o.setArray(Containers::arrayView(strings)); }, storedStrings,
                 "maaaa"},
        WriteRow{"own strings", R"(["b","a"])",
                 [](JsonObject& o) {
                     const auto views = o.asStringViewArray();
                     o.setArray(Containers::ArrayView<const Containers::StringView>{views});
                 },
                 R"(["b","a"])", "vvmaaa"},
        WriteRow{"no floats", "1", [](JsonObject& o) { o.setFloatArray({}); }, "[]", "ma"},
        WriteRow{"no ints", "1", [](JsonObject& o) { o.setIntArray({}); }, "[]", "ma"},
        WriteRow{"no unsigned chars", "1", [](JsonObject& o) { o.setUnsignedCharArray({}); }, "[]",
                 "ma"},
        WriteRow{"no strings", "1", [](JsonObject& o) { o.setArray(Containers::StringIterable{}); },
                 "[]", "ma"},
        WriteRow{"push back", R"(["b"])", pushBack("a"), R"(["b","a"])", "vmaa"},
        WriteRow{"push back an equal one", R"(["a"])", pushBack("a"), R"(["a","a"])", "vmaa"},
        WriteRow{"push back null data", "[]", [](JsonObject& o) { o.pushBackString({}); },
                 R"([""])", "vmaa"},
        WriteRow{"push back to null", "null", pushBack("a"), R"(["a"])", "vmaa"},
        WriteRow{"push back to a number", "1", pushBack("a"), R"(["a"])", "vmaa"},
        WriteRow{"push back to an object", anyObject, pushBack("a"), R"(["a"])", "vmaa"},
        WriteRow{"push back a scalar to itself", R"("old")",
                 [](JsonObject& o) { o.pushBackString(o.asString()); }, R"(["old"])", "vvmaa"},
        WriteRow{"push back a unique one", R"(["b"])", pushBackUnique("a"), R"(["b","a"])", "vmaa"},
        WriteRow{"push back a known one", R"(["b","a"])", pushBackUnique("a"), R"(["b","a"])",
                 "vm"},
        WriteRow{"push back another case", R"(["a"])", pushBackUnique("A"), R"(["a","A"])", "vmaa"},
        WriteRow{"push back a prefix", R"(["ab"])", pushBackUnique("a"), R"(["ab","a"])", "vmaa"},
        WriteRow{"push back what stands in front of a NUL", R"(["a\u0000b"])", pushBackUnique("a"),
                 R"(["a\u0000b"])", "vm"},
        WriteRow{"push back beside other kinds", R"([1,null,["a"],{"a":"a"}])", pushBackUnique("a"),
                 R"([1,null,["a"],{"a":"a"},"a"])", "vmaa"},
        WriteRow{"push back a unique one to an equal scalar", R"("a")", pushBackUnique("a"),
                 R"(["a"])", "vmaa"},
        WriteRow{"erase the only one", "[1]", [](JsonObject& o) { o.eraseElement(0); }, "[]", "vm"},
        WriteRow{"erase in the middle", R"([1,"2",[3],4])",
                 [](JsonObject& o) { o.eraseElement(1); }, "[1,[3],4]", "vm"},
        WriteRow{"erase the last", "[1,2]", [](JsonObject& o) { o.eraseElement(1); }, "[1]", "vm"}),
    rowName<WriteRow>);

struct TwoValuesRow {
    const char* name;
    const char* readable;
    const char* writable;
    std::function<void(JsonObject&)> write;
    const char* expectedWritable;
    const char* expectedCalls;
};

class JsonObjectOfTwoValues : public testing::TestWithParam<TwoValuesRow> {};

TEST_P(JsonObjectOfTwoValues, LeavesTheReadableOne) {
    RecordingObject object{GetParam().readable, GetParam().writable};
    GetParam().write(object);
    EXPECT_EQ(object.calls, GetParam().expectedCalls);
    EXPECT_EQ(object.readable(), GetParam().readable);
    EXPECT_EQ(object.writable(), GetParam().expectedWritable);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, JsonObjectOfTwoValues,
    testing::Values(
        TwoValuesRow{"replaced", "[1]", "[2]", [](JsonObject& o) { o.setIntArray(ints); },
                     "[-1,0,7]", "maaaa"},
        TwoValuesRow{"appended to a copy", R"([1,{"x":["long enough for the pool"]}])", R"(["z"])",
                     pushBack("a"), R"([1,{"x":["long enough for the pool"]},"a"])", "vmaaa"},
        TwoValuesRow{"appended to nothing", "1", R"(["z"])", pushBack("a"), R"(["a"])", "vmaaa"},
        TwoValuesRow{"found in the copy", R"(["a"])", R"(["z"])", pushBackUnique("a"), R"(["a"])",
                     "vma"},
        TwoValuesRow{"not compared with what is replaced", R"(["b"])", R"(["a"])",
                     pushBackUnique("a"), R"(["b","a"])", "vmaaa"},
        TwoValuesRow{"erased without a copy", R"(["a","b"])", R"(["c","d"])",
                     [](JsonObject& o) { o.eraseElement(0); }, R"(["d"])", "vm"}),
    rowName<TwoValuesRow>);

TEST(JsonObjectWrite, AllocatesArraysOnceAndKeepsTheirCapacity) {
    RecordingObject object{"[1,2]"};
    object.setIntArray(ints);
    EXPECT_EQ(object.capacity(), 3);
    object.eraseElement(0);
    EXPECT_EQ(object.capacity(), 3);
}

TEST(JsonObjectWrite, IsReadBack) {
    RecordingObject object{"null"};
    for (const float number : {0.1f, -0.0f, std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::denorm_min()}) {
        object.setFloat(number);
        EXPECT_EQ(object.asFloat(), number);
    }
    object.setInt(-5);
    EXPECT_EQ(object.asInt(0), -5);
    object.setInt(std::numeric_limits<int>::max());
    EXPECT_EQ(object.asUnsignedInt(0), std::numeric_limits<int>::max());
    object.setUnsignedCharArray(bytes);
    EXPECT_EQ(object.asIntArray()[1], 255);
    EXPECT_EQ(object.asUnsignedIntArray()[1], 255);
    const Containers::StringView withNul{"a\0b", 3};
    object.setString(withNul);
    EXPECT_EQ(text(object.asString()), text(withNul));

    const Magnum::Math::Matrix4<float> matrix{
        {0.1f, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
    object.setMatrix(matrix);
    EXPECT_EQ(object.writable(),
              "[0.10000000149011612,2.0,3.0,4.0,5.0,6.0,7.0,8.0,9.0,10.0,11.0,12.0,13.0,14.0,"
              "15.0,16.0]");
    EXPECT_EQ(object.asMatrix4(), matrix);
    const Magnum::Math::Quaternion<float> quaternion{{1, 2, 3}, 0.25f};
    object.setQuaternion(quaternion);
    EXPECT_EQ(object.writable(), "[1.0,2.0,3.0,0.25]");
    EXPECT_EQ(object.asQuaternion(), quaternion);
}

struct EraseRow {
    const char* name;
    const char* readable;
    const char* writable;
    const char* expectedMessage;
};

class JsonObjectEraseDeathTest : public testing::TestWithParam<EraseRow> {};

TEST_P(JsonObjectEraseDeathTest, Aborts) {
    RecordingObject object{GetParam().readable, GetParam().writable};
    EXPECT_DEATH(object.eraseElement(1), GetParam().expectedMessage);
}

constexpr const char* notAnArray = "^JsonObject::eraseElement\\(\\): Not an array\n$";
constexpr const char* outOfBounds = "^JsonObject::eraseElement\\(\\): Index is out of bounds\n$";

INSTANTIATE_TEST_SUITE_P(Rows, JsonObjectEraseDeathTest,
                         testing::Values(EraseRow{"an object", anyObject, nullptr, notAnArray},
                                         EraseRow{"null", "null", nullptr, notAnArray},
                                         EraseRow{"index is the size", "[1]", nullptr, outOfBounds},
                                         EraseRow{"writable is none", "[1,2]", "1", notAnArray},
                                         EraseRow{"writable is shorter", "[1,2]", "[1]",
                                                  outOfBounds}),
                         rowName<EraseRow>);

} // namespace
} // namespace VespermoorEngine::Test
