// The formatter in buffers that end at a page that cannot be touched: every capacity gets a beginning of the whole
// text, and numbers read as the C library writes them.
#include "Includes/stringFuncs/formatter.h"

#include <sys/mman.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

constexpr std::size_t PAGE = 4096;

// The units in front of a page that cannot be touched.
wchar_t* unitsAtEdge(std::int32_t count)
{
    static std::uint8_t* const pages = [] {
        void* const memory = mmap(nullptr, 3 * PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        require(memory != MAP_FAILED && mprotect(static_cast<std::uint8_t*>(memory) + 2 * PAGE, PAGE, PROT_NONE) == 0,
                "pages");
        return static_cast<std::uint8_t*>(memory);
    }();
    return reinterpret_cast<wchar_t*>(pages + 2 * PAGE) - count;
}

template <typename... Values>
void check(const std::u16string& format, std::int32_t capacity, const std::string& library, Values... values)
{
    static wchar_t whole[8192];
    const std::vector<wchar_t> exact(format.c_str(), format.c_str() + format.size() + 1);
    const std::int32_t size = formatWide(whole, 8192, exact.data(), values...);
    require(size >= 0 && size < 8192 && whole[size] == 0, "a text and its end");
    wchar_t* const edge = unitsAtEdge(capacity);
    const std::int32_t written = formatWide(edge, capacity, exact.data(), values...);
    require(written == std::min(size, std::max(0, capacity - 1)), "as much as there is room for");
    if (capacity > 0)
        require(edge[written] == 0 && std::memcmp(edge, whole, sizeof(wchar_t) * std::size_t(written)) == 0,
                "a beginning of the text");
    if (library.empty()) return;
    static char expected[8192];
    const int length = std::snprintf(expected, sizeof expected, library.c_str(), values...);
    if (length < 0 || length >= 8191) return;
    require(length == size && std::equal(expected, expected + length, whole), "the C library's text");
}

template <typename Value>
void withStars(const std::u16string& format, std::int32_t capacity, const std::string& library, int stars, int first,
               int second, Value value)
{
    if (stars == 0) check(format, capacity, library, value);
    if (stars == 1) check(format, capacity, library, first, value);
    if (stars == 2) check(format, capacity, library, first, second, value);
}

const Target target("formatter", [](Input input) {
    static const char* const sizes[] = {"", "I64", "I32", "I", "l", "h"};
    static const char* const theirs[] = {"", "ll", "", "", "", "h"};
    const char letter = "dioxXueEfgGsScCpn%y"[input.byte() % 19];
    const std::uint32_t size = input.byte() % 6;
    const std::int32_t capacity = static_cast<std::int32_t>(input.byte() * 4);
    const int first = static_cast<std::int8_t>(input.byte()), second = static_cast<std::int8_t>(input.byte());
    const Bytes number = input.take(8), text = input.part();
    std::uint64_t bits = 0;
    for (const std::uint8_t byte : number) bits = bits << 8 | byte;

    std::string directive = "%";
    int stars = 0;
    const std::uint32_t flags = input.byte(), width = input.byte(), precision = input.byte();
    for (int i = 0; i < 5; ++i)
        if (flags >> i & 1) directive += "-+ #0"[i];
    if (width & 1) directive += (width & 2) ? (++stars, "*") : std::to_string(width * (flags & 0x20 ? 99999999 : 1));
    if (precision & 1)
        directive += "." + ((precision & 2) ? (++stars, std::string("*"))
                                            : std::to_string(precision * (flags & 0x40 ? 99999999 : 1)));
    const bool isHuge = (flags & 0x60) != 0 && ((width | precision) & 1) != 0;
    std::u16string around;
    for (const Bytes rest = input.rest(); const std::uint8_t byte : rest)
        around += static_cast<char16_t>(byte == '%' ? 0x20AC : byte ? byte : 1);
    const std::string ours = directive + sizes[size] + letter,
                      library = isHuge ? "" : directive + theirs[size] + letter;
    // Behind a percent sign that stands for itself the text would be a directive of its own.
    const std::u16string behind = letter == '%' ? u"" : around;
    const std::u16string format = around + std::u16string(ours.begin(), ours.end()) + behind;
    const std::string whole = around.empty() ? library : "";

    const std::vector<wchar_t> wide(text.size() + 1, L'w');
    std::vector<wchar_t> units = wide;
    for (std::size_t i = 0; i < text.size(); ++i) units[i] = static_cast<wchar_t>(text[i] * 257);
    units.back() = 0;
    Bytes narrow = text;
    narrow.push_back(0);
    narrow.shrink_to_fit();
    const bool wideText = size == 4 || (size != 5 && letter == 's');
    const auto isOneOf = [letter](const char* letters) { return std::strchr(letters, letter) != nullptr; };
    const auto run = [&](const std::string& compared, auto value) {
        withStars(format, capacity, compared, stars, first, second, value);
    };
    if (isOneOf("dioxXu"))
        return size == 1 ? run(whole, static_cast<long long>(bits)) : run(whole, static_cast<int>(bits));
    if (isOneOf("eEfgG")) {
        double value;
        std::memcpy(&value, &bits, sizeof value);
        // Of a size the C library would take another type; with # it loses zeros; and it shows the sign of a NaN.
        const bool comparable = size == 0 && (flags & 8) == 0 && !std::isnan(value);
        return run(comparable ? whole : "", value);
    }
    if (isOneOf("sS"))
        return wideText ? run("", static_cast<const wchar_t*>(units.data()))
                        : run("", reinterpret_cast<const char*>(narrow.data()));
    if (isOneOf("cC")) return run("", static_cast<int>(bits & 0xFFFF));
    if (isOneOf("pn")) return run("", static_cast<const void*>(units.data()));
    run("", 7);
});

} // namespace
} // namespace toolbelt::fuzz
