#include "speed/tiers.h"

#include <cstdint>

#include "crypto/base/cpu.h"

namespace toolbelt::speed {
namespace {

struct Tier
{
    const char* name;
    std::uint32_t adds;  // to the tier above it in this list
    std::uint32_t needs; // without these it is no tier of its own on this processor
};
constexpr Tier tiers[] = {
    {"portable", 0, 0},
    {"sse2", cpu::SSE2, cpu::SSE2},
    {"ssse3", cpu::SSSE3, cpu::SSSE3},
    {"aes", cpu::AES | cpu::SHA, cpu::AES},
    {"avx2", cpu::AVX2, cpu::AVX2},
    {"vaes", cpu::VAES, cpu::VAES},
    {"avx512", cpu::AVX512 | cpu::IFMA | cpu::VBMI, cpu::AVX512},
    {"all", ~0u, 0},
};

} // namespace

bool useTier(const std::string& name)
{
    std::uint32_t features = 0;
    for (const Tier& tier : tiers) {
        features |= tier.adds;
        if (name != tier.name) continue;
        if ((cpu::detectedFeatures() & tier.needs) != tier.needs) return false;
        cpu::limitFeatures(features);
        return true;
    }
    return false;
}

std::string tierNames()
{
    std::string names;
    for (const Tier& tier : tiers) names += std::string(names.empty() ? "" : ", ") + tier.name;
    return names;
}

std::string featuresInUse()
{
    std::string names(cpu::nameFeaturesInUse(nullptr, 0) + 1, '\0');
    names.resize(cpu::nameFeaturesInUse(names.data(), names.size()));
    return names;
}

} // namespace toolbelt::speed
