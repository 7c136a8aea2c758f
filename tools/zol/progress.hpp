#pragma once
// Progress of running tables. On a terminal the last lines of the screen
// show one line per running table, redrawn in place; elsewhere (a file, a
// pipe) plain lines are printed every few seconds, without carriage returns,
// so a captured log reads line by line. Safe to call from several threads.
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <ostream>
#include <string>

namespace zol {

class Progress {
public:
    enum class Mode { Terminal, Lines, Quiet };

    // Terminal when `fd` is one, Lines otherwise.
    static Mode ModeFor(int fd);

    Progress(std::ostream& out, Mode mode, std::chrono::milliseconds every = std::chrono::seconds(5));
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // A table starts; `expected` is its row count when known (-1 otherwise).
    int Begin(const std::string& name, int64_t expected = -1);
    // Rows so far for a running table.
    void Rows(int id, int64_t rows);
    // The table is done: its running line gives way to `line`.
    void End(int id, const std::string& line);
    // A line of its own, above the running tables.
    void Say(const std::string& line);

private:
    using Clock = std::chrono::steady_clock;
    struct Running {
        std::string name;
        int64_t expected = -1, rows = 0;
        Clock::time_point started, printed;
    };
    std::string LineOf(const Running& r) const;
    void Redraw(bool force);
    void ClearDrawn();

    std::ostream& out_;
    Mode mode_;
    std::chrono::milliseconds every_;
    std::mutex mutex_;
    std::map<int, Running> running_;
    int next_ = 0;
    int drawn_ = 0; // lines of running tables on the screen (terminal)
    Clock::time_point redrawn_{};
};

} // namespace zol
