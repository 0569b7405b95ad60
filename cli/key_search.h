// A key generated beside the user interface: started, watched and stopped from another thread.
#pragma once

#include <atomic>
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
    bool found() const { return found_; }

private:
    Status report(const char* message, std::uint32_t zero, std::int32_t value) override;

    std::atomic<std::uint32_t> phase_ = 0, tried_ = 0;
    std::atomic<bool> found_ = false, stopped_ = false;
    std::thread thread_;
};

} // namespace toolbelt::cli
