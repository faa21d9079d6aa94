#ifndef VespermoorEngine_StringArray_h
#define VespermoorEngine_StringArray_h

#include <Corrade/Containers/ArrayView.h>

#include "VespermoorEngine/StringArrayView.h"

namespace VespermoorEngine {

/** @brief List of packed strings whose characters may be written to; the store is not owned. */
class VESPERMOOR_ENGINE_EXPORT MutableStringArrayView : public StringArrayView {
public:
    /**
     * @brief View of the first @p count NUL-terminated strings in @p characters.
     *
     * The strings are packed from the start of the range, which must hold that many terminators, is
     * not changed and must outlive the list.
     */
    explicit MutableStringArrayView(Containers::ArrayView<char> characters, std::size_t count);

    ~MutableStringArrayView() override;

    /** @brief The character store, writable. */
    Containers::ArrayView<char> characters;

protected:
    /** @cond */
    MutableStringArrayView(Containers::Array<std::size_t>&& offsets, const char* const data)
        : StringArrayView{std::move(offsets), data} {}
    MutableStringArrayView(MutableStringArrayView&& other) noexcept
        : StringArrayView{std::move(other)}, characters{std::exchange(other.characters, nullptr)} {}
    /** @endcond */
};

/** @brief List of packed strings that owns its characters and grows at its end. */
class VESPERMOOR_ENGINE_EXPORT StringArray : public MutableStringArrayView {
public:
    /**
     * @brief Empty list with room for @p sizeHint bytes, terminators included, plus one.
     *
     * The hint is not a limit. A list of blank-separated words taken from a text of @p sizeHint
     * bytes needs one terminator more than the text has blanks, hence the extra byte.
     */
    explicit StringArray(std::size_t sizeHint);

    /** @brief Takes over the strings of @p other, which can then only be destroyed. */
    StringArray(StringArray&& other) noexcept
        : MutableStringArrayView{std::move(other)}, store{std::move(other.store)} {}

    ~StringArray() override;

    /**
     * @brief Appends a copy of @p string, which may be empty and need not be NUL-terminated.
     *
     * It may be a view of the list itself. Invalidates views obtained from @ref get().
     */
    void add(Containers::StringView string);

private:
    explicit StringArray(Containers::Array<char>&& block);

    Containers::Array<char> store;
};

} // namespace VespermoorEngine

#endif
