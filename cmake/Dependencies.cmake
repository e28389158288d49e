# Everything comes from the system's packages; scripts/setup installs them.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(LibXml2 REQUIRED)
include(PageTree)
find_package(ICU REQUIRED COMPONENTS i18n uc data)
# Parsing a page is mostly small allocations; this allocator saves a quarter of its time. Sanitizers
# bring their own.
if(NOT QUORVEX_SANITIZE)
  find_package(mimalloc REQUIRED)
  add_library(Program::allocator ALIAS mimalloc)
endif()
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)
pkg_check_modules(CBOR REQUIRED IMPORTED_TARGET libcbor)
pkg_check_modules(XXHASH REQUIRED libxxhash)
pkg_check_modules(ELF REQUIRED IMPORTED_TARGET libelf)
pkg_check_modules(EIGEN REQUIRED IMPORTED_TARGET eigen3)
pkg_check_modules(MICROHTTPD REQUIRED IMPORTED_TARGET libmicrohttpd)

# libstemmer ships neither a CMake package nor a pkg-config file.
find_path(STEMMER_INCLUDE_DIR libstemmer.h REQUIRED)
find_library(STEMMER_LIBRARY stemmer REQUIRED)
add_library(Stemmer::stemmer UNKNOWN IMPORTED)
set_target_properties(Stemmer::stemmer PROPERTIES
  IMPORTED_LOCATION "${STEMMER_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${STEMMER_INCLUDE_DIR}")
