// What the tests of primes share: a sink that records what it hears, lists of numbers, and the table as a list.
#pragma once

#include <functional>
#include <sstream>
#include <vector>

#include "crypto/bignum/primes.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {

struct RecordingSink : ProgressSink
{
    static constexpr Status STOP = 4711;
    std::vector<std::int32_t> reports;
    std::size_t stopAt = 0;       // the report that is answered with STOP
    std::function<void()> atEach; // called with every report
    bool plain = true;            // no report had a text or a second number

    Status report(const char* message, std::uint32_t zero, std::int32_t value) override
    {
        plain = plain && !message && zero == 0;
        reports.push_back(value);
        if (atEach) atEach();
        return reports.size() == stopAt ? STOP : STATUS_OK;
    }
};

inline std::vector<std::int32_t> numbers(const std::string& text)
{
    std::vector<std::int32_t> result;
    std::istringstream input(text);
    for (std::int32_t number; input >> number;) result.push_back(number);
    return result;
}

inline std::vector<std::int32_t> table()
{
    std::uint32_t count;
    const std::uint32_t* entries = bnPrimeTable(&count);
    EXPECT_EQ(entries != nullptr, count != 0);
    return {entries, entries + count};
}

} // namespace toolbelt::test
