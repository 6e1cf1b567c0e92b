target_link_libraries(apps_tests PRIVATE QVOpenCV::imgcodecs)
