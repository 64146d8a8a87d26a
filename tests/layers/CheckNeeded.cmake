cmake_minimum_required(VERSION 3.22)
# Fails when a binary needs a window-system or drawing library at run time. Run in script mode:
#   cmake -DBINARY=<file> -P CheckNeeded.cmake
# The engine and the VST effect must run where there is no display: a headless render, a host's
# scanner, a build machine without X11 or cairo.
execute_process(COMMAND readelf --dynamic "${BINARY}" OUTPUT_VARIABLE dynamic
                RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "readelf could not read ${BINARY}")
endif()
string(REGEX MATCHALL "Shared library: \\[[^]]+\\]" needed "${dynamic}")
if(NOT needed)
  message(FATAL_ERROR "${BINARY} needs no shared library at all: not a dynamically linked binary?")
endif()
foreach(library IN LISTS needed)
  if(library MATCHES "libX|libxcb|libcairo|libpixman|libfontconfig|libfreetype|libpng")
    message(FATAL_ERROR "${BINARY} needs ${library}")
  endif()
endforeach()
message(STATUS "${BINARY}: ${needed}")
