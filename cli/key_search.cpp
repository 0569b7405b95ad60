#include "cli/key_search.h"

#include <cstring>

namespace toolbelt::cli {
namespace {

constexpr Status STOPPED = 0x7FFFFFFF; // not a status of the library

} // namespace

KeySearch::KeySearch(std::uint32_t bits, std::function<void()> done)
{
    thread_ = std::thread([this, bits, done = std::move(done)] {
        try {
            GenerateOptions options;
            options.bits = bits;
            options.safePrimes = true; // what takes long enough to be watched
            delete findKindByOption("rsa")->generate(options, *this);
        } catch (...) {
            if (!stopped_) failure_ = std::current_exception();
        }
        done();
    });
}

KeySearch::~KeySearch()
{
    stopped_ = true;
    thread_.join();
}

void KeySearch::rethrowFailure() const
{
    if (failure_) std::rethrow_exception(failure_);
}

Status KeySearch::report(const char* message, std::uint32_t, std::int32_t)
{
    if (message && std::strncmp(message, "Finds prime", 11) == 0) ++phase_;
    if (!message) ++tried_;
    return stopped_ ? STOPPED : STATUS_OK;
}

} // namespace toolbelt::cli
