# Finds the dependencies and chooses between Corrade and Magnum, installed or fetched, and the
# stand-ins. Sets VESPERMOOR_USE_STANDINS, VESPERMOOR_CORRADE and VESPERMOOR_MAGNUM to the targets to
# link, and PORTABLE_FILE_DIALOGS_INCLUDE_DIR.

if(NOT VESPERMOOR_DEPENDENCIES MATCHES "^(auto|installed|standins|fetch)$")
    message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is '${VESPERMOOR_DEPENDENCIES}'; "
        "it takes auto, installed, standins or fetch")
endif()

include(CheckTypeSize)

# Sets `result` if Corrade and Magnum are installed and new enough. They have to be newer than
# 2020.06, which has no Utility/Path.h; their version numbers do not tell the two apart.
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

set(VESPERMOOR_USE_STANDINS OFF)
if(VESPERMOOR_DEPENDENCIES STREQUAL standins)
    set(VESPERMOOR_USE_STANDINS ON)
elseif(NOT VESPERMOOR_DEPENDENCIES STREQUAL fetch)
    vespermoor_find_installed(_vespermoor_installed)
    if(_vespermoor_installed)
        # Found again, because the variables of the first search ended with the function.
        find_package(Corrade REQUIRED COMPONENTS Utility)
        find_package(Magnum REQUIRED)
        message(STATUS "Corrade and Magnum: installed, ${CORRADE_INCLUDE_DIR}")
    elseif(VESPERMOOR_DEPENDENCIES STREQUAL installed)
        message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is 'installed', but Corrade and Magnum newer "
            "than 2020.06 were not found; add their prefix to CMAKE_PREFIX_PATH")
    else()
        set(VESPERMOOR_USE_STANDINS ON)
    endif()
endif()

# portable-file-dialogs is a single header without a package or a version.
if(VESPERMOOR_DEPENDENCIES STREQUAL fetch)
    include(VespermoorFetch)
elseif(NOT VESPERMOOR_DEPENDENCIES STREQUAL standins)
    find_path(PORTABLE_FILE_DIALOGS_INCLUDE_DIR portable-file-dialogs.h)
endif()
if(PORTABLE_FILE_DIALOGS_INCLUDE_DIR AND NOT VESPERMOOR_DEPENDENCIES STREQUAL standins)
    message(STATUS "portable-file-dialogs: ${PORTABLE_FILE_DIALOGS_INCLUDE_DIR}")
elseif(VESPERMOOR_DEPENDENCIES STREQUAL installed)
    message(FATAL_ERROR "VESPERMOOR_DEPENDENCIES is 'installed', but portable-file-dialogs.h was "
        "not found; set PORTABLE_FILE_DIALOGS_INCLUDE_DIR to its directory")
else()
    # Copied to a separate directory, because its folder also holds the stand-ins' Corrade, which
    # must stay hidden if Corrade is installed.
    set(PORTABLE_FILE_DIALOGS_INCLUDE_DIR ${PROJECT_BINARY_DIR}/portable-file-dialogs)
    configure_file(${PROJECT_SOURCE_DIR}/standins/portable-file-dialogs.h
        ${PORTABLE_FILE_DIALOGS_INCLUDE_DIR}/portable-file-dialogs.h COPYONLY)
    message(STATUS "portable-file-dialogs: the stand-in")
endif()

if(VESPERMOOR_USE_STANDINS)
    set(VESPERMOOR_CORRADE Vespermoor::Standins)
    set(VESPERMOOR_MAGNUM Vespermoor::Standins)
    message(STATUS "Corrade and Magnum: the stand-ins")
elseif(VESPERMOOR_DEPENDENCIES STREQUAL fetch)
    # A package cannot export links to targets that other projects in the same build define. The
    # installed targets link these names instead, which our package defines.
    set(VESPERMOOR_CORRADE
        $<BUILD_INTERFACE:Corrade::Utility> $<INSTALL_INTERFACE:Vespermoor::Corrade>)
    set(VESPERMOOR_MAGNUM
        $<BUILD_INTERFACE:Magnum::Magnum> $<INSTALL_INTERFACE:Vespermoor::Magnum>)
else()
    set(VESPERMOOR_CORRADE Corrade::Utility)
    set(VESPERMOOR_MAGNUM Magnum::Magnum)
endif()

find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
message(STATUS "RapidJSON: ${RAPIDJSON_INCLUDE_DIR}")
# All versions since 2016 call themselves 1.1.0, so the size of a class tells which one a host has.
set(CMAKE_REQUIRED_INCLUDES ${RAPIDJSON_INCLUDE_DIR})
set(CMAKE_EXTRA_INCLUDE_FILES rapidjson/allocators.h)
check_type_size("rapidjson::MemoryPoolAllocator<>" VESPERMOOR_RAPIDJSON_ALLOCATOR_SIZE LANGUAGE CXX)
unset(CMAKE_REQUIRED_INCLUDES)
unset(CMAKE_EXTRA_INCLUDE_FILES)

find_package(PkgConfig REQUIRED)
pkg_check_modules(UUID REQUIRED IMPORTED_TARGET uuid)
find_package(CLI11 REQUIRED)
if(VESPERMOOR_BUILD_TESTS)
    find_package(GTest REQUIRED)
endif()
if(VESPERMOOR_BUILD_BENCHMARKS)
    find_package(benchmark REQUIRED)
endif()
