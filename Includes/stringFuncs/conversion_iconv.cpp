// The conversions where there is no Windows: the C library's iconv, with what it refuses replaced as Windows does.
#include "Includes/stringFuncs/conversion.h"

#include <cerrno>
#include <cstdio>
#include <iconv.h>

#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

constexpr const char* wideName = "UTF-16LE";

class Converter
{
public:
    Converter(const char* to, const char* from) noexcept : handle_(iconv_open(to, from)) {}
    ~Converter()
    {
        if (*this) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    explicit operator bool() const noexcept { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // Gives each piece of output to sink; malformed input, as long as malformed(at, size) says, becomes the
    // replacement.
    template <typename Malformed, typename Sink>
    void run(const char* input, std::size_t size, Malformed malformed, const char* replacement,
             std::size_t replacementSize, Sink sink) noexcept
    {
        char* at = const_cast<char*>(input); // iconv only reads
        char piece[512];
        const WipeOnExit guard(piece);
        while (size != 0) {
            char* end = piece;
            std::size_t room = sizeof piece;
            const std::size_t result = iconv(handle_, &at, &size, &end, &room);
            sink(piece, static_cast<std::size_t>(end - piece));
            if (result != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
            sink(replacement, replacementSize);
            const std::size_t skipped = malformed(at, size);
            at += skipped;
            size -= skipped;
        }
    }

private:
    iconv_t handle_;
};

// Counts bytes and writes them while they fit.
struct Output
{
    char* out;
    std::size_t capacity;
    std::size_t written = 0;

    void operator()(const char* piece, std::size_t size) noexcept
    {
        for (std::size_t i = 0; i < size; ++i, ++written)
            if (out && written < capacity) out[written] = piece[i];
    }
    std::int32_t result(std::size_t unit) const noexcept
    {
        return out && written > capacity ? 0 : static_cast<std::int32_t>(written / unit);
    }
};

// The bytes that could have begun one UTF-8 character: together they are replaced once.
std::size_t malformedUtf8(const char* text, std::size_t size) noexcept
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    std::size_t n = 1;
    for (; n < length && n < size && byte(n) >= low && byte(n) <= high; ++n) low = 0x80, high = 0xBF;
    return n;
}

void nameOf(std::int32_t codePage, char (&name)[24]) noexcept
{
    if (codePage == -1) codePage = DefaultCodePage();
    if (codePage == codePageUtf8)
        std::snprintf(name, sizeof name, "UTF-8");
    else
        std::snprintf(name, sizeof name, "CP%d", codePage == codePageAnsi ? 1252 : codePage);
}

} // namespace

std::int32_t multibyteToWide(std::int32_t codePage, const char* bytes, std::int32_t byteCount, wchar_t* out,
                             std::int32_t capacity) noexcept
{
    if (bytes == nullptr || byteCount <= 0) return 0;
    char name[24];
    nameOf(codePage, name);
    Converter converter(wideName, name);
    if (!converter) return 0;
    Output output = {reinterpret_cast<char*>(out), static_cast<std::size_t>(capacity) * 2};
    const auto malformed = [&name](const char* at, std::size_t size) {
        return name[0] == 'U' ? malformedUtf8(at, size) : std::size_t(1);
    };
    converter.run(bytes, static_cast<std::size_t>(byteCount), malformed, "\xFD\xFF", 2,
                  [&](const char* piece, std::size_t size) { output(piece, size); });
    return output.result(2);
}

std::int32_t wideToMultibyte(std::int32_t codePage, const wchar_t* units, std::int32_t count, char* out,
                             std::int32_t capacity) noexcept
{
    if (units == nullptr || count <= 0) return 0;
    char name[24];
    nameOf(codePage, name);
    Converter converter(name, wideName);
    if (!converter) return 0;
    const bool utf8 = name[0] == 'U';
    Output output = {out, static_cast<std::size_t>(capacity)};
    const auto oneUnit = [](const char*, std::size_t) { return std::size_t(2); };
    converter.run(reinterpret_cast<const char*>(units), static_cast<std::size_t>(count) * 2, oneUnit,
                  utf8 ? "\xEF\xBF\xBD" : "?", utf8 ? 3 : 1,
                  [&](const char* piece, std::size_t size) { output(piece, size); });
    return output.result(1);
}

bool isLeadByte(std::int32_t, unsigned char) noexcept
{
    return false; // natively the default is UTF-8
}

} // namespace toolbelt
