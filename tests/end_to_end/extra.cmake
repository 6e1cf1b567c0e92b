# For as long as somebody wants: ./dev soak.
if(NOT QV_SANITIZE)
  qv_add_program(health_soak ${CMAKE_CURRENT_LIST_DIR}/../soak/health_soak.cpp LIBS QV::session)
endif()
