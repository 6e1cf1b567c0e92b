target_link_libraries(${name}_tests PRIVATE QV::ros2_link qv_apps)

# A graph to try things out on.
qv_add_program(play_bag ${CMAKE_CURRENT_LIST_DIR}/../player/play_bag.cpp LIBS QV::ros2_graph)
