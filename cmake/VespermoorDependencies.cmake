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

# portable-file-dialogs is a single header without a package or a version of its own.
if(NOT VESPERMOOR_DEPENDENCIES STREQUAL standins)
    find_path(PORTABLE_FILE_DIALOGS_INCLUDE_DIR portable-file-dialogs.h)
endif()
if(PORTABLE_FILE_DIALOGS_INCLUDE_DIR AND NOT VESPERMOOR_DEPENDENCIES STREQUAL standins)
    message(STATUS "portable-file-dialogs: installed, ${PORTABLE_FILE_DIALOGS_INCLUDE_DIR}")
elseif(VESPERMOOR_DEPENDENCIES STREQUAL installed)
    message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is 'installed', but portable-file-dialogs.h was "
        "not found; set PORTABLE_FILE_DIALOGS_INCLUDE_DIR to its directory")
else()
    # Copied into a directory of its own: beside an installed Corrade, the folder of the stand-ins
    # would offer its Corrade as well.
    set(PORTABLE_FILE_DIALOGS_INCLUDE_DIR ${PROJECT_BINARY_DIR}/portable-file-dialogs)
    configure_file(${PROJECT_SOURCE_DIR}/standins/portable-file-dialogs.h
        ${PORTABLE_FILE_DIALOGS_INCLUDE_DIR}/portable-file-dialogs.h COPYONLY)
    message(STATUS "portable-file-dialogs: the stand-in")
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
