#ifndef VespermoorEditor_Utils_JsonObject_h
#define VespermoorEditor_Utils_JsonObject_h

#include <cstddef>
#include <type_traits>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Containers/StringView.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Quaternion.h>
#include <Magnum/Math/Vector2.h>
#include <Magnum/Math/Vector3.h>
#include <Magnum/Math/Vector4.h>

#include "VespermoorEditor/Utils/RapidJson.h"
#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Corrade.h"

namespace VespermoorEngine {

/**
 * @brief Typed access to one JSON value.
 *
 * Holds no data: the five pure virtual operations of a subclass select the value. It can be a
 * member of a document, a place that does not exist yet, or one value to read and another one to
 * write. Every other operation works on the results of those five.
 *
 * Views that a read returns alias the value's own storage. They live until that value, or the array
 * that holds it, changes or the document ends. Unless documented otherwise, a read trusts its
 * caller about the kind of the value; test @ref isNull() and @ref size() first on a document from
 * outside.
 */
class VESPERMOOR_EDITOR_UTILS_EXPORT JsonObject {
public:
    virtual ~JsonObject();

    /** @brief Whether this accessor refers to a value that exists. */
    virtual bool exists() = 0;

    /**
     * @brief New accessor for the value at @p path, owned by the caller.
     *
     * A slash in @p path is a step down; the path does not begin with one. Never a null pointer: if
     * nothing exists at @p path, @ref exists() of the result is false.
     */
    virtual Containers::Pointer<JsonObject> member(Containers::StringView path) = 0;

    /** @brief Allocator of the document that holds @ref mutableValue(). */
    virtual rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() = 0;

    /**
     * @brief The value to read, of kind null if it is missing.
     *
     * An operation may call this more than once, so the result must not change during a call.
     */
    virtual const rapidjson::Value& value() const = 0;

    /** @brief The value to write, which may be the one of @ref value() or another one. */
    virtual rapidjson::Value& mutableValue() = 0;

    /** @name Single values
     *
     * @{ */

    /** @brief Whether the value is of kind null. */
    bool isNull() const;

    /** @brief Element count of an array, member count of an object, 0 for every other kind. */
    std::size_t size() const;

    /**
     * @brief The bytes of a string, without flags; a default-constructed view for every other kind.
     */
    Containers::StringView asString() const;

    /** @brief Whether the value is JSON true; false for every other kind. */
    bool asBool() const;

    /** @brief Low 32 bits of an integer; @p defaultValue on null, and only there. */
    int asInt(int defaultValue) const;

    /** @brief Low 32 bits of an integer; @p defaultValue on null, and only there. */
    unsigned int asUnsignedInt(unsigned int defaultValue) const;

    /** @brief A number, taken as a double and then narrowed; 0.0 on null and on a boolean. */
    float asFloat() const;

    /** @} */

    /** @name Fixed-size types, read from an array of numbers
     *
     * An array of another size aborts with the message of the array read that it calls,
     * `JsonObject::asFloatArray(): Sizes do not match` or
     * `JsonObject::asIntArray(): Sizes do not match`. Nothing is allocated.
     *
     * @{ */

    /** @brief Vector from an array of 2 numbers. */
    Magnum::Vector2 asVector2() const;

    /** @brief Vector from an array of 3 numbers. */
    Magnum::Vector3 asVector3() const;

    /** @brief Vector from an array of 4 numbers. */
    Magnum::Vector4 asVector4() const;

    /** @brief Vector from an array of 2 integers. */
    Magnum::Vector2i asVector2i() const;

    /** @brief Matrix from an array of 16 numbers, column after column. */
    Magnum::Math::Matrix4<float> asMatrix4() const;

    /**
     * @brief Quaternion from an array that begins with x, y, z of the vector part and w, the
     * scalar part.
     *
     * Elements past the fourth are ignored. Fewer than four abort with
     * `JsonObject::asQuaternion(): Sizes do not match`. Unlike its siblings it allocates a
     * temporary array.
     */
    Magnum::Math::Quaternion<float> asQuaternion() const;

    /** @} */

    /** @name Arrays
     *
     * The forms with a view fill memory of the caller and expect it to have exactly as many
     * elements as the array; otherwise they abort before they write, with a message such as
     * `JsonObject::asFloatArray(): Sizes do not match`. The others allocate the result, which is
     * empty with null data for an empty array and for null. A value of another kind counts as an
     * empty array. Views of strings are
     * NUL-terminated, and an element of another kind gives a default-constructed one.
     *
     * @{ */

    /** @brief Numbers, each taken as a double and then narrowed, a null or boolean as 0.0. */
    void asFloatArray(Containers::ArrayView<float> array) const;
    /** @brief Low 32 bits of integers. */
    void asIntArray(Containers::ArrayView<int> array) const;
    /** @brief Low 32 bits of integers. */
    void asUnsignedIntArray(Containers::ArrayView<unsigned int> array) const;
    /** @brief Views of strings. */
    void asStringArray(Containers::ArrayView<Containers::StringView> array) const;

