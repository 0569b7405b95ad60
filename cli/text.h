// Text in and out: UTF-8 and UTF-16, hexadecimal, and the display of text that comes from a stranger.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toolbelt {
struct BigNum;
}

namespace toolbelt::cli {

std::wstring toWide(std::string_view utf8);
std::string toUtf8(std::wstring_view wide);

// Lower case, two digits a byte. With a cut, at most that many bytes are shown, then "... (N bytes)".
std::string toHex(const std::uint8_t* bytes, std::size_t size, std::size_t cut = std::size_t(-1));
// A number in hexadecimal, either case, with or without 0x, of any count of digits; its big-endian bytes.
std::optional<std::vector<std::uint8_t>> parseHex(std::string_view text);
// A number in decimal, or in hexadecimal behind 0x.
std::optional<std::uint32_t> parseNumber(std::string_view text);

// Lower case, no leading zeros, "0" for zero.
std::string numberText(const BigNum& number);

std::string toLower(std::string_view ascii);

// How a registry id is written: decimal below 0x80, hexadecimal from there on.
std::string idText(std::int32_t id);
// How names of algorithms are compared: "sha256" and "SHA-256" are the same.
std::string plainName(std::string_view name);

enum class Charset
{
    utf8,
    latin1,
    utf16
}; // utf16: big-endian
// The text as UTF-8 that a terminal takes for nothing but text: control characters, invisible ones that turn or join
// what stands around them, and bytes that are not of the charset are shown as \xNN or \uNNNN. A backslash, and each of
// the ASCII characters in `quoted`, gets a backslash in front.
std::string readable(const std::uint8_t* bytes, std::size_t size, Charset charset, std::string_view quoted = {});

} // namespace toolbelt::cli
