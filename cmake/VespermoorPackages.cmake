# Debian packages, made with `cpack --config <build folder>/CPackConfig.cmake`: the libraries, the
# files for developing on them, and the program.

# Debian has no packages of Corrade and Magnum that ours could depend on.
if(NOT VESPERMOOR_USE_STANDINS)
    return()
endif()

set(VESPERMOOR_PACKAGE_MAINTAINER "Vespermoor developers <developers@vespermoor.example>"
    CACHE STRING "Maintainer of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vespermoor)
# Otherwise CPack prepends it to the description of every component.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT ${VESPERMOOR_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)
set(CPACK_VESPERMOOR_SOURCE_DIR ${PROJECT_SOURCE_DIR})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(vespermoor_library_package libvespermooreditorutils${VESPERMOOR_SOVERSION})
set(vespermoor_library_dependency "${vespermoor_library_package} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${vespermoor_library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS "zenity | kdialog, xdg-utils")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "services for the desktop editor of a 3D engine
Reads and writes JSON documents, renders text templates against them, watches
directory trees, rewrites tagged regions of generated text, and ties an editor
to the desktop.")

# Updates the loader's cache, and tells dpkg-shlibdeps which package has the libraries.
set(vespermoor_control_dir ${PROJECT_BINARY_DIR}/debian)
file(WRITE ${vespermoor_control_dir}/triggers "activate-noawait ldconfig\n")
file(WRITE ${vespermoor_control_dir}/shlibs "")
foreach(library VespermoorEditorUtils VespermoorEngine VespermoorStandins)
    file(APPEND ${vespermoor_control_dir}/shlibs
        "lib${library} ${VESPERMOOR_SOVERSION} ${vespermoor_library_package} (>= ${PROJECT_VERSION})\n")
endforeach()
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${vespermoor_control_dir}/shlibs ${vespermoor_control_dir}/triggers)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvespermooreditorutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${vespermoor_library_dependency}, rapidjson-dev, uuid-dev")
# Run by vespermoor_generate() of the CMake package.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS vespermoor-utils)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "services for a 3D engine's editor - development files
The headers, the static archive, the CMake package, the pkg-config files and
the documentation of libVespermoorEditorUtils, which gives the desktop editor
of a 3D engine documents, templates, watched directories and generated text.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME vespermoor-utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${vespermoor_library_dependency})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "JSON, templates and generated files on the command line
Prints and edits JSON documents, renders templates against them, keeps sets of
generated files up to date, and prints the changes in directory trees.")

include(CPack)
