// What every benchmark program shares: a short default run time, and the
// rates of each run collected for the table printed at the end.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace bench {

// Starts Google Benchmark with a 0.1 s minimum per run unless the command
// line names another.
inline void initialize(int argc, char **argv) {
    static std::vector<char *> args(argv, argv + argc);
    static std::string min_time = "--benchmark_min_time=0.1";
    bool has_min_time = false;
    for (char *a : args) has_min_time |= std::strncmp(a, "--benchmark_min_time", 20) == 0;
    if (!has_min_time) args.insert(args.begin() + 1, min_time.data());
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
}

// Keeps each run's rate, megapixels per second, by benchmark name.
class Collect : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const auto &run : runs) {
            if (run.error_occurred) continue;
            rates[run.benchmark_name()] = run.counters.at("items_per_second").value / 1e6;
        }
        std::fputc('.', stderr);
    }
    std::map<std::string, double> rates;
};

inline std::string cell(const std::map<std::string, double> &rates, const std::string &name) {
    auto it = rates.find(name);
    if (it == rates.end()) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", it->second);
    return text;
}

inline std::string ratio(const std::map<std::string, double> &rates, const std::string &a,
                         const std::string &b) {
    auto x = rates.find(a), y = rates.find(b);
    if (x == rates.end() || y == rates.end() || y->second == 0) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", x->second / y->second);
    return text;
}

}  // namespace bench
