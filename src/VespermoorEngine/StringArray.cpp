#include "VespermoorEngine/StringArray.h"

#include <cstring>

#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine {

namespace {

/* Enough for an `if` with a comparison, so that a list of that size allocates its offsets once. */
constexpr std::size_t initialOffsets = 5;

} // namespace

MutableStringArrayView::MutableStringArrayView(const Containers::ArrayView<char> characters,
                                               const std::size_t count)
    : characters{characters} {
    offsets = Containers::Array<std::size_t>{Corrade::NoInit, count + 1};
    offsets[0] = 0;
    for (std::size_t i = 0; i != count; ++i) {
        offsets[i + 1] = offsets[i] + std::strlen(characters.data() + offsets[i]) + 1;
    }
    data = characters.data();
    dataSize = offsets[count];
}

MutableStringArrayView::~MutableStringArrayView() = default;

StringArray::StringArray(const std::size_t sizeHint) {
    arrayReserve(store, sizeHint + 1);
    arrayReserve(offsets, initialOffsets);
    arrayAppend(offsets, std::size_t{0});
    data = store.data();
}

StringArray::~StringArray() = default;

void StringArray::add(const Containers::StringView string) {
    /* Appending a view, other than making room and copying, works for a part of the store itself.
     */
    arrayAppend(store, Containers::arrayView(string.data(), string.size()));
    arrayAppend(store, '\0');
    arrayAppend(offsets, store.size());
    characters = store;
    data = store.data();
    dataSize = store.size();
}

} // namespace VespermoorEngine
