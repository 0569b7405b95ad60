// toolbelt_bench: every job timed natively, in rounds that take turns; the median round counts.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "bench/plot.h"
#include "speed/measure.h"
#include "speed/tiers.h"

namespace toolbelt::bench {
namespace {

using nlohmann::json;
using namespace toolbelt::speed;

struct Options
{
    std::vector<std::string> jobs;
    Settings settings;
    std::string tier = "all", jsonFile, compareWith, plotFile;
};

json toJson(const std::vector<Figure>& figures)
{
    json document = {{"features", featuresInUse()}, {"jobs", json::object()}};
    for (const Figure& figure : figures)
        document["jobs"][figure.name] = {
            {"median", figure.median}, {"least", figure.least}, {"most", figure.most}, {"unit", figure.unit}};
    return document;
}

void write(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

json read(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path + ": cannot be read");
    return json::parse(file);
}

// With a run before, its figure and how many times as fast this one is.
void print(const Figure& figure, const json* before)
{
    std::printf("%-28s %12.5g %-6s", figure.name.c_str(), figure.median, figure.unit.c_str());
    if (before && before->contains(figure.name)) {
        const double old = (*before)[figure.name].at("median");
        std::printf(" %12.5g %8.2f x", old, figure.median / old);
    }
    std::printf("\n");
}

int run(const Options& options)
{
    if (!useTier(options.tier))
        throw std::runtime_error("no such tier on this processor: " + options.tier + " (there are " + tierNames() +
                                 ")");
    json before;
    if (!options.compareWith.empty()) before = read(options.compareWith).at("jobs");
    std::printf("tier: %s\n", featuresInUse().c_str());
    if (!options.plotFile.empty()) {
        write(options.plotFile, plotAgainstSize(options.settings));
        return 0;
    }
    const bool terminal = isatty(STDERR_FILENO) != 0;
    const std::vector<Figure> figures =
        measure(selectJobs(options.jobs), options.settings, [&](unsigned round, const Job& job) {
            if (terminal)
                std::fprintf(stderr, "\r\x1b[Kround %u of %u: %s", round + 1, options.settings.rounds,
                             job.name.c_str());
        });
    if (terminal) std::fprintf(stderr, "\r\x1b[K");
    for (const Figure& figure : figures) print(figure, before.is_null() ? nullptr : &before);
    if (!options.jsonFile.empty()) write(options.jsonFile, toJson(figures).dump(2) + "\n");
    return 0;
}

int runParsed(int argc, char** argv)
{
    Options options;
    CLI::App app("Times the engine's jobs natively. Figures are medians over the rounds, of processor time.",
                 "./run bench");
    app.add_option("JOB", options.jobs, "only jobs whose names contain one of these texts");
    app.add_option("--rounds", options.settings.rounds, "rounds, in which all jobs take turns")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--seconds", options.settings.seconds, "of each job in each round, at least")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    app.add_option("--tier", options.tier, "code path: " + tierNames())
        ->envname("TOOLBELT_TIER")
        ->capture_default_str();
    app.add_option("--json", options.jsonFile, "write the figures to this file");
    app.add_option("--compare", options.compareWith, "and print them beside those of a file that --json wrote");
    app.add_option("--plot", options.plotFile, "instead, draw cost against size into this SVG file");
    app.footer("Example: ./run bench --tier sse2 --json sse2.json; ./run bench --compare sse2.json");
    CLI11_PARSE(app, argc, argv);
    return run(options);
}

} // namespace
} // namespace toolbelt::bench

int main(int argc, char** argv)
{
    try {
        return toolbelt::bench::runParsed(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "toolbelt_bench: %s\n", error.what());
        return 3;
    }
}
