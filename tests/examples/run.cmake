# Runs PROGRAM, which must end well and write what EXPECTED matches.

execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output MATCHES "${EXPECTED}")
  message(FATAL_ERROR "${PROGRAM} ended with ${result} and wrote:\n${output}")
endif()
