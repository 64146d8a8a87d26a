#include "engine/SineTables.h"

#include <array>
#include <cmath>

namespace sine_tables {
namespace {

struct Tables {
    std::array<float, kPannerLength + kReadablePastEnd> entries{};

    Tables()
    {
        // The angle accumulates in single precision, each step summed in double and rounded,
        // so it drifts from k * 0.01 (90.000816 at k = 9000); that drift shapes the table and
        // is kept. The degree-to-radian factor is 3.14159265358 / 180, not the exact one.
        float angle = 0.0f;
        for (uint32_t i = 0; i < kPannerLength; ++i) {
            const double radians = static_cast<double>(angle) * 0.017453292519888888;
            entries[i] = static_cast<float>(std::sin(radians));
            angle = static_cast<float>(static_cast<double>(angle) + 0.01);
        }
    }
};

const Tables& tables()
{
    static const Tables instance; // thread-safe first-use construction
    return instance;
}

} // namespace

const float* tremoloTable()
{
    return tables().entries.data();
}

const float* pannerTable()
{
    return tables().entries.data();
}

} // namespace sine_tables
