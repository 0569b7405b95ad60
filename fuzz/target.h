// What every fuzz target is made of: its input, taken piece by piece, and its name in the list of targets.
//
// One source serves two programs: alone with libFuzzer, which makes up inputs, and together with all the others in the
// replay, which runs each over its corpus in the ordinary test run. A target is deterministic, bounds its own work, and
// calls require() for everything that must hold beyond "no crash".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace toolbelt::fuzz {

using Bytes = std::vector<std::uint8_t>; // made by Input in blocks of exactly their size

inline std::uint32_t sizeOf(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(bytes.size());
}
// An address even when there are no bytes.
inline const std::uint8_t* addressOf(const Bytes& bytes)
{
    static const std::uint8_t none = 0;
    return bytes.empty() ? &none : bytes.data();
}

// Says which target failed and on what, and ends the program.
[[noreturn]] void fail(const char* what);
inline void require(bool holds, const char* what)
{
    if (!holds) fail(what);
}

// When it is at its end there are zeros.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    std::size_t left() const { return left_; }
    std::uint32_t byte();
    // At most that many bytes.
    Bytes take(std::size_t size);
    Bytes rest() { return take(left_); }
    // A count in one byte, and that many bytes.
    Bytes part() { return take(byte()); }
    // Numbers worth trying: runs of given bytes, of zeros and of ones, at most limit bytes in all.
    Bytes number(std::size_t limit);
    // The rest as 16-bit units, terminated, a zero among them ending the text.
    std::vector<wchar_t> units();
    std::string text(std::size_t size);

private:
    const std::uint8_t* data_;
    std::size_t left_;
};

struct Target
{
    const char* name;
    void (*run)(Input input);
    const Target* next;

    // Puts itself into the list. A target is an object of its file that lives as long as the program.
    Target(const char* targetName, void (*function)(Input));
    static const Target* first;
};

// The file that is being run, for messages; empty under libFuzzer, which keeps the input itself.
extern std::string currentFile;

} // namespace toolbelt::fuzz
