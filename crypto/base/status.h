// Status: what every operation of the engine answers. 0 is success; each layer names its own codes, in a header of its
// own, and passes the codes of the layers below it upward unchanged.
#pragma once

#include <cstdint>

namespace toolbelt {

using Status = std::int32_t;

inline constexpr Status STATUS_OK = 0;

// The caller's output buffer is too small; the size needed has been stored through the size argument. A caller may ask
// first with no buffer and a capacity of 0. (The digest and cipher layers have another meaning for 1.)
inline constexpr Status STATUS_BUFFER_TOO_SMALL = 1;

} // namespace toolbelt
