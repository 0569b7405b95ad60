#include "bench/plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "speed/tiers.h"

namespace toolbelt::bench {
namespace {

using namespace toolbelt::speed;

constexpr double WIDTH = 820, HEIGHT = 560, LEFT = 80, RIGHT = 150, TOP = 40, BOTTOM = 60;

struct Line
{
    const char* title;
    const char* colour;
    std::vector<double> sizes; // bits, or octets of DER
    std::function<Call(std::uint32_t size)> call;
    std::vector<double> seconds = {};
};

std::vector<double> doubling(double from, double to)
{
    std::vector<double> sizes;
    for (double size = from; size <= to; size *= 2) {
        sizes.push_back(size);
        if (size * 1.5 <= to) sizes.push_back(size * 1.5);
    }
    return sizes;
}

std::vector<Line> lines()
{
    return {{"product, bits", "#1f77b4", doubling(256, 65536), productCall},
            {"power, bits", "#d62728", doubling(256, 8192), powerCall},
            {"certificates, octets", "#2ca02c", doubling(1024, 262144),
             [](std::uint32_t octets) { return certificateCall(false, std::max(1u, octets / certificateLength())); }}};
}

void time(std::vector<Line>& all, const Settings& settings)
{
    std::vector<Job> jobs;
    for (const Line& line : all)
        for (const double size : line.sizes)
            jobs.push_back(
                {line.title, 1, "ops/s", [&line, size] { return line.call(static_cast<std::uint32_t>(size)); }});
    const std::vector<Figure> figures = measure(jobs, settings);
    std::size_t next = 0;
    for (Line& line : all)
        for (std::size_t i = 0; i < line.sizes.size(); ++i) line.seconds.push_back(1 / figures[next++].median);
}

// One axis: decades (or powers of two) between two bounds, mapped to pixels.
struct Axis
{
    double low, high, from, to;
    double operator()(double value) const
    {
        return from + (std::log(value) - std::log(low)) / (std::log(high) - std::log(low)) * (to - from);
    }
};

std::string unitText(double seconds)
{
    std::ostringstream text;
    if (seconds < 0.9e-6)
        text << seconds * 1e9 << " ns";
    else if (seconds < 0.9e-3)
        text << seconds * 1e6 << " us";
    else
        text << seconds * 1e3 << " ms";
    return text.str();
}

} // namespace

std::string plotAgainstSize(const Settings& settings)
{
    std::vector<Line> all = lines();
    time(all, settings);
    double fastest = 1e9, slowest = 0;
    for (const Line& line : all)
        for (const double value : line.seconds) fastest = std::min(fastest, value), slowest = std::max(slowest, value);
    const Axis x{256, 262144, LEFT, WIDTH - RIGHT};
    const Axis y{std::pow(10, std::floor(std::log10(fastest))), std::pow(10, std::ceil(std::log10(slowest))),
                 HEIGHT - BOTTOM, TOP};

    std::ostringstream svg;
    svg << "<svg xmlns='http://www.w3.org/2000/svg' width='" << WIDTH << "' height='" << HEIGHT
        << "' font-family='sans-serif' font-size='12'>\n<rect width='100%' height='100%' fill='white'/>\n"
        << "<text x='" << LEFT << "' y='22' font-size='14'>Time of one call against size (" << featuresInUse()
        << ")</text>\n";
    for (double value = y.low; value <= y.high * 1.01; value *= 10)
        svg << "<path d='M" << x.from << ' ' << y(value) << 'H' << x.to << "' stroke='#ddd'/><text x='" << LEFT - 6
            << "' y='" << y(value) + 4 << "' text-anchor='end'>" << unitText(value) << "</text>\n";
    for (double value = x.low; value <= x.high; value *= 4)
        svg << "<path d='M" << x(value) << ' ' << y.from << 'V' << y.to << "' stroke='#ddd'/><text x='" << x(value)
            << "' y='" << y.from + 18 << "' text-anchor='middle'>" << value << "</text>\n";
    for (const Line& line : all) {
        svg << "<polyline fill='none' stroke='" << line.colour << "' stroke-width='2' points='";
        for (std::size_t i = 0; i < line.sizes.size(); ++i) svg << x(line.sizes[i]) << ',' << y(line.seconds[i]) << ' ';
        svg << "'/><text x='" << x(line.sizes.back()) + 6 << "' y='" << y(line.seconds.back()) + 4 << "' fill='"
            << line.colour << "'>" << line.title << "</text>\n";
    }
    svg << "</svg>\n";
    return svg.str();
}

} // namespace toolbelt::bench
