find_package(CycloneDDS REQUIRED)
target_link_libraries(${name}_tests PRIVATE QV::ros2_graph CycloneDDS::ddsc)
