// The panel's pictures by name ("tremolobk", "knob0" ... "knob127", "ringbutton1", ...), decoded
// from the bytes compiled into the module at their first use in the process and shared from then
// on. An unknown name or an undecodable picture gives an empty Image.
#pragma once

#include <string_view>

#include "platform/Image.h"

Image panelPicture(std::string_view name);
