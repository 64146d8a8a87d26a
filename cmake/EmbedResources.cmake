# Writes one C++ source holding every resources/*.png as a static byte array, and the sorted table
# that panel/EmbeddedPictures.h declares. Run in script mode:
#   cmake -DRESOURCE_DIR=<dir> -DOUTPUT=<file.cpp> -P EmbedResources.cmake
# Plain arrays rather than ld -r/objcopy objects: those export symbols and mark the stack
# executable.

file(GLOB pictures "${RESOURCE_DIR}/*.png")
list(SORT pictures)

# Sixteen bytes to a line.
set(row "")
foreach(column RANGE 15)
  string(APPEND row "0x[0-9a-f][0-9a-f],")
endforeach()
set(row "(${row})")

set(arrays "")
set(table "")
set(index 0)
foreach(picture IN LISTS pictures)
  get_filename_component(name "${picture}" NAME_WE)
  file(READ "${picture}" hex HEX)
  string(LENGTH "${hex}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "${row}" "\\1\n" bytes "${bytes}")
  string(APPEND arrays "// ${name}.png\n"
    "static const unsigned char picture${index}[${size}] = {\n${bytes}\n};\n\n")
  string(APPEND table "    {\"${name}\", picture${index}, sizeof picture${index}},\n")
  math(EXPR index "${index} + 1")
endforeach()

set(source "// Generated from resources/*.png by cmake/EmbedResources.cmake. Do not edit.
#include \"panel/EmbeddedPictures.h\"

namespace {

${arrays}const EmbeddedPicture table[] = {
${table}};

} // namespace

std::span<const EmbeddedPicture> embeddedPictures()
{
    return table;
}
")

# Rewrite only on change, so that touching the script alone rebuilds nothing.
set(previous "")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" previous)
endif()
if(NOT previous STREQUAL source)
  file(WRITE "${OUTPUT}" "${source}")
endif()
