// For tests of routines that have faster twins: the processor's features taken away one by one, and calls with a stack
// that is no better aligned than Windows promises.
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

#if defined(__i386__)
// Calls a function of up to six words with a stack that lies `off` bytes below a multiple of 16.
inline void callMisaligned(std::uint32_t off, const void* function, const std::uint32_t (&arguments)[6])
{
    __asm__ __volatile__("movl %%esp, %%ebx\n\t"
                         "andl $-16, %%esp\n\t"
                         "subl %%esi, %%esp\n\t"
                         "pushl 20(%%edi)\n\tpushl 16(%%edi)\n\tpushl 12(%%edi)\n\t"
                         "pushl 8(%%edi)\n\tpushl 4(%%edi)\n\tpushl (%%edi)\n\t"
                         "call *%%eax\n\t"
                         "movl %%ebx, %%esp"
                         : "+a"(function)
                         : "S"(off), "D"(&arguments)
                         : "ebx", "ecx", "edx", "memory", "cc");
}

template <typename T>
std::uint32_t word(T* pointer)
{
    return reinterpret_cast<std::uint32_t>(pointer);
}
#endif

} // namespace toolbelt::test
