# quorvex_embed_assets(<output> <folder> <file>…): a source file that defines quorvex::view::assets()
# (view/assets/assets.h) with the contents of these files, made anew whenever one of them changes.
# "a.js+b.js" stands for both files in one, named after the last.
#
# Run as a script, it writes that file: cmake -DOUTPUT=… -DFOLDER=… -DFILES=a,b -P EmbedAssets.cmake

function(quorvex_embed_assets output folder)
  string(REPLACE "+" ";" paths "${ARGN}")
  list(TRANSFORM paths PREPEND "${folder}/")
  string(REPLACE ";" "," files "${ARGN}")
  set(script "${PROJECT_SOURCE_DIR}/cmake/EmbedAssets.cmake")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DOUTPUT=${output}" "-DFOLDER=${folder}" "-DFILES=${files}" -P "${script}"
    DEPENDS ${paths} "${script}" VERBATIM)
endfunction()

# Comments, indentation and blanks are for those who read the sources. Fails if what stands between
# quotation marks in a script would change, too.
function(quorvex_read_asset variable path)
  file(READ "${path}" text)
  if(path MATCHES "\\.js$")
    string(REGEX REPLACE "(^|\n) *(//|/\\*|\\*)[^\n]*" "\\1" text "${text}")
    string(REGEX REPLACE "  +//[^\n]*" "" text "${text}")
    string(REGEX MATCHALL "'[^'\n]*'" quoted "${text}")
  endif()
  if(path MATCHES "\\.css$")
    string(REGEX REPLACE "/\\*[^*]*\\*/" "" text "${text}")
    string(REGEX REPLACE "([:;,{}])[ \n]+" "\\1" text "${text}")
    string(REPLACE " {" "{" text "${text}")
    string(REPLACE ";}" "}" text "${text}")
  endif()
  if(path MATCHES "\\.html$")
    string(REGEX REPLACE "</(dt|dd|li|p)>" "" text "${text}")
  endif()
  string(REGEX REPLACE "\n[ \n]+" "\n" text "${text}")
  if(path MATCHES "\\.js$")
    string(REGEX REPLACE "([;,{(]) *\n" "\\1" text "${text}")
    string(REGEX REPLACE "}\n|\n}" "}" text "${text}")
    string(REGEX REPLACE " ([!=]==|[+*-]?=|=>|[<>]=?|&&|\\|\\||\\?\\??|:|[+*-]) " "\\1" text "${text}")
    string(REGEX REPLACE "([){]) ([{a-zA-Z])" "\\1\\2" text "${text}")
    string(REGEX REPLACE "} (from|else|catch)" "}\\1" text "${text}")
    string(REPLACE " }" "}" text "${text}")
    string(REGEX REPLACE ", ([[{(.#'`])" ",\\1" text "${text}")
    string(REGEX REPLACE "(if|for|while) \\(" "\\1(" text "${text}")
    string(REGEX REPLACE "(const|return|import|case) ([[{('`])" "\\1\\2" text "${text}")
    string(REPLACE ";}" "}" text "${text}")
    string(REGEX MATCHALL "'[^'\n]*'" still_quoted "${text}")
    if(NOT quoted STREQUAL still_quoted)
      message(FATAL_ERROR "Embedding would change a text in ${path}")
    endif()
  endif()
  string(REGEX REPLACE "^\n+" "" text "${text}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  return()
endif()

set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")

string(REPLACE "," ";" FILES "${FILES}")
set(entries "")
foreach(names IN LISTS FILES)
  set(bytes "")
  string(REPLACE "+" ";" names "${names}")
  foreach(file IN LISTS names)
    quorvex_read_asset(text "${FOLDER}/${file}")
    string(APPEND bytes "${text}")
  endforeach()
  list(GET names -1 name)
  string(SHA256 hash "${bytes}")
  string(SUBSTRING "${hash}" 0 32 hash)
  string(REGEX MATCH "[a-z]+$" extension "${name}")
  string(APPEND entries
    "    Asset{\"${name}\", \"${type_${extension}}\", R\"asset(${bytes})asset\", \"\\\"${hash}\\\"\"},\n")
endforeach()
file(WRITE "${OUTPUT}" "// Made from the files of view/assets.
#include \"view/assets/assets.h\"

#include <array>

namespace quorvex::view {

namespace {

constexpr std::array table{
${entries}};

}  // namespace

std::span<const Asset> assets() {
  return table;
}

}  // namespace quorvex::view
")
