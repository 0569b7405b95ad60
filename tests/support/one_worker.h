// A fixture for searches of primes on one thread. With more, others may report, or find, while one ends the search.
#pragma once

#include <gtest/gtest.h>

#include "crypto/bignum/prime_search.h"

namespace toolbelt::test {

class OneWorker : public testing::Test
{
protected:
    OneWorker() { detail::fixedWorkers = 1; }
    ~OneWorker() override { detail::fixedWorkers = 0; }
};

} // namespace toolbelt::test
