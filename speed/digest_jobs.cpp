// Digests over one buffer: long messages, and short ones, where the cost of a call counts.
#include "crypto/hash/hash.h"
#include "speed/inputs.h"
#include "speed/job.h"

namespace toolbelt::speed {
namespace {

Call digestCall(const HashRow& row, std::uint32_t size)
{
    const std::shared_ptr<cHashAlg> hash(row.create(), destroyHash);
    check(hash != nullptr, "no memory for a digest");
    return [hash, message = pattern(size), digest = Bytes(row.size)]() mutable {
        check(hashBuffer(hash.get(), digest.data(), message.data(), size32(message)), "a digest failed");
    };
}

} // namespace

void addDigestJobs(std::vector<Job>& jobs)
{
    for (const auto& [group, size] : {std::pair("digest-16K/", 16384u), std::pair("digest-64B/", 64u)})
        for (const std::int32_t id : offeredHashes)
            for (const HashRow& row : hashRows)
                if (row.id == id)
                    jobs.push_back({group + std::string(row.name), size / 1e6, "MB/s",
                                    [&row, size = size] { return digestCall(row, size); }});
}

} // namespace toolbelt::speed
