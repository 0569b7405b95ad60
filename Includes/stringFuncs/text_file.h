// Text files, read whole.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/text_decode.h"

namespace toolbelt {

inline constexpr std::int32_t TEXT_FILE_TOO_LARGE = -2; // 4 GiB or more

// Reads a file and decodes it (text_decode.h); the encoding is put out when asked for. Returns 0, TEXT_FILE_TOO_LARGE,
// or the system's error code (8 when memory runs out). On failure the outputs are as they were.
// The file is decoded from its mapping: a medium that fails meanwhile raises the system's exception for a page that
// cannot be brought in, which is passed on.
[[nodiscard]] TB_API std::int32_t LoadTextFile(cWCS& text, const wchar_t* path, TextEncoding* encoding = nullptr);

} // namespace toolbelt
