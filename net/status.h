// Status codes of a post.
#pragma once

#include "crypto/base/status.h"

namespace toolbelt {

inline constexpr Status POST_E_URL = 2;      // the URL could not be split, or memory for its copy ran out
inline constexpr Status POST_E_ANSWER = 3;   // no connection or request, an answer without a length, or not read whole
inline constexpr Status POST_E_NOT_SENT = 4; // posts are stopped, or nothing could be sent

} // namespace toolbelt
