#include <algorithm>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/ArrayViewStl.h>
#include <Corrade/Containers/GrowableArray.h>

using namespace Corrade;
using Containers::Array;
using Containers::ArrayView;
using testing::ElementsAre;

namespace {

/** Not trivially copyable, and tells whether each one made was destroyed exactly once. */
class Tracked {
public:
    Tracked(int value = 0) : _value{new int{value}} { ++alive; }
    Tracked(const Tracked& other) : Tracked{*other._value} {}
    Tracked(Tracked&& other) noexcept : Tracked{*other._value} { *other._value = -1; }
    Tracked& operator=(const Tracked& other) {
        *_value = *other._value;
        return *this;
    }
    Tracked& operator=(Tracked&& other) noexcept {
        std::swap(_value, other._value);
        return *this;
    }
    ~Tracked() {
        delete _value;
        --alive;
    }
    operator int() const { return *_value; }

    static int alive;

private:
    int* _value;
};
int Tracked::alive = 0;

template <class T>
std::vector<int> values(ArrayView<const T> view) {
    return {view.begin(), view.end()};
}

template <class T>
class ArrayOf : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Tracked::alive, 0); }
};
using ElementTypes = testing::Types<int, Tracked>;
TYPED_TEST_SUITE(ArrayOf, ElementTypes);

template <class T>
struct ConstructionRow {
    const char* name;
    std::vector<int> expected;
    bool freedByDelete;
    Array<T> (*make)();
};

template <class T>
std::vector<ConstructionRow<T>> constructionRows() {
    /* Memory that is filled later is freed in another way where elements have constructors */
    constexpr bool Trivial = std::is_trivially_constructible<T>::value;
    return {
        {"default", {}, true, [] { return Array<T>{}; }},
        {"null", {}, true, [] { return Array<T>{nullptr}; }},
        {"zero elements", {}, true, [] { return Array<T>(ValueInit, 0); }},
        {"value", {0, 0, 0}, true, [] { return Array<T>(ValueInit, 3); }},
        {"direct", {7, 7}, Trivial, [] { return Array<T>(DirectInit, 2, 7); }},
        {"in place",
         {1, 2},
         Trivial,
         [] {
             return Array<T>{InPlaceInit, {1, 2}};
         }},
        {"taken over",
         {1, 2},
         true,
         [] {
             return Array<T>(new T[2]{1, 2}, 2);
         }},
        {"from a list",
         {3, 4},
         Trivial,
         [] {
             return Containers::array<T>({3, 4});
         }},
    };
}

TYPED_TEST(ArrayOf, construction) {
    for (const auto& row : constructionRows<TypeParam>()) {
        SCOPED_TRACE(row.name);
        Array<TypeParam> array = row.make();
        EXPECT_EQ(values<TypeParam>(array), row.expected);
        EXPECT_EQ(array.deleter() == nullptr, row.freedByDelete);
        EXPECT_EQ(bool(array), !row.expected.empty());

        Array<TypeParam> moved = std::move(array);
        EXPECT_EQ(array.data(), nullptr);
        EXPECT_EQ(array.size(), 0);
        EXPECT_EQ(values<TypeParam>(moved), row.expected);
    }
}

template <class T>
struct GrowthRow {
    const char* name;
    std::vector<int> expected;
    /* Started from an ordinary array; 0 where there may be more than is needed */
    std::size_t capacity;
    bool growable;
    void (*change)(Array<T>&);
};

