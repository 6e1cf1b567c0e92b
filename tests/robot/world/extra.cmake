target_link_libraries(${name}_tests PRIVATE QVOpenCV::imgcodecs)
target_compile_definitions(${name}_tests PRIVATE
  QV_DESCRIPTIONS="${PROJECT_SOURCE_DIR}/robot/descriptions")
