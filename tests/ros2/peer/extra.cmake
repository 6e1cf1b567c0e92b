find_package(CycloneDDS REQUIRED)
target_link_libraries(${name}_tests PRIVATE QV::ros2_link CycloneDDS::ddsc)

find_package(fastrtps REQUIRED)
qv_add_program(ros2_peer ${CMAKE_CURRENT_LIST_DIR}/program/peer.cpp LIBS fastrtps fastcdr)
target_include_directories(ros2_peer PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(${name}_tests PRIVATE ROS2_PEER="$<TARGET_FILE:ros2_peer>")
add_dependencies(${name}_tests ros2_peer)
