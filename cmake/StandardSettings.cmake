# Language level, warnings and sanitizers, as one interface target that all our targets link.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
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
  # GCC 12 falsely warns of overlapping copies in std::string (GCC bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # A newer library that deprecates what we call must not break the build.
  $<$<BOOL:${QUORVEX_WARNINGS_AS_ERRORS}>:-Werror;-Wno-error=deprecated-declarations>)

# Makes faults hard to exploit through a malicious page or index file.
target_compile_options(quorvex_settings INTERFACE -fstack-protector-strong -fstack-clash-protection)
target_link_options(quorvex_settings INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
if(NOT QUORVEX_SANITIZE)  # sanitizers check more, and fortified functions hide errors
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
  check_cxx_source_compiles("#include <cstring>\nint main() {}" QUORVEX_FORTIFY_3)
  unset(CMAKE_REQUIRED_FLAGS)
  # Fortification needs optimisation.
  target_compile_options(quorvex_settings INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=$<IF:$<BOOL:${QUORVEX_FORTIFY_3}>,3,2>>")
endif()

if(QUORVEX_SANITIZE)
  target_compile_options(quorvex_settings INTERFACE
    -fsanitize=${QUORVEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quorvex_settings INTERFACE -fsanitize=${QUORVEX_SANITIZE})
endif()
if(QUORVEX_FUZZER)
  target_compile_options(quorvex_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# quorvex_library(<name> SOURCES … LINK … [PRIVATE_LINK …]): a static library of one source folder.
# Include paths start at src/, so each one names the folder it reaches into.
function(quorvex_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE quorvex_settings ${arg_PRIVATE_LINK})
endfunction()
