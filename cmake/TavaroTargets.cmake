# What every target of the project shares: language level, warnings, and the functions that declare targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

find_program(CCACHE ccache)
if(CCACHE)
  # Relative paths let several checkouts of the project share one cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
endif()

add_library(TavaroOptions INTERFACE)
target_include_directories(TavaroOptions INTERFACE ${CMAKE_SOURCE_DIR})
# Arithmetic must round the same on every machine, so the compiler may not fuse multiplications and additions by itself.
target_compile_options(TavaroOptions INTERFACE -Wall -Wextra -Wno-missing-field-initializers -ffp-contract=off)

set(TAVARO_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
if(TAVARO_SANITIZE)
  target_compile_options(TavaroOptions INTERFACE -fsanitize=${TAVARO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(TavaroOptions INTERFACE -fsanitize=${TAVARO_SANITIZE})
endif()

# tavaro_library(NAME USES target… [PRIVATE target…]): a static library of every source file below its folder.
function(tavaro_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "USES;PRIVATE")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  list(FILTER sources EXCLUDE REGEX "/(Programs|Version)/")
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC TavaroOptions ${arg_USES} PRIVATE ${arg_PRIVATE})
  tavaro_headers(${name}Headers FOLDERS ${CMAKE_CURRENT_SOURCE_DIR} USES TavaroOptions ${arg_USES} ${arg_PRIVATE})
endfunction()

# The target `headers` shows that each header can be included alone.
add_custom_target(headers)

# tavaro_headers(NAME FOLDERS folder… USES target…): compiles each header below the folders alone, as a part of `headers`.
# Where the source of its name includes it first, the build itself shows it.
function(tavaro_headers name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;USES")
  list(TRANSFORM arg_FOLDERS APPEND /*.h)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR} ${arg_FOLDERS})
  set(sources "")
  foreach(header IN LISTS headers)
    tavaro_is_included_first(${header} isShown)
    if(NOT isShown)
      file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/headers/${header}.cpp CONTENT "#include <${header}>\n")
      list(APPEND sources ${CMAKE_BINARY_DIR}/headers/${header}.cpp)
    endif()
  endforeach()
  if(sources)
    add_library(${name} OBJECT EXCLUDE_FROM_ALL ${sources})
    target_compile_options(${name} PRIVATE -O0 -Werror)
    target_link_libraries(${name} PRIVATE ${arg_USES})
    add_dependencies(headers ${name})
  endif()
endfunction()

function(tavaro_is_included_first header result)
  string(REGEX REPLACE "(/Private)?/([^/]+)\\.h$" "/\\2.cpp" source ${header})
  set(first "")
  if(EXISTS ${CMAKE_SOURCE_DIR}/${source})
    file(STRINGS ${CMAKE_SOURCE_DIR}/${source} first REGEX "^#include " LIMIT_COUNT 1)
  endif()
  if(first STREQUAL "#include <${header}>")
    set(${result} TRUE PARENT_SCOPE)
  else()
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

# tavaro_quick_to_build(NAME): of what spends its time in libraries. A quarter of what such a file costs the compiler is
# for loops that are not there.
function(tavaro_quick_to_build name)
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# tavaro_tests(NAME FOLDER [ALONE] USES target…): one test program of every source file below FOLDER. ALONE keeps ctest
# from running anything beside its tests, for what happens in real time.
function(tavaro_tests name folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "ALONE" "" "USES")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  tavaro_quick_to_build(${name})
  target_link_libraries(${name} PRIVATE ${arg_USES} GTest::gmock GTest::gtest_main)
  set(environment "")
  if(TAVARO_SANITIZE MATCHES "thread")
    set(environment ENVIRONMENT "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/tsan.supp")
  elseif(TAVARO_SANITIZE MATCHES "address")
    set(environment ENVIRONMENT "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/lsan.supp:print_suppressions=0")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 RUN_SERIAL ${arg_ALONE} ${environment})
endfunction()
