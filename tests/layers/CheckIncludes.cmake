cmake_minimum_required(VERSION 3.22)
# Fails when a file includes across a layer the wrong way. Run in script mode:
#   cmake -DSOURCE_DIR=<repository> -P CheckIncludes.cmake
# Each folder may include itself and the folders listed for it, nothing else of the project. The
# layers, lowest first: common; engine; host (the VST 2.4 boundary); effect (VST effect over the
# engine); platform (views over cairo and X11); panel; editor (VST) and lv2 (the LV2 edition);
# module (the VST module, which alone puts the effect and the editor together). tools, tests and
# bench sit above everything and are not checked.
set(allowed_common "")
set(allowed_engine common)
set(allowed_host common)
set(allowed_effect engine host common)
set(allowed_platform common)
set(allowed_panel platform engine common)
set(allowed_editor panel platform host engine common)
set(allowed_lv2 panel platform engine common)
set(allowed_module editor effect panel platform host engine common)
set(layers common engine host effect platform panel editor lv2 module)

set(violations "")
set(checked 0)
foreach(layer IN LISTS layers)
  file(GLOB_RECURSE sources "${SOURCE_DIR}/${layer}/*.h" "${SOURCE_DIR}/${layer}/*.cpp"
       "${SOURCE_DIR}/${layer}/*.inl")
  foreach(source IN LISTS sources)
    math(EXPR checked "${checked} + 1")
    file(STRINGS "${source}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]+\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^[^\"]*\"([^\"]+)\".*$" "\\1" included "${line}")
      # Only paths into the project's folders are layer crossings; a file beside the includer
      # (no folder) is the includer's own layer.
      if(NOT included MATCHES "^([A-Za-z0-9_]+)/")
        continue()
      endif()
      set(folder "${CMAKE_MATCH_1}")
      if(NOT IS_DIRECTORY "${SOURCE_DIR}/${folder}" OR folder STREQUAL layer)
        continue()
      endif()
      if(NOT folder IN_LIST allowed_${layer})
        file(RELATIVE_PATH where "${SOURCE_DIR}" "${source}")
        list(APPEND violations "${where} includes ${included}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no source files found below ${SOURCE_DIR}")
endif()
if(violations)
  list(JOIN violations "\n  " text)
  message(FATAL_ERROR "includes against the layers:\n  ${text}")
endif()
message(STATUS "${checked} files include only downward")
