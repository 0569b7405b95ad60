// For tests of routines that have faster twins: the processor's features taken away one by one.
#pragma once

#include <cstdint>
#include <vector>

#include "crypto/base/cpu.h"

namespace toolbelt::test {

// Limits the processor features for the time of a test.
struct FeatureLimit
{
    explicit FeatureLimit(std::uint32_t features) { cpu::limitFeatures(features); }
    ~FeatureLimit() { cpu::limitFeatures(~0u); }
};

// All features of this processor, then the same without the newest one, and so on down to none.
inline std::vector<std::uint32_t> featureSteps()
{
    std::vector<std::uint32_t> steps = {cpu::detectedFeatures()};
    for (std::uint32_t bit = 1u << 31; bit != 0; bit >>= 1)
        if (steps.back() & bit) steps.push_back(steps.back() & ~bit);
    return steps;
}

} // namespace toolbelt::test
