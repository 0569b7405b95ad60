// The process-wide table of small primes: 2 and the odd numbers after it that pass one Fermat round. A composite number
// may slip in when its witness is unlucky; trial division by it then says nothing that its factors did not say.
#include "crypto/base/heap.h"
#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/primes.h"
#include "crypto/bignum/witness.h"

namespace toolbelt {
namespace {

// The prime of this index is about 1.3 * 2^30: entries, and sums of a remainder and an offset below 2^31, fit a word.
constexpr std::uint32_t MAX_ENTRIES = 1u << 26;

struct Table
{
    std::uint32_t* entries = nullptr;
    std::uint32_t count = 0;
    bool complete = false; // until then there is no table for anyone but its builder

    void drop() noexcept
    {
        heap::release(entries);
        *this = Table();
    }
};
Table table;

// Drops what was built so far, unless it has become a table.
struct DropUnfinished
{
    ~DropUnfinished()
    {
        if (!table.complete) table.drop();
    }
};

// One Fermat round on an odd n above 1, in words: the same witness and the same answer as bnFermatRound.
bool passesFermatRound(std::uint32_t n) noexcept
{
    std::uint32_t witness;
    do {
        const std::uint64_t drawn = detail::drawWitness();
        witness = limbs::remainderByWord(&drawn, 1, n);
    } while (witness == 0);
    std::uint32_t power = 1;
    for (std::uint32_t bit = 1u << 31; bit != 0; bit >>= 1) {
        if (power != 1) power = limbs::multiplyModWord(power, power, n);
        if ((n - 1) & bit) power = limbs::multiplyModWord(power, witness, n);
    }
    return power == 1;
}

} // namespace

Status bnBuildPrimeTable(std::uint32_t count, ProgressSink* sink)
{
    if (table.entries) return BN_E_RANGE; // one that is being built counts too
    if (count > MAX_ENTRIES / 4) return BN_E_MEMORY;
    const std::uint32_t size = 4 * count;
    table.entries = static_cast<std::uint32_t*>(heap::allocate(size * sizeof(std::uint32_t)));
    if (!table.entries) return BN_E_MEMORY;
    const DropUnfinished guard;

    if (size > 0) table.entries[0] = 2;
    std::uint32_t filled = 1;
    for (std::uint32_t candidate = 3; filled < size; candidate += 2) {
        if (!passesFermatRound(candidate)) continue;
        table.entries[filled++] = candidate;
        if (!sink) continue;
        const Status status = sink->report(nullptr, 0, static_cast<std::int32_t>(filled));
        if (status != STATUS_OK) return status;
    }
    table.count = size;
    table.complete = true;
    return STATUS_OK;
}

Status bnFreePrimeTable()
{
    if (table.complete) table.drop();
    return STATUS_OK;
}

const std::uint32_t* bnPrimeTable(std::uint32_t* count)
{
    if (count) *count = table.count;
    return table.complete ? table.entries : nullptr;
}

} // namespace toolbelt
