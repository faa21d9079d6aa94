#include <random>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>
#include <gmock/gmock.h>

using namespace Corrade;
using Containers::Array;

namespace {

/* A short text lies in the object itself, which refers to it; a long one lies on the heap. */
struct Text : std::string {
    explicit Text(std::size_t size = 0) : std::string(size % 40, 'x') {}
};

template <class T>
class ArrayOf : public testing::Test {};
using ElementTypes = testing::Types<unsigned char, Text>;
TYPED_TEST_SUITE(ArrayOf, ElementTypes);

TYPED_TEST(ArrayOf, ChangesAsAVectorDoes) {
    using T = TypeParam;
    using A = Array<T>&;
    using V = std::vector<T>&;
    const struct {
        /* By a number that is no larger than the size. */
        void (*change)(A, std::size_t);
        void (*changeAlike)(V, std::size_t);
    } rows[]{
        // clang-format off
        {[](A a, auto n) { arrayAppend(a, T(n)); }, [](V v, auto n) { v.push_back(T(n)); }},
        {[](A a, auto n) { arrayAppend(a, a.exceptPrefix(n)); },
         [](V v, auto n) { for (const auto end = v.size(); n != end; ++n) { v.push_back(T(v[n])); } }},
        {[](A a, auto n) { arrayResize(a, n + 3); }, [](V v, auto n) { v.resize(n + 3); }},
        {[](A a, auto n) { arrayRemoveSuffix(a, n / 2); },
         [](V v, auto n) { v.resize(v.size() - n / 2); }},
        {[](A a, auto n) { EXPECT_GE(arrayReserve(a, 2 * n), 2 * n); }, [](V, auto) {}},
        /* To memory that cannot grow. */
        {[](A a, auto) { a = Array<T>{InPlaceInit, {a.data(), a.size()}}; }, [](V, auto) {}},
        // clang-format on
    };
    Array<T> array;
    std::vector<T> vector;
    std::mt19937 random;
    for (int i = 0; i != 10000; ++i) {
        const auto& row = rows[random() % std::size(rows)];
        const std::size_t number = random() % (vector.size() + 1);
        row.change(array, number);
        row.changeAlike(vector, number);
        ASSERT_EQ(std::vector<T>(array.begin(), array.end()), vector) << "after change " << i;
    }
}

TEST(Array, MovesItsElementsSeldomWhenAppendedTo) {
    Array<int> array;
    std::set<std::size_t> capacities;
    for (int i = 0; i != 10000; ++i) {
        arrayAppend(array, i);
        capacities.insert(arrayCapacity(array));
    }
    EXPECT_LE(capacities.size(), 40);
}

#ifndef NDEBUG
TEST(ContainersDeathTest, Misuse) {
    Array<int> array{InPlaceInit, {1, 2, 3}};
    const auto says = [](const char* text) { return std::string{"^Containers::"} + text + "\n$"; };
    EXPECT_DEATH(array[3] = 1,
                 says("Array::operator\\[\\]\\(\\): index 3 out of range for 3 elements"));
    EXPECT_DEATH(arrayAppend(array, array[1]), says("arrayAppend\\(\\): use the list variant to "
                                                    "append values from within the array itself"));
    EXPECT_DEATH(Containers::StringView{"abc"}.slice(2, 4),
                 says("StringView::slice\\(\\): slice \\[2:4\\] out of range for 3 elements"));
    EXPECT_DEATH(*Containers::Optional<int>{}, says("Optional: the optional is empty"));
    EXPECT_DEATH(*Containers::Pointer<int>{}, says("Pointer: the pointer is null"));
}
#endif

} // namespace
