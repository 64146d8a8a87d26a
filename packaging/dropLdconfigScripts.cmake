# Run by cpack after it made the package (CPACK_POST_BUILD_SCRIPTS). CPack adds postinst and
# postrm scripts that only call ldconfig whenever a shared object lies in a folder of /usr/lib,
# which catches the plug-in in /usr/lib/vst. ldconfig has nothing to do with plug-ins, lintian
# warns about it, and a package with a postrm stays known to dpkg ("rc") after apt remove. The
# package is made again without those two scripts; a script that does anything else stays.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "\\.deb$")
    continue()
  endif()
  set(tree "${CPACK_TOPLEVEL_DIRECTORY}/without-ldconfig")
  file(REMOVE_RECURSE "${tree}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${tree}" COMMAND_ERROR_IS_FATAL ANY)
  set(changed FALSE)
  foreach(script postinst:configure postrm:remove)
    string(REPLACE ":" ";" script "${script}")
    list(GET script 0 name)
    list(GET script 1 action)
    set(ldconfig_only "#!/bin/sh\n\nset -e\n\nif [ \"$1\" = \"${action}\" ]; then\n\tldconfig\nfi\n")
    if(EXISTS "${tree}/DEBIAN/${name}")
      file(READ "${tree}/DEBIAN/${name}" text)
      if(text STREQUAL ldconfig_only)
        file(REMOVE "${tree}/DEBIAN/${name}")
        set(changed TRUE)
      endif()
    endif()
  endforeach()
  if(changed)
    execute_process(COMMAND dpkg-deb --root-owner-group --build "${tree}" "${package}"
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE "${tree}")
endforeach()
