// Where our tools find the plug-in by default: the HvTremolo.so built next to the program.
#pragma once

#include <string>

std::string defaultModulePath();
