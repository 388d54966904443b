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

// Starts Google Benchmark with a 0.1 s minimum per run and the program's
// own `defaults` ("--flag=value"), each unless the command line names it.
inline void initialize(int argc, char **argv, std::vector<std::string> defaults = {}) {
    static std::vector<char *> args(argv, argv + argc);
    static std::vector<std::string> added;
    defaults.insert(defaults.begin(), "--benchmark_min_time=0.1");
    for (const std::string &flag : defaults) {
        const std::string name = flag.substr(0, flag.find('='));
        bool given = false;
        for (char *a : args) given |= std::strncmp(a, name.c_str(), name.size()) == 0;
        if (!given) added.push_back(flag);
    }
    for (std::string &flag : added) args.insert(args.begin() + 1, flag.data());
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
}

// Keeps each benchmark's rate, megapixels per second, by name: of its one
// run, or with repetitions the median of them.
class Collect : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const auto &run : runs) {
            if (run.error_occurred) continue;
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (median || (run.run_type == Run::RT_Iteration && run.repetitions <= 1))
                rates[run.run_name.str()] = run.counters.at("items_per_second").value / 1e6;
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
