# Runs the tests of the Python package; skipped where the packages that they need are missing.
execute_process(COMMAND ${PYTHON} -c "import numpy, pytest, pandas, matplotlib"
  RESULT_VARIABLE missing OUTPUT_QUIET ERROR_QUIET)
if(missing)
  message("skipped: no numpy, pytest, pandas or matplotlib for ${PYTHON}")
  return()
endif()
set(ENV{PYTHONPATH} ${PACKAGE})
execute_process(COMMAND ${PYTHON} -m pytest -q -p no:cacheprovider RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "the tests of the Python package failed")
endif()
