// The panel's pictures by name ("tremolobk", "knob0" ... "knob127", "ringbutton1", ...) and the
// scale they were drawn for (1, 2 or 3: that many pixels a point), decoded from the bytes
// compiled into the module at their first use in the process and shared from then on. An unknown
// name or scale, or an undecodable picture, gives an empty Image: a picture is never made by
// stretching one drawn for another scale.
#pragma once

#include <string_view>

#include "platform/Image.h"

Image panelPicture(std::string_view name, int scale = 1);
