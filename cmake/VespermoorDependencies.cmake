# Finds the dependencies and decides between the installed Corrade and Magnum and the stand-ins.
# Sets VESPERMOOR_USE_STANDINS, and VESPERMOOR_CORRADE and VESPERMOOR_MAGNUM to the targets to link.

if(NOT VESPERMOOR_DEPENDENCIES MATCHES "^(auto|installed|standins)$")
    message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is '${VESPERMOOR_DEPENDENCIES}'; "
        "it takes auto, installed or standins")
endif()

# Sets `result` where Corrade and Magnum are installed and new enough: Utility/Path.h came after
# 2020.06, and no version number tells the two apart.
function(vespermoor_find_installed result)
    set(${result} OFF PARENT_SCOPE)
    find_package(Corrade QUIET COMPONENTS Utility)
    find_package(Magnum QUIET)
    if(NOT Corrade_FOUND OR NOT Magnum_FOUND)
        return()
    endif()
    find_path(VESPERMOOR_CORRADE_PATH_HEADER Corrade/Utility/Path.h
        HINTS ${CORRADE_INCLUDE_DIR} NO_CACHE)
    if(VESPERMOOR_CORRADE_PATH_HEADER)
        set(${result} ON PARENT_SCOPE)
    endif()
endfunction()

set(VESPERMOOR_USE_STANDINS ON)
if(NOT VESPERMOOR_DEPENDENCIES STREQUAL standins)
    vespermoor_find_installed(_vespermoor_installed)
    if(_vespermoor_installed)
        set(VESPERMOOR_USE_STANDINS OFF)
    elseif(VESPERMOOR_DEPENDENCIES STREQUAL installed)
        message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is 'installed', but Corrade and Magnum newer "
            "than 2020.06 were not found; add their prefix to CMAKE_PREFIX_PATH")
    endif()
endif()

if(VESPERMOOR_USE_STANDINS)
    set(VESPERMOOR_CORRADE Vespermoor::Standins)
    set(VESPERMOOR_MAGNUM Vespermoor::Standins)
    message(STATUS "Corrade and Magnum: the stand-ins")
else()
    # Called again, since the targets that a function's find_package makes end with its directory
    # scope but the variables of the config files end with the function.
    find_package(Corrade REQUIRED COMPONENTS Utility)
    find_package(Magnum REQUIRED)
    set(VESPERMOOR_CORRADE Corrade::Utility)
    set(VESPERMOOR_MAGNUM Magnum::Magnum)
    message(STATUS "Corrade and Magnum: installed, ${CORRADE_INCLUDE_DIR}")
endif()

find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
message(STATUS "RapidJSON: ${RAPIDJSON_INCLUDE_DIR}")

find_package(PkgConfig REQUIRED)
pkg_check_modules(UUID REQUIRED IMPORTED_TARGET uuid)
find_package(CLI11 REQUIRED)
if(VESPERMOOR_BUILD_TESTS)
    find_package(GTest REQUIRED)
endif()
if(VESPERMOOR_BUILD_BENCHMARKS)
    find_package(benchmark REQUIRED)
endif()
