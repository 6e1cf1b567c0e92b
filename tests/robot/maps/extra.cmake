target_link_libraries(${name}_tests PRIVATE QVOpenCV::imgcodecs)
find_package(hwy REQUIRED)
target_link_libraries(${name}_tests PRIVATE hwy::hwy)
target_compile_definitions(${name}_tests PRIVATE QV_MAPS="${PROJECT_SOURCE_DIR}/maps")
