#include "progress.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zol {

namespace {
constexpr auto kRedrawEvery = std::chrono::milliseconds(200);

double SecondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}
} // namespace

Progress::Mode Progress::ModeFor(int fd) { return ::isatty(fd) ? Mode::Terminal : Mode::Lines; }

Progress::Progress(std::ostream& out, Mode mode, std::chrono::milliseconds every)
    : out_(out), mode_(mode), every_(every) {}

Progress::~Progress() {
    std::lock_guard lock(mutex_);
    if (mode_ == Mode::Terminal) ClearDrawn();
    out_ << std::flush;
}

std::string Progress::LineOf(const Running& r) const {
    double s = SecondsSince(r.started);
    char text[160];
    if (r.expected > 0)
        std::snprintf(text, sizeof text, "  %s: %lld of %lld rows (%d%%), %.0f rows/s", r.name.c_str(),
                      static_cast<long long>(r.rows), static_cast<long long>(r.expected),
                      // The expected rows may be an estimate.
                      std::min(100, static_cast<int>(100.0 * static_cast<double>(r.rows) / static_cast<double>(r.expected))),
                      s > 0 ? static_cast<double>(r.rows) / s : 0.0);
    else
        std::snprintf(text, sizeof text, "  %s: %lld rows, %.0f rows/s", r.name.c_str(),
                      static_cast<long long>(r.rows), s > 0 ? static_cast<double>(r.rows) / s : 0.0);
    return text;
}

void Progress::ClearDrawn() {
    // Up to the first running line, then clear to the end of the screen.
    if (drawn_ > 0) out_ << "\x1b[" << drawn_ << "F";
    out_ << "\x1b[J";
    drawn_ = 0;
}

void Progress::Redraw(bool force) {
    auto now = Clock::now();
    if (!force && now - redrawn_ < kRedrawEvery) return;
    redrawn_ = now;
    ClearDrawn();
    for (const auto& [id, r] : running_) out_ << LineOf(r) << "\n";
    drawn_ = static_cast<int>(running_.size());
    out_ << std::flush;
}

int Progress::Begin(const std::string& name, int64_t expected) {
    std::lock_guard lock(mutex_);
    int id = next_++;
    auto now = Clock::now();
    running_[id] = {name, expected, 0, now, now};
    if (mode_ == Mode::Terminal) Redraw(true);
    return id;
}

void Progress::Rows(int id, int64_t rows) {
    std::lock_guard lock(mutex_);
    auto it = running_.find(id);
    if (it == running_.end()) return;
    it->second.rows = rows;
    if (mode_ == Mode::Terminal) {
        Redraw(false);
    } else if (mode_ == Mode::Lines && Clock::now() - it->second.printed >= every_) {
        it->second.printed = Clock::now();
        out_ << LineOf(it->second) << "\n" << std::flush;
    }
}

void Progress::End(int id, const std::string& line) {
    std::lock_guard lock(mutex_);
    running_.erase(id);
    if (mode_ == Mode::Terminal) ClearDrawn();
    out_ << line << "\n";
    if (mode_ == Mode::Terminal) Redraw(true);
    out_ << std::flush;
}

void Progress::Say(const std::string& line) {
    std::lock_guard lock(mutex_);
    if (mode_ == Mode::Terminal) ClearDrawn();
    out_ << line << "\n";
    if (mode_ == Mode::Terminal) Redraw(true);
    out_ << std::flush;
}

} // namespace zol
