#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <gmock/gmock.h>

using namespace Corrade;
using Containers::Array;
using Containers::ArrayView;

namespace {

/* Small numbers lie in the string itself, which its bytes refer to; others lie on the heap. */
struct Number {
    Number(int value = 0) : text{std::to_string(value) + std::string(value * 10, ' ')} {}
    operator int() const { return text.empty() ? -1 : std::stoi(text); }
    std::string text;
};

template <class T>
std::vector<int> values(ArrayView<const T> view) {
    return {view.begin(), view.end()};
}

template <class T>
class ArrayOf : public testing::Test {};
using ElementTypes = testing::Types<int, Number>;
TYPED_TEST_SUITE(ArrayOf, ElementTypes);

TYPED_TEST(ArrayOf, GrowsAndShrinks) {
    using A = Array<TypeParam>&;
    const struct {
        const char* name;
        std::vector<int> expected;
        /* 0 where there may be more than is needed */
        std::size_t capacity;
        void (*change)(A);
    } rows[]{
        {"reserve", {1, 2, 3}, 7, [](A a) { EXPECT_EQ(arrayReserve(a, 7), 7); }},
        {"reserve less", {1, 2, 3}, 3, [](A a) { EXPECT_EQ(arrayReserve(a, 2), 3); }},
        {"larger", {1, 2, 3, 0, 0}, 5, [](A a) { arrayResize(a, 5); }},
        {"smaller", {1, 2}, 0, [](A a) { arrayResize(a, NoInit, 2); }},
        {"append", {1, 2, 3, 4}, 0, [](A a) { EXPECT_EQ(arrayAppend(a, TypeParam{4}), 4); }},
        {"append in place", {1, 2, 3, 4}, 0, [](A a) { arrayAppend(a, InPlaceInit, 4); }},
        {"append a part of itself", {1, 2, 3, 2, 3}, 0, [](A a) { arrayAppend(a, a.slice(1, 3)); }},
        {"append nothing", {1, 2, 3}, 3, [](A a) { arrayAppend(a, a.prefix(0)); }},
        {"remove", {1}, 0, [](A a) { arrayRemoveSuffix(a, 2); }},
    };
    for (const auto& row : rows) {
        for (const bool growable : {false, true}) {
            SCOPED_TRACE(row.name);
            Array<TypeParam> array{InPlaceInit, {1, 2, 3}};
            arrayResize(array, growable ? 2 : 3);
            arrayResize(array, 3);
            array[2] = 3;
            row.change(array);
            EXPECT_EQ(values<TypeParam>(array), row.expected);
            EXPECT_EQ(row.capacity ? arrayCapacity(array) : 0, row.capacity);
        }
    }
}

TEST(Array, MovesItsElementsSeldomWhenAppendedTo) {
    Array<int> array;
    int reallocations = 0;
    for (int i = 0; i != 10000; ++i) {
        const std::size_t capacity = arrayCapacity(array);
        arrayAppend(array, i);
        reallocations += arrayCapacity(array) != capacity;
    }
    EXPECT_LE(reallocations, 40);
}

int memory[]{1, 2, 3};
std::vector<int*> freed;

TEST(Array, FreesMemoryOnceByItsDeleter) {
    using A = Array<int>&;
    const struct {
        std::vector<int*> freed;
        void (*use)(A);
    } rows[]{
        {{memory}, [](A a) { a = Array<int>{std::move(a)}; }},
        {{memory}, [](A a) { arrayAppend(a, 4); }},
        {{}, [](A a) { EXPECT_EQ(a.release(), memory); }},
    };
    for (const auto& row : rows) {
        freed.clear();
        {
            Array<int> array{memory, 3, [](int* data, std::size_t) { freed.push_back(data); }};
            row.use(array);
        }
        EXPECT_EQ(freed, row.freed);
    }
}

#ifndef NDEBUG
TEST(ArrayDeathTest, Misuse) {
    using A = Array<int>&;
    const struct {
        void (*misuse)(A);
        const char* message;
    } rows[]{
        {[](A a) { a[3] = 1; }, "Array::operator[](): index 3 out of range for 3 elements\n"},
        {[](A a) { arrayAppend(a, a[1]); },
         "arrayAppend(): use the list variant to append values from within the array itself\n"},
        {[](A a) { arrayRemoveSuffix(a, 6); },
         "arrayRemoveSuffix(): can't remove 6 elements from an array of size 3\n"},
    };
    for (const auto& row : rows) {
        Array<int> array{InPlaceInit, {1, 2, 3}};
        EXPECT_DEATH(row.misuse(array), testing::StrEq(std::string{"Containers::"} + row.message));
    }
}
#endif

} // namespace
