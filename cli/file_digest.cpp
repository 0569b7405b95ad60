#include "cli/file_digest.h"

#include <memory>

#include "cli/errors.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

// Keccak-512 of the engine takes every update for a message of its own unless its length is a multiple of 72. Whole
// pieces of such a length, then the rest, give the digest of the file; the other digests do not mind.
constexpr std::uint32_t PIECE = 72 * 8192;

using Hash = std::unique_ptr<cHashAlg, decltype(&destroyHash)>;

} // namespace

const HashRow& findHash(const std::string& idOrName)
{
    const std::optional<std::uint32_t> id = parseNumber(idOrName);
    for (const HashRow& row : hashRows)
        if (id ? static_cast<std::uint32_t>(row.id) == *id : plainName(row.name) == plainName(idOrName)) return row;
    throw UsageError("unknown digest: " + idOrName + " (see toolbelt digest --list)");
}

Bytes digestOfFile(const HashRow& row, const std::string& file)
{
    cHashAlg* created = nullptr;
    check(file, createHash(&created, row.id));
    if (!created) throw std::bad_alloc();
    const Hash hash(created, destroyHash);
    InputFile input(file);
    Bytes piece(PIECE);
    Progress progress(file, input.size());
    std::uint64_t done = 0;
    for (std::uint32_t size = PIECE; size == PIECE;) {
        size = input.read(piece.data(), PIECE);
        if (size == 0 && done != 0) break; // an empty update belongs to an empty file alone
        check(file, hash->update(piece.data(), size));
        progress.show(done += size);
    }
    Bytes digest(hashSize(hash.get()));
    check(file, hash->final(digest.data()));
    return digest;
}

} // namespace toolbelt::cli
