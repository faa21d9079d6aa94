#ifndef VespermoorStandins_Corrade_Utility_Path_h
#define VespermoorStandins_Corrade_Utility_Path_h

#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stand-in for Corrade::Utility::Path. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Path {

VESPERMOOR_STANDINS_EXPORT Containers::StringView fromNativeSeparators(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::StringView toNativeSeparators(Containers::StringView path);

VESPERMOOR_STANDINS_EXPORT
Containers::Pair<Containers::StringView, Containers::StringView> split(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::String join(Containers::StringView path,
                                                   Containers::StringView filename);

VESPERMOOR_STANDINS_EXPORT bool exists(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT bool isDirectory(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool make(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool remove(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool move(Containers::StringView from, Containers::StringView to);

VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> executableLocation();
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> currentDirectory();
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> homeDirectory();

enum class ListFlag : unsigned char {
    SkipDotAndDotDot = 1 << 0,
    SkipFiles = 1 << 1,
    SkipSpecial = 1 << 3,
    SortAscending = 3 << 4
};
using ListFlags = Containers::EnumSet<ListFlag>;
CORRADE_ENUMSET_OPERATORS(ListFlags)

/** Expects `SkipDotAndDotDot`; without it the real one returns those entries too. */
VESPERMOOR_STANDINS_EXPORT
Containers::Optional<Containers::Array<Containers::String>> list(Containers::StringView path,
                                                                 ListFlags flags);

VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String>
readString(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT bool write(Containers::StringView filename,
                                      Containers::ArrayView<const void> data);
/* A C string would be written with its terminator; a view has its size. */
template <std::size_t size>
bool write(const Containers::StringView& filename, const char (&string)[size]) = delete;

VESPERMOOR_STANDINS_EXPORT bool copy(Containers::StringView from, Containers::StringView to);

} // namespace Path
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
