# Downloads Corrade, Magnum and portable-file-dialogs at the commits that the tests were run on, and
# builds the two libraries as a part of this build. Their install rules run with ours.
# Sets PORTABLE_FILE_DIALOGS_INCLUDE_DIR.

include(FetchContent)

# Declares the repository `name` and fails with one line if it has to be downloaded and cannot be.
# FetchContent's own message would be a page of git's. FETCHCONTENT_SOURCE_DIR_<NAME> can name a
# local copy.
function(vespermoor_declare name url commit)
    FetchContent_Declare(${name} GIT_REPOSITORY ${url} GIT_TAG ${commit}
        GIT_SUBMODULES "" ${ARGN})
    string(TOUPPER FETCHCONTENT_SOURCE_DIR_${name} local)
    if(${local} OR FETCHCONTENT_FULLY_DISCONNECTED
            OR EXISTS ${FETCHCONTENT_BASE_DIR}/${name}-src/COPYING)
        return()
    endif()
    find_program(VESPERMOOR_GIT git)
    mark_as_advanced(VESPERMOOR_GIT)
    set(result 1)
    if(VESPERMOOR_GIT)
        execute_process(
            COMMAND ${CMAKE_COMMAND} -E env GIT_TERMINAL_PROMPT=0 ${VESPERMOOR_GIT} ls-remote ${url} HEAD
            RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET TIMEOUT 60)
    endif()
    if(NOT result EQUAL 0)
        # CMake does not wrap a line that begins with a blank.
        message(FATAL_ERROR " VESPERMOOR_DEPENDENCIES is 'fetch', but git cannot reach ${url}; "
            "take standins, or installed with CMAKE_PREFIX_PATH, or set ${local} to a copy")
    endif()
endfunction()

vespermoor_declare(corrade https://github.com/mosra/corrade.git
    4461dbf09175973cdd25c9695b83b7c6644392b6)
vespermoor_declare(magnum https://github.com/mosra/magnum.git
    5a7424643bfd4621fbcff8c361d37795502cf890)
# A single header; its own build only makes examples.
vespermoor_declare(portable-file-dialogs https://github.com/samhocevar/portable-file-dialogs.git
    c12ea8c9a727f5320a2b4570aee863bbede2a204 SOURCE_SUBDIR none)

# Builds only the two libraries that are used. A function, so that their options stay theirs.
function(vespermoor_fetch)
    foreach(library INTERCONNECT MAIN PLUGINMANAGER TESTSUITE)
        set(CORRADE_WITH_${library} OFF)
    endforeach()
    foreach(library DEBUGTOOLS GL MATERIALTOOLS MESHTOOLS PRIMITIVES SCENEGRAPH SCENETOOLS SHADERS
            SHADERTOOLS TEXT TEXTURETOOLS TRADE)
        set(MAGNUM_WITH_${library} OFF)
    endforeach()
    FetchContent_MakeAvailable(corrade magnum portable-file-dialogs)
    # Our warnings do not apply to their headers either.
    set_target_properties(CorradeUtility Magnum PROPERTIES SYSTEM ON)
    set(PORTABLE_FILE_DIALOGS_INCLUDE_DIR ${portable-file-dialogs_SOURCE_DIR} PARENT_SCOPE)
    foreach(name corrade magnum portable-file-dialogs)
        message(STATUS "${name}: fetched, ${${name}_SOURCE_DIR}")
        install(FILES ${${name}_SOURCE_DIR}/COPYING
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT library)
    endforeach()
endfunction()
vespermoor_fetch()
