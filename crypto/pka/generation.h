// What the key generators share: telling a phase, and the table of small primes for the time of the work.
#pragma once

#include <cstdint>

#include "crypto/bignum/primes.h"

namespace toolbelt {

inline Status reportPhase(ProgressSink* sink, const char* message, std::uint32_t bits)
{
    return sink ? sink->report(message, 0, static_cast<std::int32_t>(bits)) : STATUS_OK;
}

// The table for as long as primes are searched, unless somebody has built one already, whose it stays.
class GenerationTable
{
public:
    GenerationTable() = default;
    GenerationTable(const GenerationTable&) = delete;
    GenerationTable& operator=(const GenerationTable&) = delete;
    ~GenerationTable()
    {
        if (built_) bnFreePrimeTable();
    }

    [[nodiscard]] Status ensure(std::uint32_t bits, ProgressSink* sink)
    {
        if (bnPrimeTable(nullptr)) return STATUS_OK;
        if (const Status status = reportPhase(sink, "Generates prime table\n", bits)) return status;
        const Status status = bnBuildPrimeTable(bits, sink);
        built_ = status == STATUS_OK;
        return status;
    }

private:
    bool built_ = false;
};

} // namespace toolbelt
