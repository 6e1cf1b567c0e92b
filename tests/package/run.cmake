# Installs the build in BUILD_DIR, builds strangers against the package and looks into it.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(work ${BUILD_DIR}/package_test)
set(installed ${work}/installed)
file(REMOVE_RECURSE ${work})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${installed})

# The number of public headers is limited, so that users can read them.
set(include ${installed}/include/qv)
file(GLOB_RECURSE headers ${include}/*.h)
list(LENGTH headers count)
if(count GREATER 90)
  message(FATAL_ERROR "${count} headers are installed, at most 90 expected")
endif()
file(GLOB_RECURSE files ${installed}/*)
foreach(file ${files})
  file(STRINGS ${file} paths REGEX "${SOURCE_DIR}" LIMIT_COUNT 1)
  if(paths)
    message(FATAL_ERROR "${file} holds a path of the source tree: ${paths}")
  endif()
endforeach()

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${work}/build -G Ninja
  -DCMAKE_PREFIX_PATH=${installed} -DCMAKE_CXX_STANDARD=20)
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/consumer)
if(NOT output STREQUAL "LeftSonar 1.00\nRightSonar 1.00\n")
  message(FATAL_ERROR "the consumer read: ${output}")
endif()

# The first program of the guide, which shows its files: see tests/docs.
set(first ${CMAKE_CURRENT_LIST_DIR}/first_reading)
run(${CMAKE_COMMAND} -S ${first} -B ${work}/first -G Ninja -DCMAKE_PREFIX_PATH=${installed})
run(${CMAKE_COMMAND} --build ${work}/first)
run(${work}/first/first_reading)
file(READ ${first}/expected.txt expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "the guide's first program said: ${output}")
endif()

# Somebody's own kind of sensor, on a virtual robot and in all that a session goes to.
if(EXISTS ${include}/outlets)
  set(cliff ${CMAKE_CURRENT_LIST_DIR}/cliff)
  run(${CMAKE_COMMAND} -S ${cliff} -B ${work}/cliff -G Ninja -DCMAKE_PREFIX_PATH=${installed})
  run(${CMAKE_COMMAND} --build ${work}/cliff)
  execute_process(COMMAND ${work}/cliff/cliff ${cliff}/courier.urdf ${work}/cliff.png
    OUTPUT_VARIABLE output ERROR_VARIABLE log)
  file(READ ${cliff}/expected.txt expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the robot with a cliff detector said: ${output}${log}")
  endif()
  run(${work}/cliff/try_unit ${cliff}/courier.urdf)
  # The program, with the sensor that is not the library's: COMMAND OPTION...|what it must say
  foreach(row
      "list|FrontCliff +Cliff"
      "check|FrontCliff +Cliff +works"
      "check --fault FrontCliff:off|FrontCliff +Cliff +no record"
      "read --pose 3.5,6.3,0 --format json|FrontCliff.*Cliff"
      "watch --once|FrontCliff"
      "drive --path 3,6.3:4,6.3 -o ${work}/cliff.mcap|Wrote"
      "plot --pose 3.5,6.3,0 --output ${work}/qvcliff.png|Wrote")
    string(REGEX REPLACE "[|].*" "" command "${row}")
    string(REGEX REPLACE ".*[|]" "" expected "${row}")
    separate_arguments(command)
    string(REPLACE ":4" " 4" command "${command}")
    execute_process(COMMAND ${work}/cliff/qvcliff ${command} --robot ${cliff}/courier.urdf
      OUTPUT_VARIABLE output ERROR_VARIABLE log)
    if(NOT output MATCHES "${expected}")
      message(FATAL_ERROR "qvcliff ${command} said: ${output}${log}")
    endif()
  endforeach()
  # A picture with its mark, and one of the same place without it.
  execute_process(COMMAND ${work}/cliff/qvcliff plot --pose 3.5,6.3,0 --fault FrontCliff:off
    --output ${work}/qvcliff_off.png --robot ${cliff}/courier.urdf OUTPUT_QUIET ERROR_VARIABLE log)
  file(SHA256 ${work}/qvcliff.png picture)
  file(SHA256 ${work}/qvcliff_off.png picture_off)
  if(picture STREQUAL picture_off)
    message(FATAL_ERROR "qvcliff's picture does not show FrontCliff: ${log}")
  endif()
  execute_process(COMMAND ${work}/cliff/qvcliff replay ${work}/cliff.mcap --compare
    OUTPUT_VARIABLE output ERROR_VARIABLE log)
  if(NOT output MATCHES "are equal, bit for bit")
    message(FATAL_ERROR "qvcliff's recording, played again: ${output}${log}")
  endif()
  execute_process(COMMAND ${work}/cliff/qvcliff replay ${work}/cliff.mcap --format csv
    OUTPUT_VARIABLE output ERROR_VARIABLE log)
  if(NOT output MATCHES "FrontCliff")
    message(FATAL_ERROR "qvcliff's recording has no FrontCliff: ${output}${log}")
  endif()
endif()
run(${installed}/bin/qvsensors read --kind 0 --pose 3,3,0)
run(${installed}/bin/qvsensors replay lidar.log --to 1)
foreach(file man/man1/qvsensors-map-info.1 bash-completion/completions/qvsensors
    zsh/site-functions/_qvsensors fish/vendor_completions.d/qvsensors.fish doc/qv-sensor/LICENSE)
  if(NOT EXISTS ${installed}/share/${file})
    message(FATAL_ERROR "share/${file}: not installed")
  endif()
endforeach()

file(GLOB libraries ${installed}/lib*/libqv_*.so ${installed}/lib*/*/libqv_*.so)
foreach(library ${libraries})
  run(${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH ${work}/build/host ${library})
endforeach()
list(GET libraries 0 library)
get_filename_component(library_dir ${library} DIRECTORY)
run(${CMAKE_CURRENT_LIST_DIR}/check_exports ${include} ${library_dir} ${work}/build
  ${work}/build/CMakeFiles/everything.dir/everything.cpp.o)
