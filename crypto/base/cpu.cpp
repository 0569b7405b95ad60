#include "crypto/base/cpu.h"

#include <atomic>

#if defined(__i386__) || defined(__x86_64__)
#include <cpuid.h>
#endif

namespace toolbelt::cpu {
namespace {

constexpr std::uint32_t NOT_LOOKED_YET = 1u << 31;

#if defined(__i386__) || defined(__x86_64__)

// State components that the operating system saves, XCR0: bits 1 and 2 for AVX, 5 to 7 on top for AVX-512.
constexpr std::uint32_t XCR0_AVX = 0x06, XCR0_AVX512 = 0xE6;

std::uint32_t xcr0() noexcept
{
    std::uint32_t low, high;
    __asm__ __volatile__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

std::uint32_t detect() noexcept
{
    // __get_cpuid answers 0 on processors without the instruction and for leaves that they do not have.
    std::uint32_t a, b, c, d, features = 0;
    if (!__get_cpuid(1, &a, &b, &c, &d) || !(d & bit_SSE2)) return 0;
    features |= SSE2;
    if (c & bit_SSSE3) features |= SSSE3;
    if (c & bit_AES) features |= AES;
    const std::uint32_t saved = c & bit_OSXSAVE ? xcr0() : 0;
    const bool avx = (c & bit_AVX) && (saved & XCR0_AVX) == XCR0_AVX;

    if (!__get_cpuid_count(7, 0, &a, &b, &c, &d)) return features;
    if (b & bit_SHA) features |= SHA;
    if (avx && (b & bit_AVX2)) features |= AVX2;
    if ((features & AVX2) && (features & AES) && (c & bit_VAES)) features |= VAES;
    constexpr std::uint32_t AVX512_BITS = bit_AVX512F | bit_AVX512DQ | bit_AVX512BW | bit_AVX512VL;
    if (avx && (saved & XCR0_AVX512) == XCR0_AVX512 && (b & AVX512_BITS) == AVX512_BITS) {
        features |= AVX512;
        if (b & bit_AVX512IFMA) features |= IFMA;
        if (c & bit_AVX512VBMI) features |= VBMI;
    }
    return features;
}

#else

std::uint32_t detect() noexcept
{
    return 0;
}

#endif

// Two threads may look at the same time; both find the same.
std::atomic<std::uint32_t> detected = NOT_LOOKED_YET;
std::atomic<std::uint32_t> limit = ~0u;

struct Name
{
    std::uint32_t feature;
    const char* text;
};
constexpr Name names[] = {{SSE2, "sse2"},     {SSSE3, "ssse3"}, {AES, "aes"},   {SHA, "sha"},  {AVX2, "avx2"},
                          {AVX512, "avx512"}, {IFMA, "ifma"},   {VAES, "vaes"}, {VBMI, "vbmi"}};

} // namespace

std::uint32_t detectedFeatures() noexcept
{
    std::uint32_t features = detected.load(std::memory_order_relaxed);
    if (features == NOT_LOOKED_YET) {
        features = detect();
        detected.store(features, std::memory_order_relaxed);
    }
    return features;
}

std::uint32_t featuresInUse() noexcept
{
    return detectedFeatures() & limit.load(std::memory_order_relaxed);
}

std::uint32_t limitFeatures(std::uint32_t features) noexcept
{
    limit.store(features, std::memory_order_relaxed);
    return featuresInUse();
}

std::size_t nameFeaturesInUse(char* text, std::size_t size) noexcept
{
    std::size_t length = 0;
    const auto append = [&](const char* piece) {
        for (; *piece; ++piece, ++length)
            if (length + 1 < size) text[length] = *piece;
    };
    for (const Name& name : names) {
        if (!has(name.feature)) continue;
        if (length != 0) append(" ");
        append(name.text);
    }
    if (length == 0) append("portable");
    if (size != 0) text[length < size ? length : size - 1] = '\0';
    return length;
}

} // namespace toolbelt::cpu
