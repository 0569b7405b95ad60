// Base64 decoding. A first pass over the text works out the size, a second one decodes. Both classify a character by
// one table and take four digits in a row at a time, which is nearly all there is in ordinary texts.
#include <array>
#include <cstring>

#include "crypto/base/cpu.h"
#include "crypto/base/heap.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/base64_avx2.h"
#include "crypto/encoding/base64_text.h"
#include "crypto/encoding/crc24.h"

namespace toolbelt {
namespace {

// Classes of characters: 0 to 63 are digits. The others all have bit 6 set, so one test tells whether four are digits.
constexpr std::uint8_t PAD = 64;
constexpr std::uint8_t LINE_BREAK = 65; // CR or LF, even when the alphabet holds them
constexpr std::uint8_t OTHER = 66;
static_assert(PAD == BASE64_PAD);

using Classes = std::array<std::uint8_t, 256>;

constexpr Classes classify(const char* alphabet)
{
    Classes classes = {};
    classes.fill(OTHER);
    // Upwards, so that a character that occurs twice has its highest position, as in base64Index.
    for (std::uint8_t i = 0; i <= PAD; ++i) classes[static_cast<std::uint8_t>(alphabet[i])] = i;
    classes[std::uint8_t{'\r'}] = classes[std::uint8_t{'\n'}] = LINE_BREAK;
    return classes;
}

constexpr Classes standardClasses = classify(BASE64_STANDARD_ALPHABET);

// A text with the classes of its characters.
class Input
{
public:
    // vector: long runs of digits are done by the vector routines, which know the standard alphabet alone.
    Input(const char* text, std::uint32_t length, const Classes& classes, bool vector)
        : text_(text), length_(length), classes_(classes), vector_(vector)
    {}

    bool atEnd() const { return position_ == length_; }
    std::uint32_t remaining() const { return length_ - position_; }
    std::uint32_t position() const { return position_; }
    const char* here() const { return text_ + position_; }
    std::uint8_t next() { return classOf(text_[position_++]); }

    // Takes four digits as a 24-bit number; false, and nothing taken, when the next four characters are not all digits.
    bool nextFour(std::uint32_t& value24)
    {
        if (remaining() < 4) return false;
        const char* four = here();
        const std::uint32_t a = classOf(four[0]), b = classOf(four[1]), c = classOf(four[2]), d = classOf(four[3]);
        if ((a | b | c | d) >= PAD) return false;
        value24 = a << 18 | b << 12 | c << 6 | d;
        position_ += 4;
        return true;
    }
    // Takes a long run of digits, which starts at a group, and returns their number; writes their bytes when output is
    // given. 0: what follows is no such run.
    std::uint32_t nextRun(std::uint8_t* output, std::uint32_t room)
    {
        if (!vector_ || remaining() < BASE64_RUN_DIGITS) return 0;
        const Base64Run run =
            output ? base64DecodeAvx2(output, room, here(), remaining()) : base64MeasureAvx2(here(), remaining());
        position_ += run.characters;
        return run.digits;
    }
    // Skips what may stand between a line break and the text of the next line.
    void skipBlanks()
    {
        for (; !atEnd(); ++position_) {
            const char c = *here();
            if (c != '\r' && c != '\n' && c != '\t' && c != ' ') return;
        }
    }

private:
    std::uint8_t classOf(char character) const { return classes_[static_cast<std::uint8_t>(character)]; }

    const char* text_;
    std::uint32_t length_;
    const Classes& classes_;
    std::uint32_t position_ = 0;
    bool vector_;
};

// The size pass: how many bytes the digits before the checksum line stand for.
Status decodedSize(Input input, std::uint32_t& size)
{
    std::uint32_t digits = 0, pads = 0;
    bool atLineStart = true;
    while (!input.atEnd()) {
        std::uint32_t group;
        if (const std::uint32_t run = input.nextRun(nullptr, 0)) {
            digits += run;
            atLineStart = false;
            continue;
        }
        if (input.nextFour(group)) {
            digits += 4;
            atLineStart = false;
            continue;
        }
        const std::uint8_t kind = input.next();
        if (kind < PAD) {
            ++digits;
            atLineStart = false;
        } else if (kind == LINE_BREAK) {
            atLineStart = true;
        } else if (kind == PAD) {
            if (atLineStart) break;
            ++pads;
        }
    }
    if (pads > 2) return TEXT_E_MALFORMED;
    size = digits / 4 * 3 + (pads == 1 ? 2 : pads == 2 ? 1 : 0); // at most 3 * 2^30
    return STATUS_OK;
}

// The decoding pass. It ends behind the text, or behind the pad that opens the checksum line, with four more characters
// there. written counts what is in output even when it fails.
struct Decoder
{
    std::uint8_t* output;
    std::uint32_t size; // what the first pass found, not more than the capacity
    std::uint32_t written = 0;
    bool hasChecksum = false;