template <class T>
std::vector<GrowthRow<T>> growthRows() {
    using A = Array<T>&;
    return {
        {"reserve", {1, 2, 3}, 7, true, [](A a) { EXPECT_EQ(arrayReserve(a, 7), 7); }},
        {"reserve less", {1, 2, 3}, 3, false, [](A a) { EXPECT_EQ(arrayReserve(a, 2), 3); }},
        {"larger", {1, 2, 3, 0, 0}, 5, true, [](A a) { arrayResize(a, 5); }},
        {"smaller", {1, 2}, 2, true, [](A a) { arrayResize(a, 2); }},
        {"same size", {1, 2, 3}, 3, false, [](A a) { arrayResize(a, 3); }},
        {"larger by a value", {1, 2, 3, 9, 9}, 5, true, [](A a) { arrayResize(a, 5, 9); }},
        {"larger then smaller",
         {1},
         6,
         true,
         [](A a) {
             arrayResize(a, 6);
             arrayResize(a, NoInit, 1);
         }},
        {"append", {1, 2, 3, 4}, 0, true, [](A a) { EXPECT_EQ(arrayAppend(a, T{4}), 4); }},
        {"append a copy",
         {1, 2, 3, 4},
         0,
         true,
         [](A a) {
             const T value{4};
             arrayAppend(a, value);
         }},
        {"append in place", {1, 2, 3, 4}, 0, true, [](A a) { arrayAppend(a, InPlaceInit, 4); }},
        {"append a list",
         {1, 2, 3, 4, 5},
         0,
         true,
         [](A a) {
             arrayAppend(a, {4, 5});
         }},
        {"append nothing", {1, 2, 3}, 3, false, [](A a) { arrayAppend(a, ArrayView<const T>{}); }},
        {"append zeros",
         {1, 2, 3, 0, 0},
         0,
         true,
         [](A a) { EXPECT_EQ(arrayAppend(a, ValueInit, 2).size(), 2); }},
        {"append equal values",
         {1, 2, 3, 8, 8},
         0,
         true,
         [](A a) { arrayAppend(a, DirectInit, 2, 8); }},
        {"append a part of itself",
         {1, 2, 3, 2, 3},
         0,
         true,
         [](A a) { arrayAppend(a, a.exceptPrefix(1)); }},
        {"append a part of itself in place",
         {1, 2, 3, 2, 3},
         10,
         true,
         [](A a) {
             arrayReserve(a, 10);
             arrayAppend(a, a.exceptPrefix(1));
         }},
        {"insert first", {9, 1, 2, 3}, 0, true, [](A a) { EXPECT_EQ(arrayInsert(a, 0, T{9}), 9); }},
        {"insert within", {1, 2, 9, 3}, 0, true, [](A a) { arrayInsert(a, 2, InPlaceInit, 9); }},
        {"insert last", {1, 2, 3, 9}, 0, true, [](A a) { arrayInsert(a, 3, T{9}); }},
        {"remove", {2, 3}, 2, true, [](A a) { arrayRemove(a, 0); }},
        {"remove all", {}, 0, true, [](A a) { arrayRemove(a, 0, 3); }},
        {"remove none", {1, 2, 3}, 3, false, [](A a) { arrayRemove(a, 3, 0); }},
        {"remove the suffix", {1}, 1, true, [](A a) { arrayRemoveSuffix(a, 2); }},
        {"remove unordered",
         {4, 2, 3},
         4,
         true,
         [](A a) {
             arrayReserve(a, 4);
             arrayAppend(a, T{4});
             arrayRemoveUnordered(a, 0);
         }},
        {"clear", {}, 0, false, [](A a) { Containers::arrayClear(a); }},
        {"shrink",
         {1, 2, 3},
         3,
         false,
         [](A a) {
             arrayReserve(a, 10);
             arrayShrink(a);
         }},
    };
}

TYPED_TEST(ArrayOf, growth) {
    for (const auto& row : growthRows<TypeParam>()) {
        SCOPED_TRACE(row.name);
        Array<TypeParam> ordinary{InPlaceInit, {1, 2, 3}};
        row.change(ordinary);
        EXPECT_EQ(values<TypeParam>(ordinary), row.expected);
        EXPECT_EQ(arrayIsGrowable(ordinary), row.growable);
        EXPECT_GE(arrayCapacity(ordinary), ordinary.size());
        if (row.capacity) {
            EXPECT_EQ(arrayCapacity(ordinary), row.capacity);
        }

        Array<TypeParam> growable;
        arrayResize(growable, 3);
        std::copy_n(std::data({1, 2, 3}), 3, growable.begin());
        row.change(growable);
        EXPECT_EQ(values<TypeParam>(growable), row.expected);
    }
}

