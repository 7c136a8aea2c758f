#pragma once
// Rows into a MariaDB table by one bulk load fed from memory: the caller's
// thread turns rows into the load's text in chunks, a loader thread sends
// them while the next ones are made. At most a few chunks wait between the
// two, so memory stays bounded whatever the table's size.
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "transfer/rows.hpp"

namespace zolsdk::transfer {

// Whether the server takes client-fed loads (its local_infile is on).
bool TakesBulkLoads(ado::Connection& c);

// The LOAD DATA statement for the table's planned columns (binary ones
// arrive as hex digits and are un-hexed by the server).
String LoadDataSql(const TablePlan& t);

// The bulk load's text goes to the loader in chunks of about this size.
constexpr size_t kLoadChunkBytes = 1 << 20;

// The load's text goes to the server in chunks of about `chunkBytes`.
class LoadWriter : public RowWriter {
public:
    LoadWriter(ado::Connection& c, const TablePlan& t, size_t chunkBytes);
    ~LoadWriter() override;

    void Add(const std::vector<Variant>& row) override;
    // The load is one statement: nothing is taken before its end.
    int64_t Flush() override { return taken_; }
    int64_t Finish() override;

    // For a caller that writes the load's text itself: a whole line (or
    // several) appended to Text(), then Added().
    std::string& Text() { return chunk_; }
    void Added() {
        if (chunk_.size() >= chunkBytes_) Push();
    }

private:
    size_t chunkBytes_;
    std::vector<Kind> kinds_;
    std::string chunk_;

    std::mutex lock_;
    std::condition_variable moved_;
    std::deque<std::string> waiting_;
    bool ended_ = false, aborted_ = false, failed_ = false;
    std::exception_ptr failure_;
    std::thread loader_;
    int64_t taken_ = 0;

    // The loader's chunk and how far it has been sent (loader thread only).
    std::string sending_;
    size_t sent_ = 0;

    void Push();
    size_t Feed(char* buf, size_t size);
    void Load(ado::Connection& c, const String& sql);
};

} // namespace zolsdk::transfer
