#ifndef VespermoorStandins_Magnum_Math_RectangularMatrix_h
#define VespermoorStandins_Magnum_Math_RectangularMatrix_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's matrix, stored column after column; its arithmetic is left out. */
template <std::size_t cols, std::size_t rows, class T>
class RectangularMatrix {
public:
    using Type = T;
    enum : std::size_t { Cols = cols, Rows = rows };

    constexpr RectangularMatrix() noexcept : _columns{} {}
    constexpr explicit RectangularMatrix(ZeroInitT) noexcept : _columns{} {}
    constexpr explicit RectangularMatrix(IdentityInitT, T value = T(1)) noexcept : _columns{} {
        constexpr std::size_t diagonal = cols < rows ? cols : rows;
        for (std::size_t i = 0; i != diagonal; ++i)
            _columns[i][i] = value;
    }
    /* Zeros nevertheless: skipping so few costs more code than it saves time */
    explicit RectangularMatrix(Magnum::NoInitT) noexcept : RectangularMatrix{} {}
    template <class... Next>
    constexpr RectangularMatrix(const Vector<rows, T>& first, const Next&... next) noexcept
        : _columns{first, next...} {
        static_assert(sizeof...(Next) + 1 == cols, "a matrix is made of all its columns");
    }

    auto data() -> T (&)[cols * rows] { return reinterpret_cast<T(&)[cols * rows]>(_columns); }
    auto data() const -> const T (&)[cols * rows] {
        return reinterpret_cast<const T(&)[cols * rows]>(_columns);
    }
    constexpr Vector<rows, T>& operator[](std::size_t column) { return _columns[column]; }
    constexpr const Vector<rows, T>& operator[](std::size_t column) const {
        return _columns[column];
    }

    bool operator==(const RectangularMatrix& other) const {
        for (std::size_t i = 0; i != cols; ++i)
            if (_columns[i] != other._columns[i])
                return false;
        return true;
    }
    bool operator!=(const RectangularMatrix& other) const { return !operator==(other); }

private:
    Vector<rows, T> _columns[cols];
};

/* Printed row after row, as it is written on paper */
template <std::size_t cols, std::size_t rows, class T>
Debug& operator<<(Debug& debug, const RectangularMatrix<cols, rows, T>& value) {
    debug << "Matrix(" << Debug::nospace;
    for (std::size_t row = 0; row != rows; ++row) {
        if (row)
            debug << Debug::nospace << ",\n      ";
        for (std::size_t column = 0; column != cols; ++column) {
            if (column)
                debug << Debug::nospace << ",";
            debug << value[column][row];
        }
    }
    return debug << Debug::nospace << ")";
}

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
