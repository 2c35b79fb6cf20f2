# Builds the consumer against the library in each of WAYS and runs it from another folder. For
# `subproject` that is the source folder, for the others a copy installed from BUILD, or from a
# static build made for the purpose when STATIC.
set(work ${BUILD}/install-test-${NAME})
file(REMOVE_RECURSE ${work})
# Where this build's dependencies lie, if not where everything looks anyway.
set(ENV{CMAKE_PREFIX_PATH} "${work}/prefix:${PREFIXES}")
set(ENV{LD_LIBRARY_PATH} "${LIBRARIES}:$ENV{LD_LIBRARY_PATH}")
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
set(settings -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS})
if(STATIC)
    run(${CMAKE_COMMAND} -S ${SOURCE} -B ${work}/static ${settings} -DCMAKE_BUILD_TYPE=Release
        -DBUILD_SHARED_LIBS=OFF -DKO_FILESYSTEM_TESTS=OFF -DKO_FILESYSTEM_TOOLS=OFF)
    run(${CMAKE_COMMAND} --build ${work}/static)
    set(BUILD ${work}/static)
endif()
if(STATIC)
    set(pkgconfig_settings -DPKG_CONFIG_ARGN=--static)
endif()
foreach(way ${WAYS})
    if(NOT way STREQUAL "subproject" AND NOT EXISTS ${work}/prefix)
        run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/installed)
        file(RENAME ${work}/installed ${work}/prefix) # what is installed can be moved
        file(GLOB_RECURSE installed ${work}/prefix/include/*)
        foreach(header IN LISTS installed)
            file(STRINGS ${header} first LIMIT_COUNT 1)
            if(first MATCHES "Internal")
                message(FATAL_ERROR "not for callers: ${header}")
            endif()
        endforeach()
        if(EXISTS ${work}/prefix/bin/kofs)
            execute_process(COMMAND ${work}/prefix/bin/kofs exists / WORKING_DIRECTORY /
                                    COMMAND_ERROR_IS_FATAL ANY)
            find_program(readelf readelf)
            if(readelf)
                # An empty element would be the working directory.
                execute_process(COMMAND ${readelf} -d ${work}/prefix/bin/kofs
                                OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
                string(REGEX MATCH "R(UN)?PATH[^\n]*" runpath "${dynamic}")
                if(dynamic MATCHES "NEEDED[^\n]*ko_filesystem"
                   AND NOT runpath MATCHES ": \\[\\$ORIGIN/\\.\\./[a-z][^:]*\\]$")
                    message(FATAL_ERROR "looks elsewhere for the library: ${runpath}")
                endif()
            endif()
        endif()
    endif()
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/${way} ${settings} -DWAY=${way}
        -DSOURCE=${SOURCE} ${pkgconfig_settings})
    run(${CMAKE_COMMAND} --build ${work}/${way})
    execute_process(COMMAND ${work}/${way}/consumer WORKING_DIRECTORY / COMMAND_ERROR_IS_FATAL ANY)
endforeach()
