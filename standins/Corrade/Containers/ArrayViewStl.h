#ifndef VespermoorStandins_Corrade_Containers_ArrayViewStl_h
#define VespermoorStandins_Corrade_Containers_ArrayViewStl_h

/** @file Stands in for Corrade's conversion of `std::array` and `std::vector` to a view. */

#include <array>
#include <vector>

#include "Corrade/Containers/ArrayView.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

template <class T, class U, std::size_t size>
struct ArrayViewConverter<T, std::array<U, size>> : ArrayViewOfContainer<T> {};
template <class T, class U, class Allocator>
struct ArrayViewConverter<T, std::vector<U, Allocator>> : ArrayViewOfContainer<T> {};

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
