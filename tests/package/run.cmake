# Installs the build in BUILD_DIR, builds a stranger against the package and runs it.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(work ${BUILD_DIR}/package_test)
file(REMOVE_RECURSE ${work})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${work}/installed)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${work}/build -G Ninja
  -DCMAKE_PREFIX_PATH=${work}/installed -DCMAKE_CXX_STANDARD=20)
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/consumer)
if(NOT output STREQUAL "LeftSonar 1.00\nRightSonar 1.00\n")
  message(FATAL_ERROR "the consumer read: ${output}")
endif()
run(${work}/installed/bin/qvsensors read --kind 0 --pose 3,3,0)
