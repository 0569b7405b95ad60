// Random bytes from the system's generator: what keys and per-operation secrets are made of.
#pragma once

#include "cli/files.h"
#include "crypto/pka/random_pool.h"

namespace toolbelt::cli {

// Failure (EXIT_SYSTEM) when the system has no generator.
Bytes systemRandom(std::size_t size);

// The library's random pool, filled for as long as the object lives.
class FilledPool
{
public:
    explicit FilledPool(std::size_t size) : bytes_(systemRandom(size)) { setRandomPool(bytes_.data(), size32(bytes_)); }
    ~FilledPool() { resetRandomPool(); }
    FilledPool(const FilledPool&) = delete;
    FilledPool& operator=(const FilledPool&) = delete;

private:
    Bytes bytes_;
};

} // namespace toolbelt::cli
