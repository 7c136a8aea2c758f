#include "transfer/batch_writer.hpp"

#include "transfer/endpoint.hpp"

namespace zolsdk::transfer {

String BatchInsertSql(const TablePlan& t) {
    String marks;
    for (size_t i = 0; i < t.columns.size(); ++i) marks += i ? u", ?" : u"?";
    return InsertHead(Engine::MySql, t) + u"(" + marks + u")";
}

BatchWriter::BatchWriter(ado::Connection& c, const TablePlan& t, size_t batchBytes) : c_(c), batchBytes_(batchBytes) {
    String sql = BatchInsertSql(t);
    filling_ = c.NewRowBatch(sql);
    spare_ = c.NewRowBatch(sql);
    Run(c, u"START TRANSACTION");
    sender_ = std::thread([this] { Send(); });
}

BatchWriter::~BatchWriter() {
    if (sender_.joinable()) {
        {
            std::lock_guard g(lock_);
            aborted_ = true;
        }
        moved_.notify_all();
        sender_.join();
    }
    // The batches close their statements on the connection: before it.
    filling_.reset();
    spare_.reset();
    handed_.reset();
}

void BatchWriter::Add(const ado::TextRow& row) {
    // A large row goes in a batch of its own rather than on top of a full
    // one: one execution must fit the server's largest packet.
    size_t bytes = 0;
    for (size_t i = 0; i < row.columns; ++i) bytes += row.lengths[i] + 8;
    if (filling_->Rows() && filling_->Bytes() + bytes > batchBytes_) Hand();
    if (!filling_->Add(row)) {
        Hand();
        filling_->Add(row);
    }
    if (filling_->Bytes() >= batchBytes_) Hand();
}

// The filled batch goes to the sender; the one it sent last comes back.
void BatchWriter::Hand() {
    if (filling_->Rows() == 0) return;
    std::unique_lock g(lock_);
    moved_.wait(g, [this] { return (!handed_ && spare_) || failed_; });
    if (failed_) std::rethrow_exception(failure_);
    handed_ = std::move(filling_);
    filling_ = std::move(spare_);
    g.unlock();
    moved_.notify_all();
}

int64_t BatchWriter::Finish() {
    Hand();
    {
        std::lock_guard g(lock_);
        ended_ = true;
    }
    moved_.notify_all();
    sender_.join();
    if (failure_) std::rethrow_exception(failure_);
    return taken_;
}

void BatchWriter::Send() {
    try {
        for (;;) {
            std::unique_ptr<ado::RowBatch> batch;
            {
                std::unique_lock g(lock_);
                moved_.wait(g, [this] { return handed_ || ended_ || aborted_; });
                if (aborted_) break;
                if (!handed_) {
                    g.unlock();
                    Run(c_, u"COMMIT");
                    return;
                }
                batch = std::move(handed_);
            }
            int64_t n = c_.SendRowBatch(*batch);
            batch->Clear();
            {
                std::lock_guard g(lock_);
                taken_ += n;
                spare_ = std::move(batch);
            }
            moved_.notify_all();
        }
    } catch (...) {
        std::lock_guard g(lock_);
        failure_ = std::current_exception();
        failed_ = true;
    }
    moved_.notify_all();
    // Aborted or failed: nothing of the rows stays.
    try {
        Run(c_, u"ROLLBACK");
    } catch (...) {
    }
}

} // namespace zolsdk::transfer
