// The process-wide table of small primes: 2 and the odd numbers after it that pass one Fermat round. A composite number
// may slip in when its witness is unlucky; trial division by it then says nothing that its factors did not say.
#include "crypto/base/cpu.h"
#include "crypto/base/heap.h"
#include "crypto/bignum/limbs_word.h"
#include "crypto/bignum/prime_table_batch.h"
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

// A witness in 1 to n - 1, as bnFermatRound draws it.
std::uint32_t drawWitnessBelow(std::uint32_t n) noexcept
{
    for (;;) {
        const std::uint64_t drawn = detail::drawWitness();
        if (const std::uint32_t witness = limbs::remainderByWord(&drawn, 1, n)) return witness;
    }
}

// One Fermat round on an odd n above 1, in words: the answer of bnFermatRound.
bool passesFermatRound(std::uint32_t n, std::uint32_t witness) noexcept
{
    std::uint32_t power = 1;
    for (std::uint32_t bit = 1u << 31; bit != 0; bit >>= 1) {
        if (power != 1) power = limbs::multiplyModWord(power, power, n);
        if ((n - 1) & bit) power = limbs::multiplyModWord(power, witness, n);
    }
    return power == 1;
}

// Rounds on the odd numbers from first on, one of them or a batch: a bit for each that passes.
std::uint32_t fermatRounds(std::uint32_t first, std::uint32_t count) noexcept
{
    std::uint32_t witnesses[fermatBatch];
    for (std::uint32_t i = 0; i < count; ++i) witnesses[i] = drawWitnessBelow(first + 2 * i);
    if (count == 1) return passesFermatRound(first, witnesses[0]);
    return cpu::has(cpu::AVX2) ? fermatRoundsAvx2(first, witnesses) : fermatRoundsSse2(first, witnesses);
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
    for (std::uint32_t candidate = 3; filled < size;) {
        // No witness is drawn for a number that the table does not reach: a batch fits when it could pass whole. Who
        // hears of each prime may stop, or draw numbers himself, before the next.
        const bool batch = !sink && cpu::has(cpu::SSE2) && size - filled >= fermatBatch && candidate < fermatBatchLimit;
        const std::uint32_t together = batch ? fermatBatch : 1;
        const std::uint32_t passed = fermatRounds(candidate, together);
        for (std::uint32_t i = 0; i < together; ++i, candidate += 2) {
            if ((passed >> i & 1) == 0) continue;
            table.entries[filled++] = candidate;
            if (!sink) continue;
            const Status status = sink->report(nullptr, 0, static_cast<std::int32_t>(filled));
            if (status != STATUS_OK) return status;
        }
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
