# Adds the files that only the Debian package has. CPack runs this after it has installed all other
# files and before it packs them.
set(source ${CPACK_STEMVAULT_SOURCE})
set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})

# Runs a command, which must succeed, and stores its output in the variable `output`.
macro(run)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
endmacro()

# The changelog in Debian's own format.
include(${source}/cmake/Changes.cmake)
stemvault_read_changes(${source}/CHANGELOG.md)
foreach(version IN LISTS releases)
    string(APPEND changelog "${CPACK_PACKAGE_NAME} (${version}) unstable; urgency=medium\n\n")
    foreach(change IN LISTS changes_${version})
        file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/../change "${change}\n")
        run(fmt -w 74 ${CPACK_TEMPORARY_DIRECTORY}/../change)
        string(REPLACE "\n" "\n    " output "${output}")
        string(APPEND changelog "  * ${output}\n")
    endforeach()
    run(date -R -u -d ${date_${version}})
    string(APPEND changelog "\n -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${output}\n\n")
endforeach()
file(WRITE ${documents}/changelog "${changelog}")
file(COPY ${source}/Resources/debian/copyright DESTINATION ${documents})

file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/usr/bin/*
    ${CPACK_TEMPORARY_DIRECTORY}/usr/libexec/${CPACK_PACKAGE_NAME}/*)
run(strip --remove-section=.comment ${programs})
file(GLOB pages ${share}/man/man1/*.1)
run(gzip -9n ${documents}/changelog ${pages})
run(chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_DIRECTORY}/usr)
