// Block ciphers: the abstract class with its chaining modes, and the registry.
//
//   const CipherRow* row;
//   if (findCipher(&row, 9) == CRYPT_OK) {
//       cSymAlg* cipher = row->create(key, 32); // null: refused key or no memory
//       status = cipher->modeEncrypt(cipher, iv, in, out, length);
//       delete cipher;
//   }
//
// An object is used by one thread at a time; the registry is read-only. All lengths are in bytes; in and out are the
// same buffer or do not overlap. Timing depends on the data wherever a cipher looks tables up.
#pragma once

#include <cstdint>

#include "crypto/base/crypt_status.h"
#include "crypto/base/export.h"
#include "crypto/base/heap.h"

namespace toolbelt {

inline constexpr Status CRYPT_E_NO_SIZES = 24;   // getSizes answered 0
inline constexpr Status CRYPT_E_NO_MEMORY = 25;  // the work area or the CFB register could not be allocated
inline constexpr Status CRYPT_E_BAD_LENGTH = 26; // not a number of whole blocks, negative, or CBC without blocks

inline constexpr std::uint32_t SYM_MODE_CBC = 0;
inline constexpr std::uint32_t SYM_MODE_CBC_WORDSWAP =
    1;                                           // CBC with each 32-bit word byte-reversed around the transform
inline constexpr std::uint32_t SYM_MODE_CFB = 2; // full-block feedback, any length

struct ChainedBlocks;

// cSymAlg: a keyed block cipher. A cipher supplies the three operations; the chaining is written once over them.
class TB_API cSymAlg : public HeapObject
{
public:
    // iv is one block; null counts as zeros. No state is carried from one call to the next: to go on with a stream,
    // pass the last ciphertext block as the next iv (CFB: after a multiple of the block size). Nothing is promised
    // about out when the status is not 0; the object stays usable.
    using ModeFunction = Status (*)(cSymAlg* cipher, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                                    std::int32_t length);

    virtual ~cSymAlg();
    // Block size and key size in bytes, the same as long as the object lives; the answer is 0 when they are not known
    // (every cipher of the registry answers 1). A block size of 0 means that there are no blocks: CBC refuses, CFB
    // copies.
    virtual std::uint32_t getSizes(std::uint32_t* blockSize, std::uint32_t* keySize) const = 0;
    // Electronic codebook over any number of whole blocks; CRYPT_E_BAD_LENGTH for any other length. The chaining modes
    // pass as many blocks at once as the mode allows, so this is the place for a transform of many blocks side by side.
    virtual Status encryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) = 0;
    virtual Status decryptBlocks(const std::uint8_t* in, std::uint8_t* out, std::int32_t length) = 0;

    // Selects the chaining mode, at any time; an unknown number selects CBC, the mode of a new object.
    void setMode(std::uint32_t mode) noexcept;
    // Word order of a 64-bit-block cipher that works on two 32-bit halves. Blowfish is the one that reads it; a new
    // object has false, the order of its standard.
    void setLittleEndianBlocks(bool littleEndian) noexcept { littleEndianBlocks = littleEndian; }

    cSymAlg(const cSymAlg&) = delete;
    cSymAlg& operator=(const cSymAlg&) = delete;

protected:
    cSymAlg() noexcept;

    // The order of the fields down to littleEndianBlocks is fixed. The register and its copy are one block each,
    // allocated on the first use of CFB.
    std::uint8_t* cfbRegister = nullptr;
    std::uint8_t* cfbPrevious = nullptr; // the register as it was before its last encryption
    std::uint32_t cfbPosition = 0;       // next byte of the register to use

public:
    // The chaining entry points; setMode assigns both.
    ModeFunction modeEncrypt;
    ModeFunction modeDecrypt;

protected:
    bool littleEndianBlocks = false;

    // Not one of the fixed fields, and so behind them all: set by a cipher that does CBC and CFB itself.
    const ChainedBlocks* chainedBlocks_ = nullptr;

private:
    // How many bytes to wipe in the register and its copy.
    std::uint32_t cfbSize_ = 0;

    template <bool WORDSWAP>
    static Status cbcEncrypt(cSymAlg*, const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::int32_t);
    template <bool WORDSWAP>
    static Status cbcDecrypt(cSymAlg*, const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::int32_t);
    static Status cfbEncrypt(cSymAlg*, const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::int32_t);
    static Status cfbDecrypt(cSymAlg*, const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::int32_t);
    Status cfbRestart(const std::uint8_t* iv, std::uint32_t blockSize);
    Status cfbStart(const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out, std::int32_t length,
                    std::uint32_t* blockSize);
    template <bool ENCRYPT>
    Status cfbBlock(const std::uint8_t* in, std::uint8_t* out, std::uint32_t size, std::uint32_t blockSize);
};

// One cipher on offer. Ids 1 to 13 are the numbers of RFC 4880 and RFC 5581; the others are the engine's own.
struct CipherRow
{
    std::int32_t id;
    // A new keyed object in CBC mode, the caller's to delete; null when the key is refused or memory has run out.
    cSymAlg* (*create)(const std::uint8_t* key, std::uint32_t keyLength);
    // The default key length; the largest one goes to *maxOut when that is not null (id 0 leaves it alone).
    std::uint32_t (*keySize)(std::uint32_t* maxOut);
    std::uint32_t (*blockSize)();
};

inline constexpr std::uint32_t CIPHER_ROW_COUNT = 25;
inline constexpr std::uint32_t OFFERED_CIPHER_COUNT = 15;
extern TB_API const CipherRow cipherRows[CIPHER_ROW_COUNT];
// A name for each row, in the order of the rows; no two are equal.
extern TB_API const char* const cipherNames[CIPHER_ROW_COUNT];
// The ids to offer to a user, in the order to offer them.
extern TB_API const std::int32_t offeredCiphers[OFFERED_CIPHER_COUNT];

// Stores the row of an id in *row. An id without a row gives CRYPT_E_UNKNOWN_ALGORITHM and leaves *row alone.
[[nodiscard]] TB_API Status findCipher(const CipherRow** row, std::int32_t id) noexcept;

} // namespace toolbelt
