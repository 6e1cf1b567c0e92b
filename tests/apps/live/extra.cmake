target_link_libraries(apps_live_tests PRIVATE QVOpenCV::imgcodecs)