TYPED_TEST(ArrayOf, appendingReallocatesSeldom) {
    Array<TypeParam> array;
    int reallocations = 0;
    for (int i = 0; i != 10000; ++i) {
        const std::size_t capacity = arrayCapacity(array);
        arrayAppend(array, TypeParam{i});
        reallocations += arrayCapacity(array) != capacity;
    }
    EXPECT_LE(reallocations, 40);
    for (int i = 0; i != 10000; ++i)
        ASSERT_EQ(int(array[i]), i);
}

std::vector<std::pair<void*, std::size_t>> freed;

TEST(Array, memoryIsFreedOnceByItsDeleter) {
    int data[]{1, 2, 3};
    const auto deleter = [](int* data, std::size_t size) { freed.emplace_back(data, size); };

    freed.clear();
    {
        Array<int> array{data, 3, deleter};
        Array<int> other = std::move(array);
        array = std::move(other);
    }
    EXPECT_THAT(freed, ElementsAre(std::pair<void*, std::size_t>{data, 3}));

    freed.clear();
    {
        Array<int> array{data, 3, deleter};
        arrayAppend(array, 4);
        EXPECT_THAT(freed, ElementsAre(std::pair<void*, std::size_t>{data, 3}));
        EXPECT_EQ(values<int>(array), (std::vector<int>{1, 2, 3, 4}));
    }
    EXPECT_EQ(freed.size(), 1);

    freed.clear();
    {
        Array<int> array{data, 3, deleter};
        EXPECT_EQ(array.release(), data);
        EXPECT_EQ(array.data(), nullptr);
        EXPECT_EQ(array.deleter(), nullptr);
    }
    EXPECT_TRUE(freed.empty());
}

TEST(Array, growableMemoryIsHandedOnWithItsDeleter) {
    Array<Tracked> array;
    arrayAppend(array, {1, 2});
    const auto deleter = array.deleter();
    Tracked* const data = array.release();
    Array<Tracked> taken{data, 2, deleter};
    EXPECT_TRUE(arrayIsGrowable(taken));
    EXPECT_EQ(taken.back(), 2);
    taken = {};
    EXPECT_EQ(Tracked::alive, 0);
}

const int Numbers[]{0, 1, 2, 3, 4};

struct SliceRow {
    const char* name;
    std::vector<int> expected;
    ArrayView<const int> (*slice)(const Array<int>&);
};

const SliceRow SliceRows[]{
    {"slice", {1, 2}, [](const Array<int>& a) { return a.slice(1, 3); }},
    {"slice between pointers",
     {1, 2, 3, 4},
     [](const Array<int>& a) { return a.slice(a.begin() + 1, a.end()); }},
    {"slice of a size", {2, 3}, [](const Array<int>& a) { return a.sliceSize(2, 2); }},
    {"slice of a size from a pointer",
     {3},
     [](const Array<int>& a) { return a.sliceSize(a.data() + 3, 1); }},
    {"prefix", {0, 1}, [](const Array<int>& a) { return a.prefix(2); }},
    {"prefix to a pointer", {0}, [](const Array<int>& a) { return a.prefix(a.data() + 1); }},
    {"suffix from a pointer", {4}, [](const Array<int>& a) { return a.suffix(a.data() + 4); }},
    {"without prefix", {3, 4}, [](const Array<int>& a) { return a.exceptPrefix(3); }},
    {"without suffix", {0}, [](const Array<int>& a) { return a.exceptSuffix(4); }},
    {"empty at the end", {}, [](const Array<int>& a) { return a.exceptPrefix(5); }},
};

TEST(ArrayView, slices) {
    const Array<int> array{InPlaceInit, Containers::arrayView(Numbers)};
    for (const SliceRow& row : SliceRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(values(row.slice(array)), row.expected);
        EXPECT_TRUE(row.slice(array).data());
    }
    EXPECT_FALSE(array.prefix(static_cast<const int*>(nullptr)).data());
    EXPECT_FALSE(array.suffix(static_cast<const int*>(nullptr)).data());
}

