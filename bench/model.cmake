find_package(tinyxml2 REQUIRED)
target_link_libraries(bench_model PRIVATE tinyxml2::tinyxml2)
