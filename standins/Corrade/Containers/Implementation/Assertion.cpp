#include "Corrade/Containers/Implementation/Assertion.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

void abortWithMessage(const char* const format, ...) {
    char message[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);
    std::cerr << message << std::endl;
    std::abort();
}

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade
