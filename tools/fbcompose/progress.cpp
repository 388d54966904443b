#include "progress.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "cli.hpp"
#include "diagnostics.hpp"

namespace fbctool {
namespace {

std::chrono::milliseconds period_from_environment() {
    int32_t ms = 1000;
    if (const char *text = std::getenv("FBCOMPOSE_PROGRESS_MS")) parse_int(text, 0, 3600000, ms);
    return std::chrono::milliseconds(ms);
}

}  // namespace

progress::progress(std::string_view command)
    : command_(command),
      period_(period_from_environment()),
      start_(std::chrono::steady_clock::now()) {
    shown_ = verbose() || isatty(STDERR_FILENO);
    // A period of 0 reports only at the end.
    if (shown_ && period_.count() > 0) ticker_ = std::thread([this] { tick(); });
}

progress::~progress() {
    if (!shown_) return;
    if (ticker_.joinable()) {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_one();
        ticker_.join();
    }
    std::lock_guard lock(mutex_);
    if (reported_ || std::chrono::steady_clock::now() - start_ >= period_) report("finished");
}

void progress::at(std::string_view what, int64_t done, int64_t total) {
    std::string state(what);
    if (done > 0) state += cat({" ", std::to_string(done)});
    if (total > 0) state += cat({" of ", std::to_string(total)});
    std::lock_guard lock(mutex_);
    state_ = std::move(state);
}

// Called with the mutex held.
void progress::report(std::string_view state) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    std::fprintf(stderr, "fbcompose %s: %.*s, %.1f s\n", command_.c_str(),
                 static_cast<int>(state.size()), state.data(), elapsed.count());
    reported_ = true;
}

void progress::tick() {
    std::unique_lock lock(mutex_);
    for (auto next = start_ + period_; !wake_.wait_until(lock, next, [this] { return stopping_; });
         next += period_)
        report(state_.empty() ? "working" : state_);
}

}  // namespace fbctool
