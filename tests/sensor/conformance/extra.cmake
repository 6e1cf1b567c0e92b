target_link_libraries(${name}_tests PRIVATE qv_apps)
