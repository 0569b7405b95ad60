// A key generated beside the user interface: started, watched and stopped from another thread.
#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <thread>

#include "cli/key_kinds.h"

namespace toolbelt::cli {

class KeySearch : private ProgressSink
{
public:
    // Starts at once. done is called when the search has ended, whichever way, on the search's own thread.
    KeySearch(std::uint32_t bits, std::function<void()> done);
    // Stops the search and waits for its end.
    ~KeySearch();
    KeySearch(const KeySearch&) = delete;
    KeySearch& operator=(const KeySearch&) = delete;

    std::uint32_t phase() const { return phase_; } // 0: preparing, 1: the first prime, 2: the second one
    std::uint32_t tried() const { return tried_; } // candidates, in all
    // Once done was called: throws what the search failed by. When it returns a key was found.
    void rethrowFailure() const;

private:
    Status report(const char* message, std::uint32_t zero, std::int32_t value) override;

    std::atomic<std::uint32_t> phase_ = 0, tried_ = 0;
    std::atomic<bool> stopped_ = false;
    std::exception_ptr failure_; // the search's own until it calls done
    std::thread thread_;
};

} // namespace toolbelt::cli
