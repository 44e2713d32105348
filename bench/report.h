#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// What the benchmarks share: one JSON line a measure, and measuring against a minimum.

namespace bench {

/// Prints one measure. The environment variable BENCH_SUFFIX is appended to `area`, so that one
/// program can be reported under several circumstances.
inline void report(const std::string& area, const std::string& impl, double value,
                   const std::string& unit) {
    const char* suffix = std::getenv("BENCH_SUFFIX");
    const std::string name = area + (suffix ? suffix : "");
    std::printf("{\"area\": \"%s\", \"impl\": \"%s\", \"value\": %.6g, \"unit\": \"%s\"}\n",
                name.c_str(), impl.c_str(), value, unit.c_str());
    std::fflush(stdout);
}

/// The middle value of a list that is not empty.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// How long `work` takes, in seconds.
template <typename Work>
double seconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The medians of two measures, and of their ratio pair by pair.
struct Comparison {
    double tarnel;
    double minimum;
    double ratio; // tarnel / minimum
};

/// Measures two things in turn, `pairs` times, so that what slows the machine down for a while
/// slows down both; each goes first in every other pair. A measure is a call that returns its
/// value; one of each is thrown away to warm up.
template <typename Tarnel, typename Minimum>
Comparison compare(Tarnel tarnel, Minimum minimum, int pairs = 15) {
    tarnel();
    minimum();
    std::vector<double> ours, theirs, ratios;
    for (int pair = 0; pair < pairs; ++pair) {
        const bool ours_first = pair % 2 == 0;
        const double first = ours_first ? tarnel() : minimum();
        const double second = ours_first ? minimum() : tarnel();
        ours.push_back(ours_first ? first : second);
        theirs.push_back(ours_first ? second : first);
        ratios.push_back(ours.back() / theirs.back());
    }
    return {median(ours), median(theirs), median(ratios)};
}

/// Prints the three lines of a comparison.
inline void report(const std::string& area, const Comparison& comparison, const std::string& unit) {
    report(area, "tarnel", comparison.tarnel, unit);
    report(area, "minimum", comparison.minimum, unit);
    report(area + ".ratio", "tarnel", comparison.ratio, "ratio");
}

} // namespace bench
