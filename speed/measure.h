// Timing jobs: in rounds that take turns, so that whatever else the machine does falls on all of them alike.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "speed/job.h"

namespace toolbelt::speed {

struct Figure
{
    std::string name;
    std::string unit;
    double median = 0, least = 0, most = 0; // in units a second, over the rounds
};

struct Settings
{
    unsigned rounds = 5;
    double seconds = 0.1; // of each job in each round, at least
};

// Makes the calls ready, runs each once, then times them. heard, when it is set, is told before every measurement.
std::vector<Figure> measure(const std::vector<Job>& jobs, const Settings& settings,
                            const std::function<void(unsigned round, const Job& job)>& heard = {});

// Seconds of processor time that this process has used, or of the clock where the system's count is coarse (Windows).
double now();

} // namespace toolbelt::speed
