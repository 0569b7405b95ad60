// A sink that remembers what it hears, and may stop the work.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "crypto/bignum/primes.h"

namespace toolbelt::test {

struct RecordingSink : ProgressSink
{
    static constexpr Status STOP = 4711;
    std::vector<std::string> phases; // texts and values
    std::vector<std::int32_t> steps; // of all phases
    std::vector<std::int32_t> ends;  // the last step of each phase
    std::size_t stopAt = 0;          // the report that is answered with STOP
    std::function<void()> atEach;    // called with every report
    std::size_t reports() const { return phases.size() + steps.size(); }

    Status report(const char* message, std::uint32_t zero, std::int32_t value) override
    {
        if (message) {
            phases.push_back(message + std::to_string(value));
            ends.push_back(0);
        } else {
            steps.push_back(zero == 0 ? value : -99);
            if (!ends.empty()) ends.back() = value;
        }
        if (atEach) atEach();
        return reports() == stopAt ? STOP : STATUS_OK;
    }
};

} // namespace toolbelt::test
