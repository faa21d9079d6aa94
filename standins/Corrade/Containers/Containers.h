#ifndef VespermoorStandins_Corrade_Containers_Containers_h
#define VespermoorStandins_Corrade_Containers_Containers_h

/** @file Stands in for the forward declarations of Corrade's containers. */

#include <cstddef>
#include <type_traits>

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

template <class T, class D = void (*)(T*, std::size_t)>
class Array;
template <class T>
class ArrayView;
template <std::size_t size, class T>
class StaticArray;
template <class T>
using Array3 = StaticArray<3, T>;

template <class T, std::underlying_type_t<T> fullValue = std::underlying_type_t<T>(~0)>
class EnumSet;

template <class F, class S>
class Pair;
template <class F, class S, class T>
class Triple;
template <class T>
class Optional;
template <class T>
class Pointer;
template <class T>
class Reference;

class String;
template <class T>
class BasicStringView;
using StringView = BasicStringView<const char>;
using MutableStringView = BasicStringView<char>;
enum class StringViewFlag : std::size_t;
using StringViewFlags = EnumSet<StringViewFlag, std::size_t{3} << (sizeof(std::size_t) * 8 - 2)>;
class StringIterable;
class StringIterableIterator;

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
