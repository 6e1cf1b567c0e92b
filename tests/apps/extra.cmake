target_link_libraries(apps_tests PRIVATE QVOpenCV::imgcodecs)
target_compile_definitions(apps_tests PRIVATE QVSENSORS="$<TARGET_FILE:qvsensors>")
add_dependencies(apps_tests qvsensors)