    /** @overload */
    Containers::Array<float> asFloatArray() const;
    /** @overload */
    Containers::Array<int> asIntArray() const;
    /** @overload */
    Containers::Array<unsigned int> asUnsignedIntArray() const;
    /** @brief Copies of strings, with all their bytes. */
    Containers::Array<Containers::String> asStringArray() const;
    /** @brief Views of strings. */
    Containers::Array<Containers::StringView> asStringViewArray() const;

    /**
     * @brief NUL-terminated view of the string at @p index, expected to be inside an array.
     *
     * Aborts with `JsonObject::elementAsString(): Not an array` or
     * `JsonObject::elementAsString(): Index is out of bounds`, tested in this order.
     */
    Containers::StringView elementAsString(std::size_t index) const;

    /** @} */

    /**
     * @name Replacing with a single value
     *
     * Overwrites @ref mutableValue(), of any kind, without reading @ref value(). Here and in every
     * other write, memory comes from @ref allocator(); that of the old value stays in the
     * document's pool until the document is destroyed.
     *
     * @{
     */

    /** @brief Stores null. */
    void setNull();
    /** @brief Stores true or false. */
    void setBool(bool boolean);
    /** @brief Stores an integer; one that is not negative counts as unsigned as well. */
    void setInt(int number);
    /** @brief Stores a double of exactly the same value. */
    void setFloat(float number);
    /** @brief Stores a copy of @p string, the empty one for null data. */
    void setString(Containers::StringView string);

    /** @} */

    /**
     * @name Replacing with an array
     *
     * Overwrites @ref mutableValue() with an array whose memory is allocated once, at exactly the
     * size of the input. An empty input gives an empty array, not null. If the old value is a
     * string, the new strings must not be views of it, since it is overwritten first. Views of an
     * old array's elements may be stored.
     *
     * @{
     */

    /** @brief Stores doubles of exactly the same values. */
    void setFloatArray(Containers::ArrayView<const float> numbers);
    /** @brief Stores integers as @ref setInt() does. */
    void setIntArray(Containers::ArrayView<const int> numbers);
    /** @brief Stores each byte as an integer from 0 to 255. */
    void setUnsignedCharArray(Containers::ArrayView<const unsigned char> numbers);
    /** @brief Stores copies of the strings, each as @ref setString() does. */
    void setArray(const Containers::StringIterable& strings);

    /** @overload */
    void setArray(Containers::ArrayView<const float> numbers);
    /** @overload */
    void setArray(Containers::ArrayView<const int> numbers);
    /** @overload */
    void setArray(Containers::ArrayView<const unsigned char> numbers);
    /** @overload */
    void setArray(Containers::ArrayView<const Containers::StringView> strings);
    /**
     * @overload
     *
     * For arrays of views, such as those of @ref asStringViewArray(), which convert to both of the
     * other forms that take strings.
     */
    template <class Views, class = std::enable_if_t<std::is_convertible_v<
                               const Views&, Containers::ArrayView<const Containers::StringView>>>>
    void setArray(const Views& strings) {
        setArray(Containers::ArrayView<const Containers::StringView>{strings});
    }

    /** @brief Stores 16 doubles, column after column, as @ref asMatrix4() reads them. */
    void setMatrix(const Magnum::Math::Matrix4<float>& matrix);
    /** @brief Stores x, y, z of the vector part and w, as @ref asQuaternion() reads them. */
    void setQuaternion(const Magnum::Math::Quaternion<float>& quaternion);

    /** @} */

    /** @name Editing an array
     *
     * If @ref value() and @ref mutableValue() are different values, the appending operations first
     * make the latter a deep copy of the former. A value that is not an array then becomes an empty
     * one. The string to append must not be a view of an old value that this overwrites.
     *
     * @{ */

    /** @brief Appends a copy of @p string, the empty one for null data. */
    void pushBackString(Containers::StringView string);

    /**
     * @brief Appends a copy of @p string unless the array has an equal string already.
     *
     * Strings of the array are compared up to their first NUL, case included, and elements of
     * other kinds are skipped. If an equal one is found, a copy made before stays in place.
     */
    void pushBackStringUnique(Containers::StringView string);

    /**
     * @brief Removes the element at @p index, expected to be inside an array; the rest keep their
     * order.
     *
     * Aborts with `JsonObject::eraseElement(): Not an array` or
     * `JsonObject::eraseElement(): Index is out of bounds`, tested in this order, and leaves the
     * array as it is. Both @ref value() and @ref mutableValue() are expected to hold the array, and
     * the element is removed from the latter.
     */
    void eraseElement(std::size_t index);

    /** @} */
};

} // namespace VespermoorEngine

#endif
