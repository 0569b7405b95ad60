// Cost against size, drawn: whether it grows as it should, and where the thresholds lie.
#pragma once

#include <string>

#include "speed/measure.h"

namespace toolbelt::bench {

// Measures products, powers and certificates read at doubling sizes, in the tier in use, and returns an SVG picture:
// both axes logarithmic, a line a job, seconds a call.
std::string plotAgainstSize(const speed::Settings& settings);

} // namespace toolbelt::bench
