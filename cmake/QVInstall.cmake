# Installs the package configuration, so that find_package(QVSensor) works from other projects.

include(CMakePackageConfigHelpers)
set(QV_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QVSensor)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QVSensorConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QVSensorConfig.cmake INSTALL_DESTINATION ${QV_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QVSensorConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)

install(EXPORT QVSensorTargets NAMESPACE QV:: DESTINATION ${QV_PACKAGE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/QVSensorConfig.cmake
  ${PROJECT_BINARY_DIR}/QVSensorConfigVersion.cmake ${CMAKE_CURRENT_LIST_DIR}/FindQVOpenCV.cmake
  DESTINATION ${QV_PACKAGE_DIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/maps ${PROJECT_SOURCE_DIR}/robot/descriptions
  DESTINATION ${CMAKE_INSTALL_DATADIR}/qv)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/recordings DESTINATION ${CMAKE_INSTALL_DATADIR}/qv
  FILES_MATCHING PATTERN "*.log" PATTERN "*.mcap")
set(QV_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/qv-sensor)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${QV_DOC_DIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${QV_DOC_DIR} PATTERN Doxyfile EXCLUDE)
