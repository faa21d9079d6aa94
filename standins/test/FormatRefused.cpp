/* Must not compile: a value that format() does not take. */

#include <string>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Format.h>

const Corrade::Containers::String text = Corrade::Utility::format("{}", REFUSED{});
