// Code paths by name, for those who want to force one.
#pragma once

#include <string>

namespace toolbelt::speed {

// Limits the library to a tier and all below it: "portable", "sse2", "ssse3", "aes" (with the instructions for SHA),
// "avx2", "vaes", "avx512" (with 52-bit multiplication), or "all". False for any other name, and for one that this
// processor does not reach.
bool useTier(const std::string& name);
// The names, for a message.
std::string tierNames();
// What the library uses now, as "sse2 ssse3 aes".
std::string featuresInUse();

} // namespace toolbelt::speed
