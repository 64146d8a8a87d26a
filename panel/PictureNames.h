// How a picture drawn for a scale is named: "knob5" at scale 1, "knob5@2x" at 2, "knob5@3x" at
// 3. The generator writes resources/<name>.png under these names and the panel looks them up by
// them, so both take them from here.
#pragma once

#include <string>
#include <string_view>

namespace picture_names {

// The panel draws at a whole-number scale from 1 to this.
constexpr int kLargestScale = 3;

inline std::string scaled(std::string_view name, int scale)
{
    std::string result(name);
    if (scale != 1)
        result += "@" + std::to_string(scale) + "x";
    return result;
}

} // namespace picture_names
