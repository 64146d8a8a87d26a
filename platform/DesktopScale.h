// The scale the desktop asks windows to draw at, in whole device pixels a point: GDK_SCALE when
// it holds a whole number of at least 1, else the X resource Xft.dpi divided by 96 and rounded
// (halves up, so 144 gives 2), each limited to 1..largest; 1 when neither says anything.
#pragma once

#include <string_view>

// Reads the environment and, when GDK_SCALE does not decide, the resources on the X server's root
// window (RESOURCE_MANAGER) over a connection of its own, closed before returning. No X server
// counts as no resources.
int desktopScale(int largest);

// The rule alone: gdkScale is GDK_SCALE's value (null when unset), resources the text of the
// RESOURCE_MANAGER property ("Xft.dpi:\t144\n..."), empty when there is none.
int desktopScaleFrom(const char* gdkScale, std::string_view resources, int largest);
