# A Debian package of all that is installed: `./dev package`, or cpack in a build tree.

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/qv-sensor
  RENAME copyright)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qv-sensor)
set(CPACK_PACKAGE_VENDOR "QV sensor library")
set(CPACK_PACKAGE_CONTACT "QV sensor library <qv-sensor@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# Packages that the installed headers and the package configuration need.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "g++, cmake, libboost-dev, libboost-thread-dev, libboost-chrono-dev, libopencv-core-dev, libopencv-imgproc-dev, libopencv-imgcodecs-dev")
include(CPack)
