#include <memory>
#include <type_traits>

#include <Corrade/Containers/EnumSet.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pointer.h>
#include <gmock/gmock.h>

using namespace Corrade;
using Containers::Optional;
using Containers::Pointer;

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
    EXPECT_EQ(~Letter::A, Letter::B | Letter::C);
    EXPECT_EQ(Letter::B & ab & ~Letters{Letter::A}, Letters{Letter::B});
    EXPECT_TRUE(ab >= Letter::A && ab >= Letters{} && ab != Letter::A && !(ab & Letter::C));
    EXPECT_FALSE(ab >= Letter::C || ab <= Letter::A || bool(Letters{}));
    static_assert(!std::is_convertible<Letters, bool>::value);
}

TEST(Optional, HoldsOneValueOrNone) {
    const Shared shared = std::make_shared<int>(3);
    Optional<Shared> value = shared;
    Optional<Shared> other;
    EXPECT_TRUE(value && value == shared && value != other && other == Containers::NullOpt);
    other = value;
    EXPECT_EQ(shared.use_count(), 3);
    const Shared taken = *std::move(other);
    other.emplace(shared);
    EXPECT_EQ(shared.use_count(), 4);
    value = {};
    other = Containers::NullOpt;
    EXPECT_EQ(shared.use_count(), 2);
    EXPECT_TRUE(!value && value == other && value != shared);
}

struct Base {
    virtual ~Base() = default;
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
    pointer.reset(static_cast<Derived*>(base.release()));
    EXPECT_EQ(shared.use_count(), 2);
    base = std::move(pointer);
    base = nullptr;
    EXPECT_EQ(shared.use_count(), 1);
    static_assert(!std::is_copy_constructible<Pointer<int>>::value);
    static_assert(!std::is_convertible<Pointer<Base>, Pointer<Derived>>::value);
}

#ifndef NDEBUG
TEST(ValueTypesDeathTest, Misuse) {
    EXPECT_DEATH(*Optional<int>{}, testing::StrEq("Containers::Optional: the optional is empty\n"));
    EXPECT_DEATH(*Pointer<int>{}, testing::StrEq("Containers::Pointer: the pointer is null\n"));
}
#endif

} // namespace
