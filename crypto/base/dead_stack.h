// What a routine leaves below its caller's frame when it returns: words that the compiler put by because registers ran
// out, which have no name to be wiped by, and arrays that are written so often that wiping them once behind the loop is
// cheaper than WipeOnExit in it.
#pragma once

#include <cstddef>

namespace toolbelt {

// More than the frame of any routine here whose registers hold secrets.
inline constexpr std::size_t DEAD_STACK_BYTES = 2048;

// Overwrites the DEAD_STACK_BYTES below the frame of the function that calls it with zeros; the compiler cannot drop
// it. So the secrets have to be in the frame of a function that has returned already, one that is not inlined:
//
//   [[gnu::noinline]] void takeBlocks(State& state, ...);   // registers are put by in its frame
//   void compress(State& state, ...) { takeBlocks(state, ...), wipeDeadStack(); }
//
// It does not reach the caller's own frame, nor copies that the system made of registers elsewhere. The top few words,
// where a call saves its return address and its caller's registers, may stay.
void wipeDeadStack() noexcept;

// The same for what is called for a single block, where 2048 bytes would take longer than the block: enough for rounds
// in the general registers.
inline constexpr std::size_t SHALLOW_STACK_BYTES = 384;
void wipeShallowStack() noexcept;

} // namespace toolbelt
