target_link_libraries(bench_growth PRIVATE QVOpenCV::core)
