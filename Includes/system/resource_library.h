// The process-wide resource library: a library of texts and dialogs in the user's language, if the program has one. The
// toolkit asks it for the direction of reading, and the dialogs have it fill in their texts.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t NO_RESOURCE_IDENTIFIER = 0xFFFFFFFF;

struct ResourceLibrary
{
    std::uint32_t status;     // 0: loaded
    std::uint8_t rightToLeft; // the language is written from right to left
    std::uint32_t identifier; // handed to initialiseDialog; NO_RESOURCE_IDENTIFIER: it is not called
    void (*initialiseDialog)(std::uint32_t identifier, void* dialog);
};

// The program's record, which must stay as long as it is set; null, as from the start: there is none. Returns the one
// before.
TB_API const ResourceLibrary* setResourceLibrary(const ResourceLibrary* library) noexcept;
// Null unless one is set and loaded.
const ResourceLibrary* loadedResourceLibrary() noexcept;
// Whether one is loaded and its language is written from right to left.
bool isRightToLeft() noexcept;

} // namespace toolbelt
