// The console reporter of the benchmark programs that print ratios: it keeps each
// benchmark's CPU time per iteration by name, so that main can divide one by the
// reference measured in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace tw::bench {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, double> times;

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) times[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
};

}  // namespace tw::bench
