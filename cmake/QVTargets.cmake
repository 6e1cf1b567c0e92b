# Settings shared by every target, and one function for each kind of target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(QV_CCACHE ccache)
if(QV_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${QV_CCACHE})
endif()

add_library(qv_options INTERFACE)
# A tight loop across two lines of code costs up to twice, and where it lies is chance otherwise.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_compile_options(qv_options INTERFACE -falign-loops=32)
  # A call within a library is a plain call, and can be inlined; nobody replaces our functions at load time.
  target_compile_options(qv_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition> -fno-plt)
endif()
# No contraction: the same sums give the same bits on every machine.
target_compile_options(qv_options INTERFACE
  -Wall -Wextra -Wpedantic $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local> -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Werror -ffp-contract=off
  # Binaries must not contain the build path.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(QV_SANITIZE)
  target_compile_options(qv_options INTERFACE
    -fsanitize=${QV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(QV_SANITIZE MATCHES "undefined")
    # Dead objects and null are the address sanitizer's to find; these two cost a quarter of the time.
    target_compile_options(qv_options INTERFACE -fno-sanitize=vptr,null)
  endif()
  target_link_options(qv_options INTERFACE -fsanitize=${QV_SANITIZE})
  if(QV_SANITIZE MATCHES "thread")
    # Boost.Asio's fences are not modelled; its locks are.
    target_compile_options(qv_options INTERFACE -Wno-tsan)
  endif()
endif()

# Parsed once for a whole target. Off in release, where a missing include must not go unnoticed.
option(QV_PRECOMPILE "Precompile the headers that most sources read" OFF)
set(QV_PRECOMPILED_HEADERS
  <algorithm> <atomic> <cmath> <functional> <map> <memory> <mutex> <string> <vector>
  <boost/function.hpp> <boost/make_shared.hpp> <boost/thread/mutex.hpp>
  <boost/thread/shared_mutex.hpp> <opencv2/core.hpp>)
if(QV_PRECOMPILE)
  # ccache needs this to see through a precompiled header.
  target_compile_options(qv_options INTERFACE -fpch-preprocess)
endif()

# qv_precompile(TARGET [HEADER...]): what most sources read, and the headers named.
function(qv_precompile target)
  if(QV_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${QV_PRECOMPILED_HEADERS} ${ARGN})
  endif()
endfunction()

# Fast from nothing, slow after each change: for builds that are made once.
set(QV_UNITY "" CACHE STRING "Top-level folders whose sources are compiled several at a time")
set(QV_UNITY_BATCH 16 CACHE STRING "How many of them; 0: all of a library")
set(QV_UNOPTIMISED "" CACHE STRING "Top-level folders that are compiled without optimisation")

# qv_hasten(TARGET FOLDER)
function(qv_hasten target folder)
  if(folder IN_LIST QV_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${QV_UNITY_BATCH})
  endif()
  if(folder IN_LIST QV_UNOPTIMISED)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()

set(QV_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/exports.map)

# qv_add_shared(NAME SOURCE...): a shared library, exported as QV::NAME; what is not ours is not
# exported from it.
function(qv_add_shared name)
  set(sources ${ARGN})
  if(NOT sources)
    set(sources ${CMAKE_CURRENT_BINARY_DIR}/empty.cpp)
    file(TOUCH ${sources})
  endif()
  add_library(qv_${name} SHARED ${sources})
  add_library(QV::${name} ALIAS qv_${name})
  target_include_directories(qv_${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qv>)
  target_compile_features(qv_${name} PUBLIC cxx_std_20)
  target_link_libraries(qv_${name} PRIVATE $<BUILD_INTERFACE:qv_options>)
  set_target_properties(qv_${name} PROPERTIES
    EXPORT_NAME ${name} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "\$ORIGIN" LINK_DEPENDS ${QV_EXPORTS})
  target_link_options(qv_${name} PRIVATE -Wl,--version-script=${QV_EXPORTS})
  install(TARGETS qv_${name} EXPORT QVSensorTargets)
endfunction()

# qv_add_library(NAME): the library of this folder. What lies in a folder internal/ is not installed.
function(qv_add_library name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  qv_add_shared(${name} ${sources})
  qv_precompile(qv_${name})
  qv_hasten(qv_${name} ${name})
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qv/${folder} FILES_MATCHING
    PATTERN "*.h" PATTERN internal EXCLUDE)
endfunction()

# qv_add_program(NAME SOURCE... LIBS LIBRARY...): a program of the build tree.
function(qv_add_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} qv_options)
endfunction()
