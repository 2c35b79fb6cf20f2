# Installs the library from BUILD, builds the consumer against that copy and runs it.
set(work ${BUILD}/install-test)
file(REMOVE_RECURSE ${work})
# Where this build's dependencies lie, if not where everything looks anyway.
set(ENV{CMAKE_PREFIX_PATH} "${work}/prefix:${PREFIXES}")
set(ENV{LD_LIBRARY_PATH} "${LIBRARIES}:$ENV{LD_LIBRARY_PATH}")
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/prefix)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/build -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS})
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/consumer)
