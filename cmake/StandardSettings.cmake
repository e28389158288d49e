# Language level, warnings and sanitizers, as one interface target that every target of ours links.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

option(QUORVEX_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
set(QUORVEX_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(QUORVEX_FUZZER "Instrument for libFuzzer, which drives the fuzz drivers (Clang)" OFF)

add_library(quorvex_settings INTERFACE)
target_compile_options(quorvex_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
  -Wconversion -Wsign-conversion -Wformat=2
  # GCC 12 warns falsely of overlapping copies in std::string (GCC bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${QUORVEX_WARNINGS_AS_ERRORS}>:-Werror>)
if(QUORVEX_SANITIZE)
  target_compile_options(quorvex_settings INTERFACE
    -fsanitize=${QUORVEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quorvex_settings INTERFACE -fsanitize=${QUORVEX_SANITIZE})
endif()
if(QUORVEX_FUZZER)
  target_compile_options(quorvex_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# quorvex_library(<name> SOURCES … LINK … [PRIVATE_LINK …]): a static library of one source folder.
# Includes are written from src/, so that each one names the folder it reaches into.
function(quorvex_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE quorvex_settings ${arg_PRIVATE_LINK})
endfunction()
