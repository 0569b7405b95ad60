// What the functions of toolbelt_c.h share: bytes that may be PEM, keys and certificates from them, and their statuses.
#pragma once

#include <memory>

#include "crypto/encoding/byte_buffer.h"
#include "crypto/encoding/x509.h"
#include "crypto/hash/hash.h"
#include "crypto/pka/pka.h"
#include "include/toolbelt/toolbelt_c.h"

namespace toolbelt::flat {

using HashOwner = std::unique_ptr<cHashAlg, decltype(&destroyHash)>;
using KeyOwner = std::unique_ptr<cPKA>;

// True when size bytes may be read.
inline bool isReadable(const void* data, std::uint32_t size)
{
    return data != nullptr || size == 0;
}
// Whether the capacity suffices; *size becomes the length that is needed. TB_E_ARGUMENT without a size, or when there
// is to be an output and none was given.
tb_status claim(const void* output, std::uint32_t* size, std::uint32_t needed);

// A digest object; TB_E_ALGORITHM, TB_E_MEMORY.
tb_status openHash(HashOwner& hash, std::int32_t id);
// The digest of the bytes; length is the digest's.
constexpr std::uint32_t MAX_DIGEST = 64;
tb_status digestOf(std::uint8_t (&digest)[MAX_DIGEST], std::uint32_t& length, std::int32_t id, const void* data,
                   std::uint32_t size);

// DER: the caller's own bytes, or what a PEM text holds between the lines, which is wiped with this object.
class DerBytes
{
public:
    tb_status read(const void* bytes, std::uint32_t size, const char* beginLine, const char* endLine,
                   tb_status malformed);
    const std::uint8_t* data() const { return decoded_.length() ? decoded_.data() : bytes_; }
    std::uint32_t size() const { return decoded_.length() ? decoded_.length() : size_; }

private:
    cByteBuffer decoded_;
    const std::uint8_t* bytes_ = nullptr;
    std::uint32_t size_ = 0;
};

// What the status of a reader says of a key; `otherwise` for one that is none of memory and of algorithms.
tb_status readerStatus(Status status, tb_status otherwise);
// The key object of a SubjectPublicKeyInfo.
tb_status publicKeyOf(KeyOwner& key, const SubjectPublicKeyInfo& info);

} // namespace toolbelt::flat
