#include <algorithm>

#include "speed/job.h"

namespace toolbelt::speed {

std::vector<Job> selectJobs(const std::vector<std::string>& texts)
{
    std::vector<Job> jobs;
    for (const auto add : {addDigestJobs, addCipherJobs, addKeyJobs, addNumberJobs, addTextJobs}) add(jobs);
    const auto names = [](const std::string& text) {
        return [&text](const Job& job) { return job.name.find(text) != std::string::npos; };
    };
    for (const std::string& text : texts)
        if (std::none_of(jobs.begin(), jobs.end(), names(text))) throw JobFailure("no job's name contains " + text);
    if (!texts.empty())
        std::erase_if(jobs, [&](const Job& job) {
            return std::none_of(texts.begin(), texts.end(), [&](const std::string& text) { return names(text)(job); });
        });
    return jobs;
}

} // namespace toolbelt::speed
