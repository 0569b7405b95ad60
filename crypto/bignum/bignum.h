// BigNum: the engine's one number type, a natural number of any size in 64-bit limbs.
//
// Limbs are stored least significant first. The count is a capacity: leading zero limbs are allowed, and a number's
// size is found by its top limb (bnTopLimb). A record of zeros is a valid, empty number and reads as zero. An owned
// array is wiped before it is reallocated or freed. A borrowed record is a window into another number's limbs: it is
// never grown, reallocated or freed, and must not outlive or survive a resize of the number it shows.
//
// Operations return a Status of crypto/bignum/status.h unless they return a value. Every operation may be given the
// same record as destination and operand. On failure the destination's contents are unspecified, but the record stays
// valid. An arithmetic operand of 65,536 32-bit words or more (32,768 significant limbs) is out of range (BN_E_RANGE).
// Timing depends on the values.
#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/bignum/status.h"

namespace toolbelt {

struct TB_API BigNum
{
    std::int32_t count = 0;         // limbs in the array
    std::uint64_t* limbs = nullptr; // least significant first
    std::uint32_t borrowed = 0;     // non-zero: a window into another number

    BigNum() noexcept = default;
    BigNum(const BigNum&) = delete;
    BigNum& operator=(const BigNum&) = delete;
    ~BigNum();
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(BigNum) == 12 && offsetof(BigNum, limbs) == 4 && offsetof(BigNum, borrowed) == 8));

// ---- storage

// Zeros all three fields, without looking at what they held.
TB_API void bnInit(BigNum& number);
// Wipes and frees an owned array, forgets a borrowed one; the record is empty afterwards.
TB_API void bnDestroy(BigNum& number);
// Makes room for size bytes (at least one limb), zeros all limbs and loads the big-endian source when one is given.
// A borrowed number that is too small fails with BN_E_RANGE.
[[nodiscard]] TB_API Status bnResize(BigNum& number, std::uint32_t size, const std::uint8_t* source = nullptr);
// destination = source. A destination larger than needed keeps its count.
[[nodiscard]] TB_API Status bnCopy(BigNum& destination, const BigNum& source);
// Shows the limbs of source from index first on, at most maximum of them (-1: all). A first index at or beyond the
// count gives an owned zero of one limb. source's limbs must stay where they are while the view is used. BN_E_RANGE for
// a negative index, and for an owner that would view itself.
[[nodiscard]] TB_API Status bnView(BigNum& destination, const BigNum& source, std::int32_t first,
                                   std::int32_t maximum = -1);

// ---- bytes

// destination = size big-endian bytes.
[[nodiscard]] TB_API Status bnImport(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size);
// Writes exactly width bytes, most significant first; what lies above the width is dropped.
TB_API void bnExport(std::uint8_t* output, std::uint32_t width, const BigNum& number);
// Byte index, counted from the least significant; 0 beyond the limbs.
TB_API std::uint8_t bnGetByte(const BigNum& number, std::uint32_t index);
// Replaces that byte; BN_E_RANGE beyond the limbs.
[[nodiscard]] TB_API Status bnSetByte(BigNum& number, std::uint32_t index, std::uint8_t value);

// The prefixed form: a 16-bit big-endian bit count, then the magnitude big-endian (the multiprecision integer of RFC
// 4880). Import returns the bytes consumed, 0 on failure. Export returns the bytes written, 0 when they do not fit the
// capacity or the number has more than 65,535 bits.
TB_API std::uint32_t bnImportPrefixed(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size);
TB_API std::uint32_t bnExportPrefixed(std::uint8_t* output, std::uint32_t capacity, const BigNum& number);
// The same at a running offset, which moves on by what was read or written. True when something was read and the offset
// is not beyond size (it may equal size); true when the number was written.
[[nodiscard]] TB_API bool bnImportPrefixedAt(BigNum& destination, const std::uint8_t* bytes, std::uint32_t size,
                                             std::uint32_t& offset);
[[nodiscard]] TB_API bool bnExportPrefixedAt(std::uint8_t* output, std::uint32_t capacity, std::uint32_t& offset,
                                             const BigNum& number);
// ceil(bit length / 8) + 2.
TB_API std::uint32_t bnPrefixedSize(const BigNum& number);
// bit length / 8 + 1: content octets of a DER INTEGER, with room for a leading zero octet.
TB_API std::uint32_t bnDerLength(const BigNum& number);

// ---- bits and order

// Index of the highest non-zero limb; 0 when all are zero or there are none.
TB_API std::int32_t bnTopLimb(const BigNum& number);
// Significant bits; 0 for zero. Stops at 2^32 - 1.
TB_API std::uint32_t bnBitLength(const BigNum& number);
// 1 or 0; 0 beyond the limbs.
TB_API int bnTestBit(const BigNum& number, std::uint32_t bit);
// An owned number grows to hold the bit.
[[nodiscard]] TB_API Status bnSetBit(BigNum& number, std::uint32_t bit);
TB_API void bnClearBit(BigNum& number, std::uint32_t bit);
// 0 when equal; the difference of the top-limb indices when they differ (any positive or negative value); else +1 or
// -1.
TB_API std::int32_t bnCompare(const BigNum& a, const BigNum& b);
// -1, 0 or +1.
TB_API int bnCompareWord(const BigNum& a, std::uint64_t value);

// ---- arithmetic

[[nodiscard]] TB_API Status bnAdd(BigNum& sum, const BigNum& a, const BigNum& b);
[[nodiscard]] TB_API Status bnAddWord(BigNum& sum, const BigNum& a, std::uint64_t value);
// BN_E_RANGE when a is less than what is taken from it.
[[nodiscard]] TB_API Status bnSubtract(BigNum& difference, const BigNum& a, const BigNum& b);
[[nodiscard]] TB_API Status bnSubtractWord(BigNum& difference, const BigNum& a, std::uint64_t value);
// The full product. The same record given twice is squared by a faster routine.
[[nodiscard]] TB_API Status bnMultiply(BigNum& product, const BigNum& a, const BigNum& b);
[[nodiscard]] TB_API Status bnShiftLeft(BigNum& destination, const BigNum& source, std::uint32_t bits);
[[nodiscard]] TB_API Status bnShiftRight(BigNum& destination, const BigNum& source, std::uint32_t bits);
// a = quotient * n + remainder. A null quotient means that only the remainder is wanted. BN_E_RANGE when n is 0.
[[nodiscard]] TB_API Status bnDivide(BigNum* quotient, BigNum& remainder, const BigNum& a, const BigNum& n);
[[nodiscard]] TB_API Status bnModulo(BigNum& remainder, const BigNum& a, const BigNum& n);

// size bytes of the runtime's rand(), loaded big-endian. For primality witnesses only, never for keys.
[[nodiscard]] TB_API Status bnRandom(BigNum& destination, std::uint32_t size);

} // namespace toolbelt
