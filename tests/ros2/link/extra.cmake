target_link_libraries(${name}_tests PRIVATE QV::ros2_link QV::ros2_recording qv_apps)
target_compile_definitions(${name}_tests PRIVATE QVSENSORS="$<TARGET_FILE:qvsensors>")
add_dependencies(${name}_tests qvsensors)

# A graph to try things out on.
qv_add_program(play_bag ${CMAKE_CURRENT_LIST_DIR}/../player/play_bag.cpp LIBS QV::ros2_graph)
