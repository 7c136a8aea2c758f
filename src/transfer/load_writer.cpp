#include "transfer/load_writer.hpp"

#include <cstring>

#include "transfer/identifiers.hpp"
#include "transfer/values.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

// Chunks made and not yet sent; with the one being made and the one being
// sent, at most this many plus two are in memory.
constexpr size_t kWaitingChunks = 3;

} // namespace

LoadWriter::LoadWriter(ado::Connection& c, const TablePlan& t, size_t chunkBytes) : chunkBytes_(chunkBytes) {
    for (const auto& col : t.columns) kinds_.push_back(col.kind);
    chunk_.reserve(chunkBytes_ + 4096);
    String sql = LoadDataSql(t);
    loader_ = std::thread([this, &c, sql] { Load(c, sql); });
}

LoadWriter::~LoadWriter() {
    if (!loader_.joinable()) return;
    {
        std::lock_guard g(lock_);
        aborted_ = true;
    }
    moved_.notify_all();
    loader_.join();
}

void LoadWriter::Add(const std::vector<Variant>& row) {
    for (size_t i = 0; i < row.size(); ++i) {
        if (i) chunk_ += '\t';
        AppendLoadText(kinds_[i], row[i], chunk_);
    }
    chunk_ += '\n';
    Added();
}

int64_t LoadWriter::Finish() {
    Push();
    {
        std::lock_guard g(lock_);
        ended_ = true;
    }
    moved_.notify_all();
    loader_.join();
    if (failure_) std::rethrow_exception(failure_);
    return taken_;
}

void LoadWriter::Push() {
    if (chunk_.empty()) return;
    std::unique_lock g(lock_);
    moved_.wait(g, [this] { return waiting_.size() < kWaitingChunks || failed_; });
    if (failed_) std::rethrow_exception(failure_);
    waiting_.push_back(std::move(chunk_));
    g.unlock();
    moved_.notify_all();
    chunk_ = std::string();
    chunk_.reserve(chunkBytes_ + 4096);
}

// Called by the client library for more of the load's data.
size_t LoadWriter::Feed(char* buf, size_t size) {
    if (sent_ == sending_.size()) {
        std::unique_lock g(lock_);
        moved_.wait(g, [this] { return !waiting_.empty() || ended_ || aborted_; });
        if (aborted_) throw DbError(err::InvalidCall, u"zolsdk.transfer", u"the rows stopped coming before their end");
        if (waiting_.empty()) return 0; // ended
        sending_ = std::move(waiting_.front());
        waiting_.pop_front();
        sent_ = 0;
        g.unlock();
        moved_.notify_all();
    }
    size_t n = std::min(size, sending_.size() - sent_);
    std::memcpy(buf, sending_.data() + sent_, n);
    sent_ += n;
    return n;
}

void LoadWriter::Load(ado::Connection& c, const String& sql) {
    try {
        taken_ = c.BulkLoad(sql, [this](char* buf, size_t size) { return Feed(buf, size); });
    } catch (...) {
        std::lock_guard g(lock_);
        failure_ = std::current_exception();
        failed_ = true;
    }
    moved_.notify_all();
}

bool TakesBulkLoads(ado::Connection& c) {
    int32_t n = 0;
    Ref<ado::Recordset> rs = c.Execute(u"SELECT @@local_infile", n);
    return rs && rs->State() != ado::adStateClosed && !rs->Eof() && rs->Fields().Item(0).Value().ToString() == u"1";
}

String LoadDataSql(const TablePlan& t) {
    String columns, unhex;
    for (size_t i = 0; i < t.columns.size(); ++i) {
        const ColumnPlan& col = t.columns[i];
        if (i) columns += u", ";
        if (col.kind == Kind::Binary || col.kind == Kind::LongBinary) {
            String var = u"@b" + IntText(static_cast<int64_t>(i));
            columns += var;
            unhex += (unhex.empty() ? u" SET " : u", ") + QuoteName(Engine::MySql, col.name) + u" = UNHEX(" + var + u")";
        } else {
            columns += QuoteName(Engine::MySql, col.name);
        }
    }
    return u"LOAD DATA LOCAL INFILE 'rows' INTO TABLE " + QuoteName(Engine::MySql, t.name) +
           u" CHARACTER SET utf8mb4 FIELDS TERMINATED BY '\\t' ESCAPED BY '\\\\' LINES TERMINATED BY '\\n' (" +
           columns + u")" + unhex;
}

} // namespace zolsdk::transfer
