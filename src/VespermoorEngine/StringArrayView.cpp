#include "VespermoorEngine/StringArrayView.h"

#include "VespermoorEngine/Contract.h"

namespace VespermoorEngine {

StringArrayView::~StringArrayView() = default;

void StringArrayView::invalidIndex(const std::size_t index) const {
    breakContract("StringArrayView::get(): invalid index", index, "for size", size());
}

} // namespace VespermoorEngine
