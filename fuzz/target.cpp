#include "fuzz/target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace toolbelt::fuzz {

const Target* Target::first = nullptr;
std::string currentFile;

Target::Target(const char* targetName, void (*function)(Input)) : name(targetName), run(function), next(first)
{
    first = this;
}

void fail(const char* what)
{
    std::fprintf(stderr, "fuzz: this does not hold: %s\n", what);
    if (!currentFile.empty()) std::fprintf(stderr, "fuzz: the input is %s\n", currentFile.c_str());
    std::abort();
}

std::uint32_t Input::byte()
{
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
}

Bytes Input::take(std::size_t size)
{
    size = std::min(size, left_);
    data_ += size;
    left_ -= size;
    return Bytes(data_ - size, data_);
}

Bytes Input::number(std::size_t limit)
{
    Bytes bytes;
    while (bytes.size() < limit) {
        const std::uint32_t control = byte(), size = control & 0x3F, kind = control >> 6;
        if (kind == 0) break;
        const Bytes run = kind == 1 ? take(size) : Bytes(size, kind == 2 ? 0 : 0xFF);
        bytes.insert(bytes.end(), run.begin(), run.end());
    }
    return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), limit)));
}

std::vector<wchar_t> Input::units()
{
    std::vector<wchar_t> text(left_ / 2 + 1);
    for (wchar_t& unit : text) {
        if (left_ < 2) break; // zeros from here on
        const unsigned low = byte();
        unit = static_cast<wchar_t>(low | byte() << 8);
    }
    return text;
}

std::string Input::text(std::size_t size)
{
    const Bytes bytes = take(size);
    return std::string(bytes.begin(), bytes.end());
}

} // namespace toolbelt::fuzz
