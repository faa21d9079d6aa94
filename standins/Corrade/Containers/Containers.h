#ifndef VespermoorStandins_Corrade_Containers_Containers_h
#define VespermoorStandins_Corrade_Containers_Containers_h

/** @file Stand-in for the forward declarations of Corrade's containers. */

#include <cstddef>
#include <type_traits>

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

template <class T>
class Array;
template <class T>
class ArrayView;

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
class StringIterable;

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
