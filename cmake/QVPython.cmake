# Finds Python and pybind11 for the whole tree, and says in QV_HAS_PYTHON whether they are there.

set(PYBIND11_FINDPYTHON ON)
set(Python_FIND_VIRTUALENV ONLY)
if(NOT Python_EXECUTABLE AND EXISTS /usr/bin/python3)
  # Debian's: another one may come first and have no packages.
  set(Python_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python COMPONENTS Interpreter Development.Module)
find_package(pybind11 QUIET)
if(Python_FOUND AND pybind11_FOUND)
  set(QV_HAS_PYTHON ON)
else()
  message(STATUS "no Python headers or no pybind11 (python3-dev, pybind11-dev), so no Python package")
endif()
