# Whether page trees are built in an arena, which is faster but depends on libxml2's internals: auto
# (with tested versions), arena or plain.

set(QUORVEX_PAGE_TREE auto CACHE STRING "How page trees are built: auto, arena or plain")
set_property(CACHE QUORVEX_PAGE_TREE PROPERTY STRINGS auto arena plain)

# For any other version, run the tests in tests/extract/ with -DQUORVEX_PAGE_TREE=arena; if they
# pass, add it to the list.
set(arena_tried_with 2.9.14)

if(NOT QUORVEX_PAGE_TREE MATCHES "^(auto|arena|plain)$")
  message(FATAL_ERROR "QUORVEX_PAGE_TREE is ${QUORVEX_PAGE_TREE}; it can be auto, arena or plain")
endif()
set(QUORVEX_HAS_ARENA_PAGE_TREE OFF)
if(QUORVEX_PAGE_TREE STREQUAL arena)
  set(QUORVEX_HAS_ARENA_PAGE_TREE ON)
elseif(QUORVEX_PAGE_TREE STREQUAL auto AND LIBXML2_VERSION_STRING IN_LIST arena_tried_with)
  set(QUORVEX_HAS_ARENA_PAGE_TREE ON)
elseif(QUORVEX_PAGE_TREE STREQUAL auto)
  message(STATUS "The arena for page trees is untested with libxml2 ${LIBXML2_VERSION_STRING}: "
                 "pages are parsed the plain way, which takes longer")
endif()
