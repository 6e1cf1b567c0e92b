target_link_libraries(${name}_tests PRIVATE QV::ros2_link QV::ros2_recording)
target_compile_definitions(${name}_tests PRIVATE QVSENSORS="$<TARGET_FILE:qvsensors>")
add_dependencies(${name}_tests qvsensors)
