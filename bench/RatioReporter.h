#pragma once

// Runs the registered benchmarks and prints, after Google Benchmark's own table, the ratio of
// each measured benchmark to its baseline, as lines "RATIO <measured> / <baseline> = <ratio>
// (goal: at most <goal>, met|MISSED)", and "GOAL" lines for values with a goal of their own;
// tools/run-benchmarks.sh gathers them into one table.
//
// A benchmark counts with its CPU time, which other programs on the machine hardly change, unless
// it measures real or manual time (waiting threads, whole processes); with repetitions, with the
// median of them.

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
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type != Run::RT_Iteration && !median) {
                continue;
            }
            const std::string name = run.run_name.str();
            if (!median && medians.count(name) != 0) {
                continue;
            }
            const bool wallClock = name.find("real_time") != std::string::npos
                || name.find("manual_time") != std::string::npos;
            // Adjusted times are in the benchmark's own time unit.
            const double time = wallClock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
            nanoseconds[name] = time * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (median) {
                medians[name] = true;
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // Prints one RATIO line for each pair (a goal of 0 means none); false when a goal is missed.
    bool printRatios(const std::vector<std::pair<std::string, std::string>>& pairs,
                     const std::vector<double>& goals)
    {
        bool met = true;
        for (size_t i = 0; i < pairs.size(); ++i) {
            const double measured = nanosecondsOf(pairs[i].first);
            const double baseline = nanosecondsOf(pairs[i].second);
            if (measured > 0 && baseline > 0) {
                met = printRatio(pairs[i].first + " / " + pairs[i].second, measured / baseline,
                                 goals[i])
                    && met;
            }
        }
        return met;
    }

    static bool printRatio(const std::string& name, double ratio, double goal)
    {
        return printLine("RATIO", name, ratio, goal);
    }

    /// A measured value with a goal of its own, as "GOAL <name> = <value> (goal: ...)".
    static bool printGoal(const std::string& name, double value, double goal)
    {
        return printLine("GOAL", name, value, goal);
    }

    /// Time per iteration of a benchmark run, 0 when it did not run.
    double nanosecondsOf(const std::string& name) const
    {
        const auto found = nanoseconds.find(name);
        return found == nanoseconds.end() ? 0 : found->second;
    }

private:
    static bool printLine(const char* kind, const std::string& name, double ratio, double goal)
    {
        std::printf("%s %s = %.2f", kind, name.c_str(), ratio);
        if (goal > 0) {
            std::printf(" (goal: at most %.2f, %s)", goal, ratio <= goal ? "met" : "MISSED");
        }
        std::printf("\n");
        std::fflush(stdout);
        return goal <= 0 || ratio <= goal;
    }

    std::map<std::string, double> nanoseconds;
    std::map<std::string, bool> medians;
};
