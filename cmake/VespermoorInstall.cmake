# The installed tree, which is relocatable. Components: library, development and program.

include(CMakePackageConfigHelpers)

set(vespermoor_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VespermoorEditorUtils)
set(vespermoor_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/VespermoorEditorUtils)

# Installs the library `target` and exports it to projects that use CMake.
function(vespermoor_install_library target)
    install(TARGETS ${target} EXPORT VespermoorEditorUtils
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
        NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endfunction()

# The CMake package.
configure_package_config_file(cmake/VespermoorEditorUtilsConfig.cmake.in
    VespermoorEditorUtilsConfig.cmake INSTALL_DESTINATION ${vespermoor_cmake_dir}
    NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(VespermoorEditorUtilsConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VespermoorEditorUtilsConfig.cmake
    ${PROJECT_BINARY_DIR}/VespermoorEditorUtilsConfigVersion.cmake
    cmake/VespermoorGenerate.cmake
    DESTINATION ${vespermoor_cmake_dir} COMPONENT development)
install(EXPORT VespermoorEditorUtils NAMESPACE Vespermoor::
    FILE VespermoorEditorUtilsTargets.cmake
    DESTINATION ${vespermoor_cmake_dir} COMPONENT development)

# Compiler flag for an include folder that the compiler does not search by default.
function(vespermoor_include_flag result folder)
    if(folder IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
        set(${result} "" PARENT_SCOPE)
    else()
        set(${result} "-isystem ${folder}" PARENT_SCOPE)
    endif()
endfunction()

# Linker flags for the shared library of an imported target.
function(vespermoor_link_flags result target)
    get_target_property(path ${target} LOCATION)
    cmake_path(GET path PARENT_PATH folder)
    cmake_path(GET path STEM LAST_ONLY name)
    string(REGEX REPLACE "^lib([^.]*).*" "\\1" name ${name})
    set(${result} "-L${folder} -Wl,-rpath,${folder} -l${name}" PARENT_SCOPE)
endfunction()

# The pkg-config file of the library `name`.
function(vespermoor_install_pkgconfig name description)
    cmake_parse_arguments(PARSE_ARGV 2 PC "" "REQUIRES;CFLAGS;LIBS;INCLUDE" "")
    configure_file(cmake/library.pc.in ${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

vespermoor_include_flag(rapidjson_flags ${RAPIDJSON_INCLUDE_DIR})
if(VESPERMOOR_USE_STANDINS)
    vespermoor_install_pkgconfig(VespermoorStandins
        "Stand-ins for what VespermoorEditorUtils uses of Corrade and Magnum"
        INCLUDE "/VespermoorStandins")
    set(engine_flags REQUIRES "VespermoorStandins = ${PROJECT_VERSION}")
elseif(VESPERMOOR_DEPENDENCIES STREQUAL fetch)
    # Installed in the same folders as our libraries. The names of their debug libraries end in -d.
    if(CMAKE_BUILD_TYPE STREQUAL Debug)
        set(suffix -d)
    endif()
    set(engine_flags LIBS "-lCorradeUtility${suffix}" CFLAGS -fno-strict-aliasing)
    set(magnum_libraries "-lMagnum${suffix}")
else()
    vespermoor_include_flag(corrade_flags ${CORRADE_INCLUDE_DIR})
    vespermoor_include_flag(magnum_flags ${MAGNUM_INCLUDE_DIR})
    vespermoor_link_flags(corrade_libraries Corrade::Utility)
    vespermoor_link_flags(magnum_libraries Magnum::Magnum)
    set(engine_flags CFLAGS ${corrade_flags} LIBS ${corrade_libraries})
endif()
vespermoor_install_pkgconfig(VespermoorEngine "Packed string lists and paths as text"
    ${engine_flags})
vespermoor_install_pkgconfig(VespermoorEditorUtils ${PROJECT_DESCRIPTION}
    REQUIRES "VespermoorEngine = ${PROJECT_VERSION}"
    CFLAGS "${magnum_flags} ${rapidjson_flags}" LIBS ${magnum_libraries})
vespermoor_install_pkgconfig(VespermoorEditorUtilsStatic
    "${PROJECT_DESCRIPTION}, with its hidden desktop services"
    REQUIRES "VespermoorEngine = ${PROJECT_VERSION}, uuid"
    CFLAGS "${magnum_flags} ${rapidjson_flags}" LIBS ${magnum_libraries})

install(FILES LICENSE DESTINATION ${vespermoor_doc_dir} COMPONENT library)
install(FILES CHANGELOG.md DESTINATION ${vespermoor_doc_dir} COMPONENT development)
