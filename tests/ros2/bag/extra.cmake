target_link_libraries(${name}_tests PRIVATE QV::ros2 sqlite3)

# The sample files for other readers.
if(NOT QV_SANITIZE)
  qv_add_program(ros2_samples ${CMAKE_CURRENT_LIST_DIR}/../decode/write_samples.cpp
    LIBS QV::ros2_recording)
endif()
