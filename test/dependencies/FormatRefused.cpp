/* Must not compile: a value that format() does not take, of the type REFUSED. */

#include <string>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Format.h>

enum class Scoped {};

const Corrade::Containers::String text = Corrade::Utility::format("{}", REFUSED{});