    bool hasRoom(std::uint32_t bytes) const { return size - written >= bytes; }
    void put(std::uint32_t byte) { output[written++] = static_cast<std::uint8_t>(byte); }
    bool putGroup(std::uint32_t value24)
    {
        if (!hasRoom(3)) return false;
        put(value24 >> 16);
        put(value24 >> 8);
        put(value24);
        return true;
    }
    Status run(Input& input);
};

Status Decoder::run(Input& input)
{
    // The lower 24 bits count. It is never cleared: a group with too few pads shows digits of the group before.
    std::uint32_t accumulator = 0;
    std::uint32_t digits = 0; // of the group that has begun
    bool atLineStart = true;
    while (!input.atEnd()) {
        if (const std::uint32_t run = digits == 0 ? input.nextRun(output + written, size - written) : 0) {
            written += run / 4 * 3;
            accumulator = std::uint32_t(output[written - 3]) << 16 | std::uint32_t(output[written - 2]) << 8 |
                          output[written - 1];
            atLineStart = false;
            continue;
        }
        if (digits == 0 && input.nextFour(accumulator)) {
            if (!putGroup(accumulator)) return TEXT_E_MALFORMED;
            atLineStart = false;
            continue;
        }
        const std::uint8_t kind = input.next();
        if (kind < PAD) {
            accumulator = accumulator << 6 | kind;
            atLineStart = false;
            if (++digits < 4) continue;
            digits = 0;
            if (!putGroup(accumulator)) return TEXT_E_MALFORMED;
        } else if (kind == LINE_BREAK) {
            atLineStart = true;
            input.skipBlanks();
        } else if (kind == PAD && !atLineStart) {
            accumulator <<= 6;
        } else if (kind == PAD) {
            if (input.remaining() < BASE64_CHECKSUM_DIGITS) return TEXT_E_CHECKSUM;
            hasChecksum = true;
            break;
        }
    }
    if (digits < 2) return STATUS_OK; // six bits make no byte
    if (!hasRoom(digits - 1)) return TEXT_E_MALFORMED;
    put(accumulator >> 16);
    if (digits == 3) put(accumulator >> 8);
    return STATUS_OK;
}

Status decode(std::uint8_t* output, std::uint32_t* inOutSize, Input input, const char* alphabet,
              std::uint32_t* consumed)
{
    std::uint32_t size;
    if (const Status status = decodedSize(input, size); status != STATUS_OK) return status;
    if (size > *inOutSize) {
        *inOutSize = size;
        return STATUS_BUFFER_TOO_SMALL;
    }

    Decoder decoder = {output, size};
    if (const Status status = decoder.run(input); status != STATUS_OK) {
        wipe(output, decoder.written);
        return status;
    }
    *inOutSize = decoder.written;
    std::uint32_t end = input.position();
    if (decoder.hasChecksum) {
        if (readChecksum(input.here(), alphabet) != crc24(output, decoder.written)) return TEXT_E_CHECKSUM;
        end += BASE64_CHECKSUM_DIGITS;
    }
    if (consumed != nullptr) *consumed = end;
    return STATUS_OK;
}

} // namespace

Status base64Decode(std::uint8_t* output, std::uint32_t* inOutSize, const char* text, std::uint32_t textLength,
                    const char* alphabet, std::uint32_t* consumed)
{
    alphabet = alphabetOrDefault(alphabet);
    // Other alphabets are classified for each call, which costs little against the searches it replaces.
    if (isStandardAlphabet(alphabet)) {
        const Input input(text, textLength, standardClasses, cpu::has(cpu::AVX2));
        return decode(output, inOutSize, input, alphabet, consumed);
    }
    const Classes classes = classify(alphabet);
    return decode(output, inOutSize, {text, textLength, classes, false}, alphabet, consumed);
}

} // namespace toolbelt
