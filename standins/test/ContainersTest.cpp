#include <random>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <gmock/gmock.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::Array;
using Containers::String;
using Containers::StringView;
using Containers::StringViewFlags;

namespace {

/* A short text lies in the object itself, which refers to it; a long one lies on the heap. */
struct Text : std::string {
    explicit Text(std::size_t size = 0) : std::string(size % 40, 'x') {}
};

template <class T>
class ArrayOf : public testing::Test {};
using ElementTypes = testing::Types<unsigned char, Text>;
TYPED_TEST_SUITE(ArrayOf, ElementTypes);

/* Changes both in the same way, by a number that is no larger than the size. */
template <class T>
void change(Array<T>& array, std::vector<T>& vector, unsigned kind, std::size_t number) {
    switch (kind) {
    case 0:
        arrayAppend(array, T(number));
        vector.push_back(T(number));
        break;
    case 1:
        arrayAppend(array, array.exceptPrefix(number));
        vector.reserve(2 * vector.size());
        vector.insert(vector.end(), vector.begin() + std::ptrdiff_t(number), vector.end());
        break;
    case 2:
        arrayResize(array, number + 3);
        vector.resize(number + 3);
        break;
    case 3:
        arrayRemoveSuffix(array, number / 2);
        vector.resize(vector.size() - number / 2);
        break;
    case 4:
        EXPECT_GE(arrayReserve(array, 2 * number), 2 * number);
        break;
    default: /* To memory that cannot grow. */
        array = Array<T>{InPlaceInit, {array.data(), array.size()}};
    }
}

TYPED_TEST(ArrayOf, ChangesAsAVectorDoes) {
    Array<TypeParam> array;
    std::vector<TypeParam> vector;
    std::mt19937 random;
    for (int i = 0; i != 10000; ++i) {
        change(array, vector, random() % 6, random() % (vector.size() + 1));
        ASSERT_EQ(std::vector<TypeParam>(array.begin(), array.end()), vector) << "change " << i;
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

constexpr StringViewFlags none;
constexpr StringViewFlags global = Containers::StringViewFlag::Global;
constexpr StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;

/* A wrong flag lets its reader go past the end of a text or keep one that is gone. */
TEST(StringView, KeepsWhatIsKnownOfTheMemory) {
    const char* const data = "banana";
    const String owned = "owned";
    const StringView view{data, 6, global | terminated};
    const struct {
        const char* name;
        StringView view;
        const char* data;
        std::size_t size;
        StringViewFlags flags;
    } rows[]{
        {"C string", data, data, 6, terminated},
        {"data and size", {data, 3}, data, 3, none},
        {"string", owned, owned.data(), 5, terminated},
        {"slice to the end", view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {"prefix to null", view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {"without prefix", view.exceptPrefix(2), data + 2, 4, global | terminated},
        {"without suffix", view.exceptSuffix(1), data, 5, global},
        {"trimmed altogether", view.trimmedPrefix("abn"), data + 6, 0, global | terminated},
        {"last character", view.findLast('a'), data + 5, 1, global | terminated},
        {"partial match at the end", view.find("nas"), nullptr, 0, none},
        {"else the end", view.findOr('x', view.end()), view.end(), 0, none},
        {"in nothing", StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.view.data(), row.data);
        EXPECT_EQ(row.view.size(), row.size);
        EXPECT_EQ(row.view.flags(), row.flags);
    }
    EXPECT_EQ(StringView{String{"temporary"}}.flags(), none);
}

#ifndef NDEBUG
TEST(ContainersDeathTest, Misuse) {
    Array<int> array{InPlaceInit, {1, 2, 3}};
    EXPECT_DEATH(array[3] = 1, "index 3 out of range for 3 elements\n$");
    EXPECT_DEATH(arrayAppend(array, array[1]), "append values from within the array itself\n$");
    EXPECT_DEATH("abc"_s.slice(2, 4), "slice \\[2:4\\] out of range for 3 elements\n$");
    EXPECT_DEATH(*Containers::Optional<int>{}, "the optional is empty\n$");
    EXPECT_DEATH(*Containers::Pointer<int>{}, "the pointer is null\n$");
}
#endif

} // namespace
