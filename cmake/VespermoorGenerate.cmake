# vespermoor_generate(<target> <manifest>)
#
# Adds <target> to the default build. It makes the outputs of <manifest>, a file for
# `vespermoor-utils generate`, when one of its inputs changed or an output is missing. Targets that
# use an output find it by their own dependency on its file, or by add_dependencies().
#
# An output whose text does not change keeps its time, so nothing is built again for it. A stamp in
# the build folder tells when the outputs were last made. Cleaning removes the outputs, but no file
# with regions, which holds text of its own.

# Run as a script: removes STAMP if an output in the list of the file OUTPUTS is missing. Makefiles
# know nothing of byproducts.
if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    file(STRINGS ${OUTPUTS} outputs)
    foreach(output IN LISTS outputs)
        if(NOT EXISTS ${output})
            file(REMOVE ${STAMP})
            return()
        endif()
    endforeach()
    return()
endif()

# Sets `result` to the paths that `generate --list` printed after `kind`.
function(_vespermoor_listed result kind list)
    string(REGEX MATCHALL "(^|\n)${kind} [^\n]+" lines "${list}")
    set(paths)
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "^\n?${kind} " "" path "${line}")
        cmake_path(NORMAL_PATH path)
        list(APPEND paths ${path})
    endforeach()
    set(${result} ${paths} PARENT_SCOPE)
endfunction()

function(vespermoor_generate target manifest)
    find_program(VESPERMOOR_UTILS vespermoor-utils
        HINTS ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../../bin)
    mark_as_advanced(VESPERMOOR_UTILS)
    if(NOT VESPERMOOR_UTILS)
        message(FATAL_ERROR "vespermoor_generate() needs the program vespermoor-utils: install the "
            "package vespermoor-utils, or set VESPERMOOR_UTILS to its path.")
    endif()
    cmake_path(ABSOLUTE_PATH manifest NORMALIZE)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${manifest})
    execute_process(COMMAND ${VESPERMOOR_UTILS} generate --list ${manifest}
        OUTPUT_VARIABLE list COMMAND_ERROR_IS_FATAL ANY)
    _vespermoor_listed(inputs input "${list}")
    _vespermoor_listed(outputs output "${list}")
    _vespermoor_listed(region_files regions "${list}")

    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.stamp)
    add_custom_command(OUTPUT ${stamp} BYPRODUCTS ${outputs}
        COMMAND ${VESPERMOOR_UTILS} generate --quiet --stamp ${stamp} ${manifest}
        DEPENDS ${manifest} ${inputs} ${region_files}
        COMMENT "Generating the files of ${manifest}" VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${stamp})
    if(CMAKE_GENERATOR MATCHES "Makefiles")
        list(JOIN outputs "\n" lines)
        file(WRITE ${stamp}.outputs "${lines}\n")
        add_custom_target(${target}-missing COMMAND ${CMAKE_COMMAND} -DSTAMP=${stamp}
            -DOUTPUTS=${stamp}.outputs -P ${CMAKE_CURRENT_FUNCTION_LIST_FILE} VERBATIM)
        add_dependencies(${target} ${target}-missing)
    endif()
endfunction()
