#ifndef VespermoorStandins_Magnum_Math_Vector_h
#define VespermoorStandins_Magnum_Math_Vector_h

#include <cstddef>
#include <type_traits>

#include "Corrade/Utility/Debug.h"
#include "Magnum/Magnum.h"
#include "Magnum/Math/Tags.h"
#include "Magnum/Math/TypeTraits.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of a size that the type says; its arithmetic is left out. */
template <std::size_t size, class T>
class Vector {
public:
    using Type = T;
    enum : std::size_t { Size = size };

    static Vector& from(T* data) { return *reinterpret_cast<Vector*>(data); }
    static const Vector& from(const T* data) { return *reinterpret_cast<const Vector*>(data); }

    constexpr Vector() noexcept : _data{} {}
    constexpr explicit Vector(ZeroInitT) noexcept : _data{} {}
    explicit Vector(Magnum::NoInitT) noexcept {}
    template <class... Next, class = std::enable_if_t<sizeof...(Next) + 1 == size>>
    constexpr Vector(T first, Next... next) noexcept : _data{first, T(next)...} {}
    template <class U, class = std::enable_if_t<std::is_same<T, U>::value && size != 1>>
    constexpr explicit Vector(U value) noexcept : _data{} {
        for (T& component : _data)
            component = value;
    }
    template <class U>
    constexpr explicit Vector(const Vector<size, U>& other) noexcept : _data{} {
        for (std::size_t i = 0; i != size; ++i)
            _data[i] = T(other[i]);
    }

    constexpr auto data() -> T (&)[size] { return _data; }
    constexpr auto data() const -> const T (&)[size] { return _data; }
    constexpr T& operator[](std::size_t i) { return _data[i]; }
    constexpr T operator[](std::size_t i) const { return _data[i]; }

    bool operator==(const Vector& other) const {
        for (std::size_t i = 0; i != size; ++i)
            if (!TypeTraits<T>::equals(_data[i], other._data[i]))
                return false;
        return true;
    }
    bool operator!=(const Vector& other) const { return !operator==(other); }

private:
    template <class>
    friend class Vector2;
    template <class>
    friend class Vector3;
    template <class>
    friend class Vector4;

    T _data[size];
};

template <std::size_t size, class T>
Debug& operator<<(Debug& debug, const Vector<size, T>& value) {
    debug << "Vector(" << Debug::nospace << value[0];
    for (std::size_t i = 1; i != size; ++i)
        debug << Debug::nospace << "," << value[i];
    return debug << Debug::nospace << ")";
}

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
