// Counts every operator new in the process - a loaded module's included, as it binds to the
// executable's replacement - while counting is switched on.
#pragma once

namespace counted_allocation {

void start();
// The number of allocations since start().
long stop();

} // namespace counted_allocation
