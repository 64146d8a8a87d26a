# Manual pages, section 1, from docs/man/NAME.1.in: the version and the release date (the first
# entry of CHANGELOG.md) filled in at configure time, gzipped at build time (lintian wants them
# compressed, -n keeps the package reproducible), installed in <prefix>/share/man/man1.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md HVT_LATEST_RELEASE REGEX "^## " LIMIT_COUNT 1)
string(REGEX MATCH "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]" HVT_RELEASE_DATE "${HVT_LATEST_RELEASE}")

function(hvt_man_pages)
  set(pages)
  foreach(program IN LISTS ARGN)
    set(page ${PROJECT_BINARY_DIR}/man/${program}.1)
    configure_file(${PROJECT_SOURCE_DIR}/docs/man/${program}.1.in ${page} @ONLY)
    add_custom_command(OUTPUT ${page}.gz
      COMMAND gzip -9nc ${page} > ${page}.gz
      DEPENDS ${page}
      VERBATIM)
    list(APPEND pages ${page}.gz)
  endforeach()
  add_custom_target(hvt_man_pages ALL DEPENDS ${pages})
  install(FILES ${pages} DESTINATION share/man/man1)
endfunction()
