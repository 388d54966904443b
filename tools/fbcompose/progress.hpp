// A sign of life for long work: once a command has run for a second, a
// line on standard error each second saying what it is doing, and one when
// it is done. Shown only when standard error is a terminal or with
// --verbose, so scripts and logs stay clean. FBCOMPOSE_PROGRESS_MS changes
// the second (0: report every run).
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace fbctool {

class progress {
public:
    explicit progress(std::string_view command);
    ~progress();
    progress(const progress &) = delete;
    progress &operator=(const progress &) = delete;

    // What the work is at: "fitting", or "file" 3 of 10 (total 0: unknown).
    void at(std::string_view what, int64_t done = 0, int64_t total = 0);

private:
    void report(std::string_view state);
    void tick();

    std::string command_;
    std::chrono::milliseconds period_;
    std::chrono::steady_clock::time_point start_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::string state_;
    bool shown_ = false, stopping_ = false, reported_ = false;
    std::thread ticker_;
};

}  // namespace fbctool
