# Sets of vector instructions are chosen one by one.
find_package(hwy REQUIRED)
target_link_libraries(${name}_tests PRIVATE hwy::hwy)
