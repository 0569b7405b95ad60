#include "dll/c_support.h"

#include "crypto/encoding/armour.h"

namespace toolbelt::flat {

tb_status claim(const void* output, std::uint32_t* size, std::uint32_t needed)
{
    if (size == nullptr || (output == nullptr && *size != 0)) return TB_E_ARGUMENT;
    const std::uint32_t capacity = *size;
    *size = needed;
    return capacity < needed ? TB_E_BUFFER : TB_OK;
}

tb_status openHash(HashOwner& hash, std::int32_t id)
{
    cHashAlg* made = nullptr;
    if (createHash(&made, id) != CRYPT_OK) return TB_E_ALGORITHM;
    hash.reset(made);
    return made ? TB_OK : TB_E_MEMORY;
}

tb_status digestOf(std::uint8_t (&digest)[MAX_DIGEST], std::uint32_t& length, std::int32_t id, const void* data,
                   std::uint32_t size)
{
    HashOwner hash(nullptr, destroyHash);
    if (const tb_status status = openHash(hash, id)) return status;
    length = hashSize(hash.get());
    const Status status = hashBuffer(hash.get(), digest, static_cast<const std::uint8_t*>(data), size);
    return readerStatus(status, TB_E_FAILED);
}

tb_status DerBytes::read(const void* bytes, std::uint32_t size, const char* beginLine, const char* endLine,
                         tb_status malformed)
{
    if (bytes == nullptr) return TB_E_ARGUMENT;
    const char* text = static_cast<const char*>(bytes);
    const char* body = nullptr;
    std::uint32_t length = 0;
    // A DER document may hold a PEM text, which is not what its reader goes on to use: what begins like DER is DER.
    const bool isDer = size != 0 && static_cast<const std::uint8_t*>(bytes)[0] == DER_CONSTRUCTED_SEQUENCE;
    if (isDer || findArmourBody(&body, &length, text, size, beginLine, endLine) != STATUS_OK) {
        bytes_ = static_cast<const std::uint8_t*>(bytes);
        size_ = size;
        return TB_OK;
    }
    return decodeArmoured(decoded_, text, size, beginLine, endLine) ? TB_OK : malformed;
}

tb_status readerStatus(Status status, tb_status otherwise)
{
    switch (status) {
    case STATUS_OK:
        return TB_OK;
    case PKA_E_MEMORY:
    case PKA_E_OBJECT:
    case DER_E_MEMORY:
        return TB_E_MEMORY;
    case DER_E_UNKNOWN_ALGORITHM:
    case CRYPT_E_UNKNOWN_ALGORITHM:
    case KEY_E_NO_READER:
        return TB_E_ALGORITHM;
    default:
        return otherwise;
    }
}

tb_status publicKeyOf(KeyOwner& key, const SubjectPublicKeyInfo& info)
{
    cPKA* made = nullptr;
    const Status status = readPublicKeyFromInfo(&made, info);
    key.reset(made);
    return readerStatus(status, TB_E_KEY);
}

} // namespace toolbelt::flat
