// The two oscillator tables, built once per process on first use and read-only afterwards.
#pragma once

#include <cstdint>

namespace sine_tables {

constexpr uint32_t kTremoloLength = 18002; // half a sine, 0 to ~180 degrees
constexpr uint32_t kPannerLength = 36004;  // a whole sine, 0 to ~360 degrees
// Entries past the end that may be loaded, never used: vector code reads a window of entries
// from the first one a group of frames needs, and the last group's window may reach past it.
constexpr uint32_t kReadablePastEnd = 32;

// Both tables come from one accumulated angle (a float that grows by 0.01 degree a step), so the
// tremolo table is the first 18002 entries of the panner table.
const float* tremoloTable();
const float* pannerTable();

} // namespace sine_tables
