// speed: the benchmark jobs in the product.
#include "cli/command.h"
#include "cli/results.h"
#include "speed/measure.h"
#include "speed/tiers.h"

namespace toolbelt::cli {
namespace {

struct Options
{
    std::vector<std::string> jobs;
    double seconds = 0.1;
    std::string tier = "all";
};

// Four digits that say something: "12345 MB/s", "1.234 ops/s".
std::string figureText(const speed::Figure& figure)
{
    char text[32];
    const int decimals = figure.median >= 1000 ? 0 : figure.median >= 100 ? 1 : figure.median >= 10 ? 2 : 3;
    std::snprintf(text, sizeof text, "%.*f", decimals, figure.median);
    return text;
}

ExitCode run(const Options& options)
{
    if (!speed::useTier(options.tier))
        throw UsageError("no such tier on this processor: " + options.tier + " (there are " + speed::tierNames() + ")");
    std::vector<speed::Job> jobs;
    try {
        jobs = speed::selectJobs(options.jobs);
    } catch (const speed::JobFailure& failure) {
        throw UsageError(failure.what());
    }
    Fact tier{"tier", speed::featuresInUse()};
    printResult("tier: " + tier.value, tier);
    StatusLine line;
    for (const speed::Job& job : jobs) { // one by one, so that each figure shows as soon as it is there
        const auto tell = [&](unsigned, const speed::Job& now) { line.show(now.name); };
        speed::Figure figure;
        try {
            figure = speed::measure({job}, {3, options.seconds / 3}, tell).front();
        } catch (const speed::JobFailure& failure) {
            throw Failure(job.name, failure.what(), EXIT_SYSTEM);
        }
        line.clear();
        const std::string text = figureText(figure);
        printResult(job.name + std::string(job.name.size() < 28 ? 28 - job.name.size() : 1, ' ') +
                        std::string(text.size() < 10 ? 10 - text.size() : 0, ' ') + text + " " + job.unit,
                    {"job", job.name, {{"figure", text}, {"unit", job.unit}}});
        flushOutput();
    }
    return EXIT_DONE;
}

} // namespace

Action prepareSpeed(Parser& parser)
{
    const auto options = std::make_shared<Options>();
    parser.option("JOB", options->jobs, "only jobs whose names contain one of these texts").value("");
    parser.option("--seconds", options->seconds, "time for each job, in three rounds of which the median counts; 0.1")
        .value("S")
        .check([](const std::string& text) {
            const double seconds = std::strtod(text.c_str(), nullptr);
            return seconds > 0 && seconds <= 3600 ? std::string() : "must be above 0 and at most 3600: " + text;
        });
    parser.option("--tier", options->tier, "code path: " + speed::tierNames() + "; TOOLBELT_TIER, or all")
        .value("NAME")
        .environment("TOOLBELT_TIER");
    parser.footer("Example: toolbelt speed rsa digest-16K/SHA-256 --seconds 1");
    return [options] { return run(*options); };
}

} // namespace toolbelt::cli
