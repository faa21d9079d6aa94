#include <memory>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <gmock/gmock.h>

using namespace Corrade;
using Containers::Array;
using Containers::ArrayView;

namespace {

/* Has to be moved as an object: a copy of its bytes would be freed twice. */
struct Owner {
    Owner(int value = 0) : value{std::make_shared<int>(value)} {}
    operator int() const { return value ? *value : -1; }
    std::shared_ptr<int> value;
};

template <class T>
std::vector<int> values(ArrayView<const T> view) {
    return {view.begin(), view.end()};
}

template <class T>
class ArrayOf : public testing::Test {};
using ElementTypes = testing::Types<int, Owner>;
TYPED_TEST_SUITE(ArrayOf, ElementTypes);

template <class T>
struct GrowthRow {
    const char* name;
    std::vector<int> expected;
    /* 0 where there may be more than is needed */
    std::size_t capacity;
    void (*change)(Array<T>&);
};

TYPED_TEST(ArrayOf, Growth) {
    using A = Array<TypeParam>&;
    const GrowthRow<TypeParam> rows[]{
        {"reserve", {1, 2, 3}, 7, [](A a) { EXPECT_EQ(arrayReserve(a, 7), 7); }},
        {"reserve less", {1, 2, 3}, 3, [](A a) { EXPECT_EQ(arrayReserve(a, 2), 3); }},
        {"larger", {1, 2, 3, 0, 0}, 5, [](A a) { arrayResize(a, 5); }},
        {"larger by zeros", {1, 2, 3, 0, 0}, 5, [](A a) { arrayResize(a, ValueInit, 5); }},
        {"smaller", {1, 2}, 0, [](A a) { arrayResize(a, NoInit, 2); }},
        {"append", {1, 2, 3, 4}, 0, [](A a) { EXPECT_EQ(arrayAppend(a, TypeParam{4}), 4); }},
        {"append in place", {1, 2, 3, 4}, 0, [](A a) { arrayAppend(a, InPlaceInit, 4); }},
        {"append a part of itself", {1, 2, 3, 2, 3}, 0, [](A a) { arrayAppend(a, a.slice(1, 3)); }},
        {"append nothing", {1, 2, 3}, 3, [](A a) { arrayAppend(a, a.prefix(0)); }},
        {"remove", {1}, 0, [](A a) { arrayRemoveSuffix(a, 2); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Array<TypeParam> ordinary{InPlaceInit, {1, 2, 3}};
        Array<TypeParam> growable{InPlaceInit, {1, 2}};
        arrayReserve(growable, 3);
        arrayAppend(growable, InPlaceInit, 3);
        for (Array<TypeParam>* array : {&ordinary, &growable}) {
            row.change(*array);
            EXPECT_EQ(values<TypeParam>(*array), row.expected);
            if (row.capacity) {
                EXPECT_EQ(arrayCapacity(*array), row.capacity);
            }
        }
    }
}

TEST(Array, GrowsSeldomWhenAppendedTo) {
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
        const char* name;
        std::vector<int*> freed;
        void (*use)(A);
    } rows[]{
        {"moved", {memory}, [](A a) { a = Array<int>{std::move(a)}; }},
        {"grown", {memory}, [](A a) { arrayAppend(a, 4); }},
        {"replaced",
         {memory},
         [](A a) {
             a = Array<int>{ValueInit, 2};
         }},
        {"released", {}, [](A a) { EXPECT_EQ(a.release(), memory); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        freed.clear();
        {
            Array<int> array{memory, 3, [](int* data, std::size_t) { freed.push_back(data); }};
            row.use(array);
        }
        EXPECT_EQ(freed, row.freed);
    }
}

TEST(ArrayView, OfPartsAndBytes) {
    Array<int> array{InPlaceInit, {1, 2, 3, 4}};
    const ArrayView<const int> view = array;
    EXPECT_EQ(values<int>(view.slice(1, 3)), values<int>(Containers::arrayView({2, 3})));
    EXPECT_EQ(values<int>(array.exceptPrefix(3)), std::vector<int>{4});
    EXPECT_EQ(values<int>(array.exceptSuffix(3)), std::vector<int>{1});
    EXPECT_EQ(ArrayView<const void>{view}.size(), sizeof(memory) + sizeof(int));
    EXPECT_EQ(ArrayView<const void>{memory}.size(), sizeof(memory));
    static_assert(!std::is_convertible<const Array<int>&, ArrayView<int>>::value);
    static_assert(!std::is_convertible<ArrayView<const int>, ArrayView<int>>::value);
    static_assert(!std::is_convertible<std::vector<int>, ArrayView<const int>>::value);
}

#ifndef NDEBUG
TEST(ArrayDeathTest, Misuse) {
    using A = Array<int>&;
    const struct {
        void (*misuse)(A);
        const char* message;
    } rows[]{
        {[](A a) { a[3] = 1; }, "Array::operator[](): index 3 out of range for 3 elements\n"},
        {[](A a) { a.prefix(2)[2] = 1; },
         "ArrayView::operator[](): index 2 out of range for 2 elements\n"},
        {[](A a) { (a = {}).front() = 1; }, "Array::front(): array is empty\n"},
        {[](A a) { a.prefix(0).back() = 1; }, "ArrayView::back(): view is empty\n"},
        {[](A a) { a.slice(3, 2); },
         "ArrayView::slice(): slice [3:2] out of range for 3 elements\n"},
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
