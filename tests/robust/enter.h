// Calls a function of 32-bit code with the stack at any multiple of four, as programs of other compilers may.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace toolbelt::test {

// The arguments are words (a 64-bit one is two); `self` goes to ECX, which a member function expects. `off` is 0, 4, 8
// or 12. Whether caller or function removes the arguments does not matter.
inline std::uint32_t enterAt(std::uint32_t off, const void* function, const void* self, const std::uint32_t* arguments,
                             std::uint32_t count)
{
    std::uint32_t result = reinterpret_cast<std::uint32_t>(function);
    __asm__ __volatile__("movl %%esp, %%ebx\n\t"
                         "andl $-16, %%esp\n\t"
                         "subl %%edx, %%esp\n"
                         "1:\n\t"
                         "testl %%ecx, %%ecx\n\t"
                         "jz 2f\n\t"
                         "pushl -4(%%esi,%%ecx,4)\n\t"
                         "decl %%ecx\n\t"
                         "jmp 1b\n"
                         "2:\n\t"
                         "movl %%edi, %%ecx\n\t"
                         "call *%%eax\n\t"
                         "movl %%ebx, %%esp"
                         : "+a"(result), "+c"(count), "+d"(off)
                         : "S"(arguments), "D"(self)
                         : "ebx", "memory", "cc");
    return result;
}

template <typename T>
std::uint32_t word(T argument)
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<std::uint32_t>(argument);
    else if constexpr (std::is_null_pointer_v<T>)
        return 0;
    else
        return static_cast<std::uint32_t>(argument);
}

template <typename... Arguments>
std::uint32_t enterAt(std::uint32_t off, const void* function, const void* self, Arguments... arguments)
{
    const std::uint32_t words[] = {word(arguments)..., 0};
    return enterAt(off, function, self, words, sizeof...(arguments));
}

} // namespace toolbelt::test
