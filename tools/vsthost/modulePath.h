// Where our tools find the plug-in by default: the HvTremolo.so built next to the program, or,
// for a program installed in <prefix>/bin, the one installed in <prefix>/lib/vst.
#pragma once

#include <string>

std::string defaultModulePath();
