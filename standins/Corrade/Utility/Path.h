#ifndef VespermoorStandins_Corrade_Utility_Path_h
#define VespermoorStandins_Corrade_Utility_Path_h

#include <cstddef>
#include <type_traits>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"
#include "Corrade/visibility.h"

/** @file @brief Stands in for Corrade::Utility::Path. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Path {

VESPERMOOR_STANDINS_EXPORT Containers::StringView fromNativeSeparators(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::StringView toNativeSeparators(Containers::StringView path);

VESPERMOOR_STANDINS_EXPORT Containers::Pair<Containers::StringView, Containers::StringView>
split(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::StringView path(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT Containers::StringView filename(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::Pair<Containers::StringView, Containers::StringView>
splitExtension(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT Containers::String join(Containers::StringView path,
                                                   Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT Containers::String join(const Containers::StringIterable& paths);

VESPERMOOR_STANDINS_EXPORT bool exists(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT bool isDirectory(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool make(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool remove(Containers::StringView path);
VESPERMOOR_STANDINS_EXPORT bool move(Containers::StringView from, Containers::StringView to);

VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> executableLocation();
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> currentDirectory();
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> homeDirectory();
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String>
configurationDirectory(Containers::StringView name);
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String> temporaryDirectory();

enum class ListFlag : unsigned char {
    SkipDotAndDotDot = 1 << 0,
    SkipFiles = 1 << 1,
    SkipDirectories = 1 << 2,
    SkipSpecial = 1 << 3,
    /* Holds the bit of the other order, so that ascending wins where both are given. */
    SortAscending = 3 << 4,
    SortDescending = 1 << 5
};
using ListFlags = Containers::EnumSet<ListFlag>;
CORRADE_ENUMSET_OPERATORS(ListFlags)

VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::Array<Containers::String>>
list(Containers::StringView path, ListFlags flags = {});

VESPERMOOR_STANDINS_EXPORT Containers::Optional<std::size_t> size(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::Array<char>>
read(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT Containers::Optional<Containers::String>
readString(Containers::StringView filename);
VESPERMOOR_STANDINS_EXPORT bool write(Containers::StringView filename,
                                      Containers::ArrayView<const void> data);
VESPERMOOR_STANDINS_EXPORT bool append(Containers::StringView filename,
                                       Containers::ArrayView<const void> data);
/* A C string would be written with its terminating zero; a view says what is meant. */
template <class T>
using IfCString = std::enable_if_t<
    std::is_same_v<std::decay_t<T>, const char*> || std::is_same_v<std::decay_t<T>, char*>, int>;
template <class T, IfCString<T> = 0>
bool write(const Containers::StringView& filename, T&& string) = delete;
template <class T, IfCString<T> = 0>
bool append(const Containers::StringView& filename, T&& string) = delete;

VESPERMOOR_STANDINS_EXPORT bool copy(Containers::StringView from, Containers::StringView to);

} // namespace Path
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
