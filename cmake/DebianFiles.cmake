# Run by CPack on the staged trees of the components: adds the files that Debian expects in a package.

set(packages_library ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME})
set(packages_development ${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
set(packages_program ${CPACK_DEBIAN_PROGRAM_PACKAGE_NAME})

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * See CHANGELOG.md of the sources.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component library development program)
    set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
    set(doc ${root}/share/doc/${packages_${component}})

    # In a package the folder has the name of the package, and the licence is called copyright.
    if(EXISTS ${root}/share/doc/VespermoorEditorUtils)
        file(RENAME ${root}/share/doc/VespermoorEditorUtils ${doc})
    endif()
    file(REMOVE ${doc}/LICENSE)
    file(MAKE_DIRECTORY ${doc})
    file(COPY_FILE ${CPACK_VESPERMOOR_SOURCE_DIR}/LICENSE ${doc}/copyright)
    file(WRITE ${doc}/changelog "${changelog}")

    file(GLOB compressed ${root}/share/man/*/* ${doc}/changelog)
    foreach(file ${compressed})
        run(gzip -9n ${file})
    endforeach()

    # The loader searches /usr/lib anyway.
    file(GLOB objects ${root}/bin/* ${root}/lib/*.so.*.*.*)
    foreach(file ${objects})
        run(chrpath --delete ${file})
    endforeach()
endforeach()
