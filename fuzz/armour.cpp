// Armoured text: the body and its neighbours are where the model finds them, and what was encoded is decoded.
#include <algorithm>

#include "fuzz/text_model.h"

namespace toolbelt::fuzz {
namespace {

std::string textOf(const cByteBuffer& buffer)
{
    return buffer.data() ? std::string(reinterpret_cast<const char*>(buffer.data()), buffer.length()) : std::string();
}

void encodeAndDecode(Input input)
{
    const std::uint32_t flags = input.byte();
    std::string version = input.text(input.byte() % 16);
    std::erase_if(version, [](char c) { return c < ' ' || c > '~'; });
    const Bytes data = input.rest();
    const char *begin = "-----BEGIN THING-----", *end = "-----END THING-----";
    cByteBuffer text, decoded, header;
    const bool proved =
        encodeToBuffer(text, addressOf(data), sizeOf(data), begin, end, version.c_str(), nullptr, flags & 3);
    require(proved == !data.empty(), "what is not empty is encoded and proved");
    const char* const characters = reinterpret_cast<const char*>(text.data());
    const bool read = decodeArmoured(decoded, characters, text.length(), begin, end, &header);
    require(read == proved && (!read || textOf(decoded) == std::string(data.begin(), data.end())),
            "decode(encode(x)) = x");
    require(!read || version.empty() || textOf(header) == "Version: " + version + "\r", "the header line");
    require(armouredEquals(characters, text.length(), addressOf(data), sizeOf(data), begin, end) == read, "equals");
}

const Target target("armour", [](Input input) {
    const std::uint32_t kind = input.byte();
    if (kind % 4 == 0) return encodeAndDecode(input);
    const std::string begin = kind % 4 == 1 ? "<<" : "-----BEGIN THING-----", end = kind & 8 ? ">>" : "-----END ";
    const Bytes exact = input.take(4096);
    const std::string text(exact.begin(), exact.end());
    const char* const data = reinterpret_cast<const char*>(addressOf(exact));

    // The model.
    std::size_t from = text.find(begin), to = std::string::npos;
    if (from != std::string::npos) to = text.find(end, from += begin.size());
    const bool found = to != std::string::npos;
    const std::string whole = found ? text.substr(from, to - from) : "",
                      rest = found ? text.substr(to + end.size()) : "";
    const std::size_t headers = headerLengthOf(whole);
    const DecodedText expected = decodeText(whole.substr(headers), BASE64_STANDARD_ALPHABET);
    const std::size_t header = headers > 1 ? text.find_first_not_of("\n\r \t", from + 1) : std::string::npos;

    const char *body = nullptr, *headerStart = data, *restStart = nullptr;
    std::uint32_t bodyLength = 0, restLength = 0;
    require((findArmourBody(&body, &bodyLength, data, sizeOf(exact), begin.c_str(), end.c_str(), &headerStart,
                            &restStart, &restLength) == STATUS_OK) == found,
            "a block is found");
    cByteBuffer buffer, headerLine, trailing;
    require(buffer.append("kept", 4), "memory");
    const bool decoded =
        decodeArmoured(buffer, data, sizeOf(exact), begin.c_str(), end.c_str(), &headerLine, &trailing);
    require(decoded == (found && expected.status == STATUS_OK && !expected.bytes.empty()), "the model's verdict");
    if (found) {
        require(body == data + from + headers && bodyLength == whole.size() - headers, "the body");
        require(restStart == data + to + end.size() && restLength == rest.size(), "the rest");
        require(headers > 1 ? headerStart == data + std::min(header, text.size()) : !headerStart, "the header");
    }
    if (!decoded) return require(textOf(buffer) == "kept" && !headerLine.data(), "a failure changes nothing");
    require(textOf(buffer) == std::string(expected.bytes.begin(), expected.bytes.end()), "the model's bytes");
    require(textOf(trailing) == rest.substr(0, rest.find_first_of(std::string("\0\r\n", 3))), "the line behind");
    if (header != std::string::npos)
        require(textOf(headerLine) == text.substr(header, text.find('\n', header) - header), "the header line");
});

} // namespace
} // namespace toolbelt::fuzz
