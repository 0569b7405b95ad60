// Features of the processor, for routines that have a faster twin on newer instructions. A feature counts only when the
// processor has it and the operating system keeps the registers it needs. Without any, the portable routines serve.
#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/base/export.h"

namespace toolbelt::cpu {

// A set of features is the OR of these.
inline constexpr std::uint32_t SSE2 = 1u << 0;
inline constexpr std::uint32_t SSSE3 = 1u << 1;
inline constexpr std::uint32_t AES = 1u << 2;
inline constexpr std::uint32_t SHA = 1u << 3;
inline constexpr std::uint32_t AVX2 = 1u << 4;
inline constexpr std::uint32_t AVX512 = 1u << 5; // F, DQ, BW and VL
inline constexpr std::uint32_t IFMA = 1u << 6;   // AVX-512 52-bit multiplication; comes with AVX512
inline constexpr std::uint32_t VAES = 1u << 7;   // AES on AVX2 registers; comes with AES and AVX2
inline constexpr std::uint32_t VBMI = 1u << 8;   // AVX-512 permutations of bytes; comes with AVX512

// What the processor and the operating system offer; found out once a process.
TB_API std::uint32_t detectedFeatures() noexcept;
// What the library uses: all that is detected, unless the limit says less. An object keeps the routine it was built
// with.
TB_API std::uint32_t featuresInUse() noexcept;
inline bool has(std::uint32_t features) noexcept
{
    return (featuresInUse() & features) == features;
}

// Use no more than these features from now on, whatever they need among each other (~0u: all that are detected; 0:
// portable routines alone). For tests, benchmarks and tools: set it while nothing else of the library runs. Returns
// what is in use then.
TB_API std::uint32_t limitFeatures(std::uint32_t features) noexcept;

// Writes the names of the features in use, "sse2 ssse3 aes" for example and "portable" for none, zero-terminated and
// cut off at size bytes. Returns the length of the whole text.
TB_API std::size_t nameFeaturesInUse(char* text, std::size_t size) noexcept;

} // namespace toolbelt::cpu
