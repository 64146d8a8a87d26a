# The Debian package: `cpack -G DEB` in the build folder (or `cmake --build build --target
# package`) writes hvtremolo_<version>_<arch>.deb, installing into /usr. Its version is the
# project's; its dependencies are what dpkg-shlibdeps finds the module and the programs NEED.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME hvtremolo)
set(CPACK_PACKAGE_VENDOR "Halvo Music")
set(CPACK_PACKAGE_CONTACT "${HVT_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "stereo tremolo and auto-panner plug-in (VST 2.4, LV2)")
set(CPACK_PACKAGE_DESCRIPTION "HvTremolo is a stereo tremolo followed by an automatic stereo
panner, with six parameters, ten factory programs and its own control panel.
It comes as a Linux VST 2.4 plug-in in /usr/lib/vst and as an LV2 plug-in
in /usr/lib/lv2, where Ardour, REAPER, Bitwig Studio, Carla, Qtractor and
other hosts find them without any setting.
.
The package also holds hvtremolo-render, a command-line host that runs sound
files through the plug-in, and hvtremolo-editor and hvtremolo-panel, which
show the control panel without a host.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/dropLdconfigScripts.cmake)
include(CPack)
