target_link_libraries(${name}_tests PRIVATE QVOpenCV::imgcodecs)
find_package(hwy REQUIRED)
target_link_libraries(${name}_tests PRIVATE hwy::hwy)
