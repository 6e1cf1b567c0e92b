# OpenCV by its single libraries: Debian ships the OpenCV configuration only with the full package.
# Gives the imported targets QVOpenCV::core, QVOpenCV::imgproc and QVOpenCV::imgcodecs.

find_path(QVOpenCV_INCLUDE_DIR opencv2/core.hpp PATH_SUFFIXES opencv4)
set(QVOpenCV_REQUIRED_VARS QVOpenCV_INCLUDE_DIR)
foreach(module core imgproc imgcodecs)
  find_library(QVOpenCV_${module}_LIBRARY opencv_${module})
  list(APPEND QVOpenCV_REQUIRED_VARS QVOpenCV_${module}_LIBRARY)
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(QVOpenCV REQUIRED_VARS ${QVOpenCV_REQUIRED_VARS})

if(QVOpenCV_FOUND AND NOT TARGET QVOpenCV::core)
  foreach(module core imgproc imgcodecs)
    add_library(QVOpenCV::${module} UNKNOWN IMPORTED)
    set_target_properties(QVOpenCV::${module} PROPERTIES
      IMPORTED_LOCATION ${QVOpenCV_${module}_LIBRARY}
      INTERFACE_INCLUDE_DIRECTORIES ${QVOpenCV_INCLUDE_DIR})
  endforeach()
  target_link_libraries(QVOpenCV::imgproc INTERFACE QVOpenCV::core)
  target_link_libraries(QVOpenCV::imgcodecs INTERFACE QVOpenCV::core)
endif()
mark_as_advanced(${QVOpenCV_REQUIRED_VARS})
