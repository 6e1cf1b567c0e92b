target_link_libraries(${name}_tests PRIVATE QV::ros2_link)
