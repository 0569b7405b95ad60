// How the crafted library speaks to the test program that loaded it.
#pragma once

#include <cstdint>

std::intptr_t tell(const char* what, std::uintptr_t argument = 0);

inline std::intptr_t tell(const char* what, const void* argument)
{
    return tell(what, reinterpret_cast<std::uintptr_t>(argument));
}
