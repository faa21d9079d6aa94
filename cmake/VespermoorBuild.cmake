# Settings of every target.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# The build folder mirrors an installed tree, so a program finds its libraries in both.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_INSTALL_LIBDIR lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH "$ORIGIN/../lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib")
# Installed programs find an installed Corrade that is outside of the loader's folders.
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)

# No host replaces single functions of the libraries, so they may be inlined into one another.
add_compile_options(-fno-semantic-interposition)

# Before 1.0 a minor release may change the binary interface.
set(VESPERMOOR_SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

if(VESPERMOOR_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
# An undefined symbol is an error when a library is linked, not when it is loaded. The sanitizers'
# own symbols are undefined in clang's shared libraries, because the program defines them.
if(NOT VESPERMOOR_SANITIZE)
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,--no-undefined>)
endif()
