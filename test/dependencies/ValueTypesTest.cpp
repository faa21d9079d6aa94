#include <memory>
#include <type_traits>

#include <Corrade/Containers/EnumSet.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/Reference.h>
#include <Corrade/Containers/Triple.h>
#include <gmock/gmock.h>

using namespace Corrade;
using Containers::NullOpt;
using Containers::Optional;
using Containers::Pair;
using Containers::Pointer;
using Containers::Reference;
using Containers::Triple;

/* Not in the anonymous namespace, where operators that the test leaves out are unused functions */
namespace Sets {

enum class Letter : unsigned char { A = 1, B = 2, C = 4 };
using Letters = Containers::EnumSet<Letter, 7>;
CORRADE_ENUMSET_OPERATORS(Letters)

} // namespace Sets

namespace {

using Sets::Letter;
using Sets::Letters;
using Shared = std::shared_ptr<int>;

TEST(EnumSet, StaysAmongItsFlags) {
    const Letters ab = Letter::A | Letter::B;
    const Pair<Letters, int> rows[]{
        {{}, 0},         {ab | Letter::C, 7}, {Letter::B & ab, 2}, {ab & ~Letters{Letter::A}, 2},
        {~Letter::A, 6},
    };
    for (const auto& row : rows) {
        EXPECT_EQ((unsigned char)(row.first()), row.second());
        EXPECT_EQ(bool(row.first()), row.second() != 0);
    }
    EXPECT_TRUE(ab >= Letter::A && ab >= Letters{} && ab != Letter::A);
    EXPECT_FALSE(ab >= Letter::C || ab <= Letter::A);
    static_assert(!std::is_convertible<Letters, bool>::value);
}

TEST(Optional, HoldsOneValueOrNone) {
    const Shared shared = std::make_shared<int>(3);
    Optional<Shared> value = shared;
    Optional<Shared> other;
    EXPECT_TRUE(value && value == shared && value != NullOpt && value != other && other == NullOpt);
    other = value;
    EXPECT_EQ(shared.use_count(), 3);
    const Shared taken = *std::move(other);
    other.emplace(shared);
    EXPECT_EQ(shared.use_count(), 4);
    value = {};
    other = NullOpt;
    EXPECT_EQ(shared.use_count(), 2);
    EXPECT_TRUE(!value && !other && value == other);
}

TEST(PairAndTriple, CarryAnyValues) {
    Pair<int, Pointer<int>> pair{1, Containers::pointer<int>(5)};
    pair.first() = 2;
    const Pair<int, Pointer<int>> moved = std::move(pair);
    EXPECT_EQ(moved.first(), 2);
    EXPECT_EQ(*moved.second(), 5);
    Triple<int, const char*, Pointer<int>> triple{1, "two", Containers::pointer<int>(5)};
    EXPECT_STREQ(triple.second(), "two");
    EXPECT_EQ(*std::move(triple).third(), 5);
    EXPECT_EQ((Pair<int, float*>{}), (Pair<int, float*>{0, nullptr}));
    EXPECT_NE((Pair<int, int>{1, 2}), (Pair<int, int>{1, 3}));
    EXPECT_NE((Triple<int, int, int>{1, 2, 3}), (Triple<int, int, int>{1, 2, 4}));
}

struct Base {
    virtual ~Base() = default;
    int number = 1;
};
struct Derived : Base {
    explicit Derived(Shared shared) : shared{std::move(shared)} {}
    Shared shared;
};

TEST(Pointer, OwnsUntilReleased) {
    const Shared shared = std::make_shared<int>(3);
    Pointer<Derived> pointer = Containers::pointer<Derived>(shared);
    Pointer<Base> base = std::move(pointer);
    EXPECT_TRUE(!pointer && base && shared.use_count() == 2);
    const Reference<Base> reference = *base;
    EXPECT_EQ(&reference.get(), base.get());
    EXPECT_EQ(reference->number, 1);
    pointer.reset(static_cast<Derived*>(base.release()));
    EXPECT_EQ(shared.use_count(), 2);
    base = std::move(pointer);
    base = nullptr;
    EXPECT_EQ(shared.use_count(), 1);
    static_assert(!std::is_copy_constructible<Pointer<int>>::value);
    static_assert(!std::is_convertible<Pointer<Base>, Pointer<Derived>>::value);
    static_assert(!std::is_constructible<Reference<int>, int>::value);
}

#ifndef NDEBUG
TEST(ValueTypesDeathTest, Misuse) {
    EXPECT_DEATH(*Optional<int>{}, testing::StrEq("Containers::Optional: the optional is empty\n"));
    EXPECT_DEATH(*Pointer<int>{}, testing::StrEq("Containers::Pointer: the pointer is null\n"));
}
#endif

} // namespace
