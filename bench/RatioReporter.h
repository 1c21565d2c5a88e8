#pragma once

// Runs the registered benchmarks and prints, after Google Benchmark's own table, the ratio of
// each measured benchmark to its baseline.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                // GetAdjustedRealTime() is in the benchmark's own time unit.
                nanoseconds[run.benchmark_name()] = run.GetAdjustedRealTime() * 1e9
                    / benchmark::GetTimeUnitMultiplier(run.time_unit);
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // Prints "measured / baseline = ratio (goal)" for each pair; returns false when a goal
    // is missed.
    bool printRatios(const std::vector<std::pair<std::string, std::string>>& pairs,
                     const std::vector<double>& goals)
    {
        bool met = true;
        for (size_t i = 0; i < pairs.size(); ++i) {
            if (nanoseconds.count(pairs[i].first) == 0 || nanoseconds.count(pairs[i].second) == 0) {
                continue; // filtered out
            }
            const double ratio = nanoseconds[pairs[i].first] / nanoseconds[pairs[i].second];
            const double goal = goals[i];
            std::printf("RATIO %s / %s = %.2f", pairs[i].first.c_str(), pairs[i].second.c_str(),
                        ratio);
            if (goal > 0) {
                std::printf(" (goal: at most %.2f, %s)", goal, ratio <= goal ? "met" : "MISSED");
                met = met && ratio <= goal;
            }
            std::printf("\n");
        }
        return met;
    }

    /// Real time per iteration of a benchmark run, 0 when it did not run.
    double nanosecondsOf(const std::string& name) const
    {
        const auto found = nanoseconds.find(name);
        return found == nanoseconds.end() ? 0 : found->second;
    }

private:
    std::map<std::string, double> nanoseconds;
};
