# The oracle: another reader of URDF.
find_package(urdfdom REQUIRED)
target_link_libraries(${name}_tests PRIVATE urdfdom::urdfdom_model)
