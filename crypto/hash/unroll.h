// unroll: repeats a step with a compile-time counter, so that rotation counts, constants and the roles of the working
// words become immediates. On 32-bit code a 64-bit rotation by a variable count is several times slower than by a fixed
// one, and renaming an array's elements by index costs nothing where moving their values does.
#pragma once

#include <cstdint>
#include <utility>

namespace toolbelt {

template <typename Step, std::uint32_t... I>
[[gnu::always_inline]] inline void unroll(Step& step, std::integer_sequence<std::uint32_t, I...>)
{
    (step.template operator()<I>(), ...);
}

// Calls step.operator()<0>() to step.operator()<COUNT - 1>().
template <std::uint32_t COUNT, typename Step>
[[gnu::always_inline]] inline void unroll(Step step)
{
    unroll(step, std::make_integer_sequence<std::uint32_t, COUNT>());
}

} // namespace toolbelt