TEST(ArrayView, conversions) {
    int numbers[]{1, 2, 3};
    Array<int> array{InPlaceInit, {1, 2, 3}};
    std::vector<int> vector{1, 2, 3};
    const ArrayView<int> view = numbers;

    for (const ArrayView<const int> same :
         {ArrayView<const int>{view}, ArrayView<const int>{array}, ArrayView<const int>{vector},
          ArrayView<const int>{Containers::arrayView(numbers)},
          ArrayView<const int>{Containers::arrayView(vector)}}) {
        EXPECT_EQ(values<int>(same), (std::vector<int>{1, 2, 3}));
        EXPECT_EQ(same.front(), 1);
        EXPECT_EQ(same.back(), 3);
    }
    for (const ArrayView<const void> bytes :
         {ArrayView<const void>{view}, ArrayView<const void>{array}, ArrayView<const void>{numbers},
          ArrayView<const void>{ArrayView<void>{array}}})
        EXPECT_EQ(bytes.size(), 3 * sizeof(int));

    Containers::arrayView(array)[1] = 7;
    EXPECT_EQ(values<int>(array), (std::vector<int>{1, 7, 3}));
    EXPECT_EQ(Containers::arrayCast<std::uint8_t>(view).size(), 3 * sizeof(int));
    static_assert(!std::is_convertible<const Array<int>&, ArrayView<int>>::value, "");
    static_assert(!std::is_convertible<ArrayView<const int>, ArrayView<int>>::value, "");
}

struct MisuseRow {
    const char* name;
    void (*misuse)(Array<int>&);
    const char* message;
};

const MisuseRow MisuseRows[]{
    {"index", [](Array<int>& a) { a[5] = 1; },
     "Containers::Array::operator[](): index 5 out of range for 5 elements\n"},
    {"index of a view", [](Array<int>& a) { a.prefix(2)[2] = 1; },
     "Containers::ArrayView::operator[](): index 2 out of range for 2 elements\n"},
    {"front", [](Array<int>& a) { (a = {}).front() = 1; },
     "Containers::Array::front(): array is empty\n"},
    {"back of a view", [](Array<int>& a) { a.prefix(0).back() = 1; },
     "Containers::ArrayView::back(): view is empty\n"},
    {"slice", [](Array<int>& a) { a.slice(3, 2); },
     "Containers::ArrayView::slice(): slice [3:2] out of range for 5 elements\n"},
    {"slice between pointers", [](Array<int>& a) { a.suffix(a.end() + 1); },
     "Containers::ArrayView::slice(): slice [6:5] out of range for 5 elements\n"},
    {"append from within", [](Array<int>& a) { arrayAppend(a, a[1]); },
     "Containers::arrayAppend(): use the list variant to append values from within the array "
     "itself\n"},
    {"insert", [](Array<int>& a) { arrayInsert(a, 6, 1); },
     "Containers::arrayInsert(): can't insert at index 6 into an array of size 5\n"},
    {"remove", [](Array<int>& a) { arrayRemove(a, 4, 2); },
     "Containers::arrayRemove(): can't remove 2 elements at index 4 from an array of size 5\n"},
    {"remove unordered", [](Array<int>& a) { arrayRemoveUnordered(a, 5); },
     "Containers::arrayRemoveUnordered(): can't remove 1 elements at index 5 from an array of size "
     "5\n"},
    {"remove the suffix", [](Array<int>& a) { arrayRemoveSuffix(a, 6); },
     "Containers::arrayRemoveSuffix(): can't remove 6 elements from an array of size 5\n"},
};

TEST(ArrayDeathTest, misuse) {
#ifdef NDEBUG
    GTEST_SKIP() << "only checked in debug builds";
#endif
    for (const MisuseRow& row : MisuseRows) {
        SCOPED_TRACE(row.name);
        Array<int> array{InPlaceInit, Containers::arrayView(Numbers)};
        EXPECT_DEATH(row.misuse(array), testing::StrEq(row.message));
    }
}

} // namespace
