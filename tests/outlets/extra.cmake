target_link_libraries(${name}_tests PRIVATE QVOpenCV::imgcodecs)
