# cmake -DBUILD=<corvane build> -DSOURCE=<consumer project> -DWORK=<scratch> [-DFLAGS=...] -P this
# Installs corvane from BUILD into WORK/prefix, then configures, builds and runs the consumer project
# against it. Fails at the first step that fails.
file(REMOVE_RECURSE ${WORK})
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGV}")
  endif()
endfunction()
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${WORK}/prefix
    "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/consumer)
