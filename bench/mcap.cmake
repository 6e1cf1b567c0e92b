target_link_libraries(bench_mcap PRIVATE QV::ros2_recording)
