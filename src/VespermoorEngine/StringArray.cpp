#include "VespermoorEngine/StringArray.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine {

namespace {

/* The memory of a list within its size hint: one block with a header, the offsets and the
   characters. The array of characters owns the block, so when the list outgrows it, the offsets
   move out first. */
struct Block {
    /* Enough for an `if` with a comparison in a template. */
    static constexpr std::size_t maxOffsets = 5;

    std::size_t maxCharacters;
    std::size_t offsets[maxOffsets];

    char* characters() { return reinterpret_cast<char*>(this + 1); }
};

Block& blockOf(char* const characters) {
    return reinterpret_cast<Block*>(characters)[-1];
}

void freeBlock(char* const characters, std::size_t) {
    ::operator delete(&blockOf(characters));
}

void keepBlock(std::size_t*, std::size_t) {}

template <class T>
void setSize(Containers::Array<T>& array, const std::size_t size) {
    const auto deleter = array.deleter();
    array = Containers::Array<T>{array.release(), size, deleter};
}

bool isInBlock(const Containers::Array<std::size_t>& offsets) {
    return offsets.deleter() == keepBlock;
}

/* These two return false if the array has left the block or would outgrow it. */
bool addInBlock(Containers::Array<char>& store, const Containers::StringView string) {
    const std::size_t size = store.size();
    if (store.deleter() != freeBlock ||
        blockOf(store.data()).maxCharacters - size <= string.size()) {
        return false;
    }
    *std::copy_n(string.data(), string.size(), store.data() + size) = '\0';
    setSize(store, size + string.size() + 1);
    return true;
}

bool addInBlock(Containers::Array<std::size_t>& offsets, const std::size_t offset) {
    const std::size_t size = offsets.size();
    if (!isInBlock(offsets) || size == Block::maxOffsets) {
        return false;
    }
    offsets.data()[size] = offset;
    setSize(offsets, size + 1);
    return true;
}

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
    Block& block = *new (::operator new(sizeof(Block) + sizeHint + 1)) Block;
    block.maxCharacters = sizeHint + 1;
    block.offsets[0] = 0;
    offsets = Containers::Array<std::size_t>{block.offsets, 1, keepBlock};
    store = Containers::Array<char>{block.characters(), 0, freeBlock};
    data = store.data();
}

StringArray::~StringArray() = default;

void StringArray::add(const Containers::StringView string) {
    if (!addInBlock(store, string)) {
        if (isInBlock(offsets)) {
            arrayReserve(offsets, Block::maxOffsets + 1);
        }
        /* Appends a view instead of making room and copying, since `string` may be a part of the
           store. */
        arrayAppend(store, Containers::arrayView(string.data(), string.size()));
        arrayAppend(store, '\0');
    }
    if (!addInBlock(offsets, store.size())) {
        arrayAppend(offsets, store.size());
    }
    characters = store;
    data = store.data();
    dataSize = store.size();
}

} // namespace VespermoorEngine
