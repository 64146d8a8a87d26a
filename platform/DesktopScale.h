// The scale the desktop asks windows to draw at, in whole device pixels a point: GDK_SCALE when
// it holds a whole number of at least 1, else the X resource Xft.dpi divided by 96 and rounded
// (halves up, so 144 gives 2), each limited to 1..largest; 1 when neither says anything.
#pragma once

// Reads the environment and, when GDK_SCALE does not decide, the resources on the X server's root
// window (RESOURCE_MANAGER) over a connection of its own, closed before returning. No X server
// counts as no resources.
int desktopScale(int largest);
