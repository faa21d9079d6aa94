#include <random>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/String.h>
#include <gmock/gmock.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::Array;
using Containers::StringView;
using Containers::StringViewFlags;

namespace {

/* A short text is in the object itself, which refers to it; a long one is on the heap. */
struct Text : std::string {
    explicit Text(std::size_t size = 0) : std::string(size % 40, 'x') {}
};

/* Changes both in the same way, by at most the size. */
template <class T>
void change(Array<T>& array, std::vector<T>& vector, unsigned kind, std::size_t number) {
    if (kind == 0) {
        arrayAppend(array, T(number));
        vector.push_back(T(number));
    } else if (kind == 1) {
        arrayAppend(array, array.exceptPrefix(number));
        vector.reserve(2 * vector.size());
        vector.insert(vector.end(), vector.begin() + std::ptrdiff_t(number), vector.end());
    } else if (kind == 2) {
        arrayResize(array, number + 3);
        vector.resize(number + 3);
    } else if (kind == 3) {
        arrayRemoveSuffix(array, number / 2);
        vector.resize(vector.size() - number / 2);
    } else if (kind == 4) {
        EXPECT_GE(arrayReserve(array, 2 * number), 2 * number);
    } else { /* Moves to memory that cannot grow. */
        array = Array<T>{InPlaceInit, {array.data(), array.size()}};
    }
}

template <class T>
void expectChangesLikeThoseOfAVector() {
    Array<T> array;
    std::vector<T> vector;
    std::mt19937 random;
    for (int i = 0; i != 10000; ++i) {
        change(array, vector, random() % 6, random() % (vector.size() + 1));
        ASSERT_EQ(std::vector<T>(array.begin(), array.end()), vector) << "change " << i;
    }
}

TEST(Array, ChangesAsAVectorDoes) {
    expectChangesLikeThoseOfAVector<unsigned char>();
    expectChangesLikeThoseOfAVector<Text>();
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

/* With a wrong flag a reader goes past the end of a text or keeps a destroyed one. */
TEST(StringView, TracksTheFlagsOfTheMemory) {
    constexpr StringViewFlags none;
    constexpr StringViewFlags global = Containers::StringViewFlag::Global;
    constexpr StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;
    const char* const data = "banana";
    const StringView view{data, 6, global | terminated};
    const std::tuple<StringView, const char*, std::size_t, StringViewFlags> rows[]{
        {data, data, 6, terminated},
        {view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {view.exceptPrefix(2), data + 2, 4, global | terminated},
        {view.exceptSuffix(1), data, 5, global},
        {view.trimmedPrefix("abn"), data + 6, 0, global | terminated},
        {view.findLast('a'), data + 5, 1, global | terminated},
        {view.find("nas"), nullptr, 0, none},
        {view.findOr('x', view.end()), view.end(), 0, none},
        {StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& [found, begin, size, flags] : rows) {
        SCOPED_TRACE(size);
        EXPECT_EQ(found.data(), begin);
        EXPECT_EQ(found.size(), size);
        EXPECT_EQ(found.flags(), flags);
    }
    EXPECT_EQ(StringView{Containers::String{"temporary"}}.flags(), none);
}

#ifndef NDEBUG
TEST(ContainersDeathTest, Misuse) {
    Array<int> array{InPlaceInit, {1, 2, 3}};
    EXPECT_DEATH(array[3] = 1, "index 3 out of range for 3 elements\n$");
    EXPECT_DEATH(arrayAppend(array, array[1]), "append values from within the array itself\n$");
    EXPECT_DEATH("abc"_s.slice(2, 4), "slice \\[2:4\\] out of range for 3 elements\n$");
}
#endif

} // namespace
