# What `cmake --install` puts where. The folders are the plain ones every Linux host scans by
# default (<prefix>/lib/vst, <prefix>/lib/lv2; Debian's Ardour scans /usr/lib/vst and
# /usr/local/lib/vst), not the multiarch library folder, which no host looks in for plug-ins.
install(TARGETS HvTremolo LIBRARY DESTINATION lib/vst)

if(HVT_TOOLS)
  # The programs find the module as ../lib/vst/HvTremolo.so from bin (tools/vsthost/modulePath).
  install(TARGETS hvtremolo-render hvtremolo-editor hvtremolo-panel RUNTIME DESTINATION bin)
  include(${CMAKE_CURRENT_LIST_DIR}/ManPages.cmake)
  hvt_man_pages(hvtremolo-render hvtremolo-editor hvtremolo-panel)
endif()

# The licence and the changelog, in the form and place Debian expects them (a package without
# them fails lintian), written at build time from LICENSE and CHANGELOG.md.
set(HVT_MAINTAINER "Halvo Music <packages@halvo-music.example>" CACHE STRING
  "Maintainer named in the Debian package and its changelog")
set(HVT_DOC_DIR ${PROJECT_BINARY_DIR}/doc)
add_custom_command(
  OUTPUT ${HVT_DOC_DIR}/copyright ${HVT_DOC_DIR}/changelog.gz
  COMMAND ${CMAKE_COMMAND} -E make_directory ${HVT_DOC_DIR}
  COMMAND sh ${PROJECT_SOURCE_DIR}/packaging/debian-copyright.sh ${PROJECT_SOURCE_DIR}/LICENSE
          "${HVT_MAINTAINER}" > ${HVT_DOC_DIR}/copyright
  COMMAND sh ${PROJECT_SOURCE_DIR}/packaging/debian-changelog.sh ${PROJECT_SOURCE_DIR}/CHANGELOG.md
          "${HVT_MAINTAINER}" > ${HVT_DOC_DIR}/changelog
  COMMAND gzip -9nf ${HVT_DOC_DIR}/changelog
  DEPENDS ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md
          ${PROJECT_SOURCE_DIR}/packaging/debian-copyright.sh
          ${PROJECT_SOURCE_DIR}/packaging/debian-changelog.sh
  COMMENT "Writing the copyright file and the changelog"
  VERBATIM)
add_custom_target(hvt_docs ALL DEPENDS ${HVT_DOC_DIR}/copyright ${HVT_DOC_DIR}/changelog.gz)
install(FILES ${HVT_DOC_DIR}/copyright ${HVT_DOC_DIR}/changelog.gz DESTINATION share/doc/hvtremolo)

# Uninstall: `cmake -P build/uninstall.cmake` (or the target) removes what the last install from
# this build put in place, as its manifest lists it.
configure_file(${CMAKE_CURRENT_LIST_DIR}/Uninstall.cmake.in ${PROJECT_BINARY_DIR}/uninstall.cmake @ONLY)
add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -P ${PROJECT_BINARY_DIR}/uninstall.cmake)
