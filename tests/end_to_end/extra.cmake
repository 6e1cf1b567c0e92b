# The soak program; ./dev soak runs it for a given time.
if(NOT QV_SANITIZE)
  qv_add_program(health_soak ${CMAKE_CURRENT_LIST_DIR}/../soak/health_soak.cpp LIBS QV::session)
endif()
