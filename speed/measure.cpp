#include "speed/measure.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace toolbelt::speed {
namespace {

double callsPerSecond(const Call& call, double seconds, bool single)
{
    if (single) seconds = 0;
    const double start = now();
    double elapsed = 0;
    std::size_t calls = 0;
    for (std::size_t batch = 1; calls == 0 || elapsed < seconds; batch *= 2) {
        for (std::size_t i = 0; i < batch; ++i) call();
        calls += batch;
        elapsed = now() - start;
    }
    return static_cast<double>(calls) / std::max(elapsed, 1e-9);
}

} // namespace

double now()
{
#if defined(_WIN32)
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
#else
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
#endif
}

std::vector<Figure> measure(const std::vector<Job>& jobs, const Settings& settings,
                            const std::function<void(unsigned, const Job&)>& heard)
{
    std::vector<Call> calls;
    for (const Job& job : jobs) {
        calls.push_back(job.ready());
        if (!job.single) calls.back()(); // fills the caches, and fails early if it does
    }
    std::vector<std::vector<double>> rates(jobs.size());
    for (unsigned round = 0; round < settings.rounds; ++round)
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            const std::size_t turn = (i + round) % jobs.size(); // another one begins each round
            if (heard) heard(round, jobs[turn]);
            rates[turn].push_back(callsPerSecond(calls[turn], settings.seconds, jobs[turn].single) * jobs[turn].amount);
        }
    std::vector<Figure> figures;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        std::sort(rates[i].begin(), rates[i].end());
        figures.push_back(
            {jobs[i].name, jobs[i].unit, rates[i][rates[i].size() / 2], rates[i].front(), rates[i].back()});
    }
    return figures;
}

} // namespace toolbelt::speed
