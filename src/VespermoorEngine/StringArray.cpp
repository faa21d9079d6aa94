#include "VespermoorEngine/StringArray.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine {

namespace {

/* The memory of a list that fits its size hint: one block with a header, the characters and the
   first offsets. The array of characters owns the block, so when the list outgrows it, the offsets
   move out first. */
struct Block {
    /* Enough for an `if` with a comparison in a template. */
    static constexpr std::size_t maxOffsets = 5;

    /* Room for characters, a multiple of the alignment of offsets. */
    std::size_t capacity;

    char* characters() { return reinterpret_cast<char*>(this + 1); }
};

const Block& blockOf(const Containers::Array<char>& characters) {
    return reinterpret_cast<const Block*>(characters.data())[-1];
}

void freeBlock(char* const characters, std::size_t) {
    std::free(reinterpret_cast<Block*>(characters) - 1);
}

/* Makes a block, and returns its array of characters, none of which is in use. */
Containers::Array<char> makeBlock(const std::size_t minCapacity) {
    constexpr std::size_t alignment = alignof(std::size_t);
    const std::size_t capacity = (minCapacity + alignment - 1) / alignment * alignment;
    void* const memory =
        std::malloc(sizeof(Block) + capacity + Block::maxOffsets * sizeof(std::size_t));
    if (!memory) {
        throw std::bad_alloc{};
    }
    return Containers::Array<char>{(new (memory) Block{capacity})->characters(), 0, freeBlock};
}

void keepBlock(std::size_t*, std::size_t) {}

Containers::Array<std::size_t> firstOffset(Containers::Array<char>& characters) {
    auto* const offsets =
        reinterpret_cast<std::size_t*>(characters.data() + blockOf(characters).capacity);
    offsets[0] = 0;
    return Containers::Array<std::size_t>{offsets, 1, keepBlock};
}

template <class T>
void setSize(Containers::Array<T>& array, const std::size_t size) {
    const auto deleter = array.deleter();
    array = Containers::Array<T>{array.release(), size, deleter};
}

bool hasRoom(const Containers::Array<char>& store, const std::size_t size) {
    return store.deleter() == freeBlock && blockOf(store).capacity - store.size() > size;
}

bool isInBlock(const Containers::Array<std::size_t>& offsets) {
    return offsets.deleter() == keepBlock;
}

/* Not inlined, so that callers save few registers if there is room. */
[[gnu::noinline]] void addOutsideBlock(Containers::Array<std::size_t>& offsets,
                                       const std::size_t offset) {
    arrayAppend(offsets, offset);
}

void addOffset(Containers::Array<std::size_t>& offsets, const std::size_t offset) {
    const std::size_t count = offsets.size();
    if (isInBlock(offsets) && count != Block::maxOffsets) {
        offsets.data()[count] = offset;
        setSize(offsets, count + 1);
    } else {
        addOutsideBlock(offsets, offset);
    }
}

/* Appends to a store that has no room, which may be in a block. */
[[gnu::noinline]] void addToFull(Containers::Array<char>& store,
                                 Containers::Array<std::size_t>& offsets,
                                 const Containers::StringView string) {
    if (isInBlock(offsets)) {
        arrayReserve(offsets, Block::maxOffsets + 1);
    }
    /* `string` may be part of the store. arrayAppend() of a view allows that; making room first and
       copying then does not. */
    arrayAppend(store, Containers::arrayView(string.data(), string.size()));
    arrayAppend(store, '\0');
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

StringArray::StringArray(const std::size_t sizeHint) : StringArray{makeBlock(sizeHint + 1)} {}

StringArray::StringArray(Containers::Array<char>&& block)
    : MutableStringArrayView{firstOffset(block), block.data()}, store{std::move(block)} {}

StringArray::~StringArray() = default;

void StringArray::add(const Containers::StringView string) {
    if (hasRoom(store, string.size())) {
        const std::size_t size = store.size();
        *std::copy_n(string.data(), string.size(), store.data() + size) = '\0';
        setSize(store, size + string.size() + 1);
    } else {
        addToFull(store, offsets, string);
    }
    addOffset(offsets, store.size());
    characters = store;
    data = store.data();
    dataSize = store.size();
}

} // namespace VespermoorEngine
