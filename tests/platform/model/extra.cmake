# The oracle: another reader of URDF.
find_package(urdfdom REQUIRED)
target_link_libraries(${name}_tests PRIVATE urdfdom::urdfdom_model)
target_compile_definitions(${name}_tests PRIVATE
  QV_DESCRIPTIONS="${PROJECT_SOURCE_DIR}/robot/descriptions")
