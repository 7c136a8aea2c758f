#pragma once
// Rows into a table as INSERTs of many rows each, sent as arrays of
// parameters (ado::RowBatch), all in one transaction: the caller's thread
// fills one batch while a sender thread sends the other, so the server
// inserts while the client reads on. Two batches in memory at most.
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "transfer/rows.hpp"

namespace zolsdk::transfer {

// The INSERT with a "?" a planned column.
String BatchInsertSql(const TablePlan& t);

class BatchWriter {
public:
    // Begins the transaction on `c`, which the writer then has to itself
    // until Finish or its end.
    BatchWriter(ado::Connection& c, const TablePlan& t, size_t batchBytes);
    // Without Finish: the rows sent are rolled back.
    ~BatchWriter();

    void Add(const ado::TextRow& row);
    // Sends the rest and commits; answers the rows the target took. A
    // failure of the server comes out here or from Add.
    int64_t Finish();

private:
    ado::Connection& c_;
    size_t batchBytes_;
    std::unique_ptr<ado::RowBatch> filling_;

    std::mutex lock_;
    std::condition_variable moved_;
    std::unique_ptr<ado::RowBatch> handed_; // waiting for the sender
    std::unique_ptr<ado::RowBatch> spare_;  // sent, to be filled again
    bool ended_ = false, aborted_ = false, failed_ = false;
    std::exception_ptr failure_;
    int64_t taken_ = 0;
    std::thread sender_;

    void Hand();
    void Send();
};

} // namespace zolsdk::transfer
