// A benchmark of the library's public calls, one piece of work a job. `toolbelt_bench` runs them natively and
// `toolbelt speed` in the product; both print the same names.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "crypto/base/crypt_status.h"

namespace toolbelt::speed {

using Call = std::function<void()>;

struct Job
{
    std::string name;            // "GROUP/WHAT", as "digest-16K/SHA-256"
    double amount;               // what one call does, in units
    const char* unit;            // "MB/s" or "ops/s"
    std::function<Call()> ready; // makes keys and buffers, and the call to time; throws JobFailure
    bool single = false;         // a call that takes so long that one is a measurement
};

struct JobFailure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

inline void check(bool good, const char* what)
{
    if (!good) throw JobFailure(what);
}
inline void check(Status status, const char* what)
{
    check(status == STATUS_OK, what);
}

void addDigestJobs(std::vector<Job>& jobs);
void addCipherJobs(std::vector<Job>& jobs);
void addKeyJobs(std::vector<Job>& jobs);
void addNumberJobs(std::vector<Job>& jobs);
void addTextJobs(std::vector<Job>& jobs);

// Pieces of work at any size, for the picture of cost against size.
Call productCall(std::uint32_t bits);
Call powerCall(std::uint32_t bits);
Call certificateCall(bool verify, std::uint32_t copies); // reads so many in turn
std::uint32_t certificateLength();                       // octets of one

// Every job, or those whose names contain one of the texts. A text that names no job is a JobFailure.
std::vector<Job> selectJobs(const std::vector<std::string>& texts);

} // namespace toolbelt::speed
