# Run by cpack before it makes the Debian packages: adds the files that every package must have.
set(date_format "%a, %d %b %Y %H:%M:%S +0000")
string(TIMESTAMP now ${date_format} UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
    file(REMOVE_RECURSE ${root}/doc/ko_filesystem) # the licence, which is in `copyright` here
    file(READ ${CPACK_RESOURCE_FILE_LICENSE} licence)
    file(WRITE ${root}/doc/${package}/copyright "ko::filesystem\n\n${licence}")
    file(
        WRITE ${root}/doc/${package}/changelog
        "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * Release ${CPACK_PACKAGE_VERSION}; its CHANGELOG.md lists the changes.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
    file(GLOB_RECURSE uncompressed ${root}/doc/${package}/changelog ${root}/man/*.[1-8])
    execute_process(COMMAND gzip -9n ${uncompressed} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
