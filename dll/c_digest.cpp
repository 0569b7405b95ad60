// The flat surface: version, statuses and digests. A tb_hash is a cHashAlg.
#include "dll/c_support.h"

using namespace toolbelt;
using namespace toolbelt::flat;

namespace {

cHashAlg* objectOf(tb_hash* hash)
{
    return reinterpret_cast<cHashAlg*>(hash);
}

} // namespace

const char* tb_version(void) noexcept
{
    return TOOLBELT_VERSION;
}

const char* tb_status_text(tb_status status) noexcept
{
    switch (status) {
    case TB_OK:
        return "done";
    case TB_E_BUFFER:
        return "the output is too small";
    case TB_E_MEMORY:
        return "memory ran out";
    case TB_E_ARGUMENT:
        return "an argument that the operation cannot take";
    case TB_E_ALGORITHM:
        return "an algorithm that is not offered";
    case TB_E_KEY:
        return "not a key of this kind";
    case TB_E_CERTIFICATE:
        return "not a certificate";
    case TB_E_ISSUER:
        return "issued by somebody else, or by no authority";
    case TB_E_SIGNATURE:
        return "the signature is wrong";
    case TB_E_NOT_YET_VALID:
        return "not yet valid";
    case TB_E_EXPIRED:
        return "expired";
    case TB_E_URL:
        return "not an http or https URL";
    case TB_E_NOT_SENT:
        return "the document could not be sent";
    case TB_E_ANSWER:
        return "no whole answer";
    default:
        return "failed";
    }
}

tb_status tb_digest(int32_t id, const void* data, uint32_t length, uint8_t* output, uint32_t* size) noexcept
{
    HashOwner hash(nullptr, destroyHash);
    if (const tb_status status = openHash(hash, id)) return status;
    if (!isReadable(data, length)) return TB_E_ARGUMENT;
    if (const tb_status status = claim(output, size, hashSize(hash.get()))) return status;
    return readerStatus(hashBuffer(hash.get(), output, static_cast<const std::uint8_t*>(data), length), TB_E_FAILED);
}

tb_status tb_hash_open(int32_t id, tb_hash** hash) noexcept
{
    if (hash == nullptr) return TB_E_ARGUMENT;
    HashOwner made(nullptr, destroyHash);
    if (const tb_status status = openHash(made, id)) return status;
    *hash = reinterpret_cast<tb_hash*>(made.release());
    return TB_OK;
}

tb_status tb_hash_update(tb_hash* hash, const void* data, uint32_t length) noexcept
{
    if (hash == nullptr || !isReadable(data, length)) return TB_E_ARGUMENT;
    return readerStatus(objectOf(hash)->update(static_cast<const std::uint8_t*>(data), length), TB_E_FAILED);
}

tb_status tb_hash_finish(tb_hash* hash, uint8_t* output, uint32_t* size) noexcept
{
    if (hash == nullptr) return TB_E_ARGUMENT;
    if (const tb_status status = claim(output, size, hashSize(objectOf(hash)))) return status;
    if (const Status status = objectOf(hash)->final(output)) return readerStatus(status, TB_E_FAILED);
    return readerStatus(objectOf(hash)->reset(), TB_E_FAILED);
}

void tb_hash_close(tb_hash* hash) noexcept
{
    destroyHash(objectOf(hash));
}
