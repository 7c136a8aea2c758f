#include "transfer/rows.hpp"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include "platform/ado/rowset_feed.hpp"
#include "transfer/identifiers.hpp"
#include "transfer/load_writer.hpp"
#include "transfer/type_map.hpp"
#include "transfer/values.hpp"

namespace zolsdk::transfer {

namespace {


Kind KindOfColumn(const TablePlan& t, StringView name) {
    for (const auto& c : t.columns)
        if (EqualsNoCase(c.name, name)) return c.kind;
    return Kind::Text;
}

// MariaDB: rows gathered into one INSERT of many rows, each value an exact
// literal, sent when the statement reaches its size.
class MySqlBatchWriter : public RowWriter {
public:
    MySqlBatchWriter(ado::Connection& c, const TablePlan& t, size_t batchBytes)
        : c_(c), limit_(batchBytes / 2) {
        head_ = InsertHead(Engine::MySql, t);
        for (const auto& col : t.columns) kinds_.push_back(col.kind);
        sql_.reserve(limit_ + 4096);
    }
    void Add(const std::vector<Variant>& row) override {
        sql_ += sql_.empty() ? head_ + u"(" : String(u",(");
        for (size_t i = 0; i < row.size(); ++i) {
            if (i) sql_ += u',';
            sql_ += Literal(Engine::MySql, kinds_[i], row[i]);
        }
        sql_ += u')';
        if (sql_.size() >= limit_) Flush();
    }
    int64_t Flush() override {
        if (!sql_.empty()) {
            int32_t n = 0;
            c_.Execute(sql_, n, ado::adExecuteNoRecords);
            written_ += n;
            sql_.clear();
        }
        return written_;
    }
    int64_t Finish() override { return Flush(); }

private:
    ado::Connection& c_;
    size_t limit_;
    String head_, sql_;
    std::vector<Kind> kinds_;
    int64_t written_ = 0;
};

// Bound INSERTs of `rowsPerStatement` rows each ("VALUES (?, ?), (?, ?)"):
// the driver carries every value as it is, and no literal is ever composed.
class BoundWriter : public RowWriter {
public:
    BoundWriter(ado::Connection& c, Engine e, const TablePlan& t, size_t rowsPerStatement)
        : c_(c), e_(e), table_(t.name), rowsPerStatement_(rowsPerStatement) {
        head_ = InsertHead(e, t);
        for (size_t i = 0; i < t.columns.size(); ++i) rowMarks_ += i ? u", ?" : u"(?";
        rowMarks_ += u")";
        for (const auto& col : t.columns) {
            kinds_.push_back(col.kind);
            if (col.autoIncrement && e == Engine::SqlServer) identity_ = true;
        }
        if (identity_) Run(c_, u"SET IDENTITY_INSERT " + QuoteName(e, table_) + u" ON");
    }
    void Add(const std::vector<Variant>& row) override {
        for (size_t i = 0; i < row.size(); ++i) {
            Variant v = row[i];
            if (kinds_[i] == Kind::Guid && !v.IsNull() && !v.IsEmpty()) {
                String g = UCase(v.ToString());
                v = Variant(g.empty() || g.front() == u'{' ? g : u"{" + g + u"}");
            }
            params_.push_back(Ref<ado::Parameter>::New(String(), ParameterType(kinds_[i]), ado::adParamInput, 0, v));
        }
        if (++pending_ >= rowsPerStatement_) Flush();
    }
    int64_t Flush() override {
        if (pending_ == 0) return written_;
        String sql = head_;
        for (size_t r = 0; r < pending_; ++r) sql += r ? u", " + rowMarks_ : rowMarks_;
        int32_t n = 0;
        c_.ExecuteWith(sql, params_, n, ado::adExecuteNoRecords);
        written_ += n < 0 ? static_cast<int64_t>(pending_) : n;
        params_.clear();
        pending_ = 0;
        return written_;
    }
    int64_t Finish() override {
        Flush();
        if (identity_) {
            identity_ = false;
            Run(c_, u"SET IDENTITY_INSERT " + QuoteName(e_, table_) + u" OFF");
        }
        return written_;
    }

private:
    ado::Connection& c_;
    Engine e_;
    String table_, head_, rowMarks_;
    size_t rowsPerStatement_;
    std::vector<Kind> kinds_;
    std::vector<Ref<ado::Parameter>> params_;
    size_t pending_ = 0;
    bool identity_ = false;
    int64_t written_ = 0;
};

// The reader holds a decimal of up to 28 digits; a MariaDB decimal column
// of more is read as its text, which carries every digit.
bool ReadAsText(Engine e, const ColumnPlan& c) {
    return e == Engine::MySql && c.kind == Kind::Decimal && c.precision > 28;
}

// MariaDB writes a FLOAT with six digits (16777216 as "16777200"); the
// DOUBLE it widens to is written with every digit and holds it exactly.
bool ReadWidened(Engine e, const ColumnPlan& c) { return e == Engine::MySql && c.kind == Kind::Single; }

} // namespace

String InsertHead(Engine e, const TablePlan& t) {
    std::vector<String> names;
    for (const auto& c : t.columns) names.push_back(c.name);
    return u"INSERT INTO " + QuoteName(e, t.name) + u" (" + QuoteList(e, names) + u") VALUES ";
}

String SelectSql(Engine e, const TablePlan& t, const KeyRange& range) {
    String columns;
    for (const auto& c : t.columns) {
        if (!columns.empty()) columns += u", ";
        String name = QuoteName(e, c.name);
        if (ReadAsText(e, c))
            columns += u"CAST(" + name + u" AS CHAR) AS " + name;
        else if (ReadWidened(e, c))
            columns += u"CAST(" + name + u" AS DOUBLE) AS " + name;
        else
            columns += name;
    }
    String sql = u"SELECT " + columns + u" FROM " + QuoteName(e, t.name);
    if (!range.IsWhole() && !t.keyColumns.empty()) {
        const String& key = t.keyColumns.front();
        Kind k = KindOfColumn(t, key);
        String where;
        if (!range.from.IsEmpty()) where = QuoteName(e, key) + u" >= " + Literal(e, k, range.from);
        if (!range.to.IsEmpty())
            where += (where.empty() ? u"" : u" AND ") + QuoteName(e, key) + u" < " + Literal(e, k, range.to);
        sql += u" WHERE " + where;
    }
    return sql;
}

// A server's rows read by a thread of their own in batches, a few batches
// ahead of the caller, so that reading and what the caller does with the
// rows overlap.
class RowReader::Prefetch {
public:
    explicit Prefetch(std::unique_ptr<ado::Connection::RowStream> stream) : stream_(std::move(stream)) {
        thread_ = std::thread([this] { Run(); });
    }
    ~Prefetch() {
        {
            std::lock_guard g(lock_);
            stop_ = true;
        }
        moved_.notify_all();
        thread_.join();
    }
    // The next row, or false at the end; raises the read's failure.
    bool Next(std::vector<Variant>& row) {
        if (at_ == batch_.size()) {
            std::unique_lock g(lock_);
            moved_.wait(g, [this] { return !ready_.empty() || ended_; });
            if (ready_.empty()) {
                if (failure_) std::rethrow_exception(failure_);
                return false;
            }
            batch_ = std::move(ready_.front());
            ready_.pop_front();
            at_ = 0;
            g.unlock();
            moved_.notify_all();
        }
        row.swap(batch_[at_++]);
        return true;
    }

private:
    static constexpr size_t kRows = 512, kBatches = 8;
    std::unique_ptr<ado::Connection::RowStream> stream_;
    std::thread thread_;
    std::mutex lock_;
    std::condition_variable moved_;
    std::deque<std::vector<std::vector<Variant>>> ready_;
    std::vector<std::vector<Variant>> batch_;
    size_t at_ = 0;
    bool stop_ = false, ended_ = false;
    std::exception_ptr failure_;

    void Run() {
        try {
            bool more = true;
            while (more) {
                std::vector<std::vector<Variant>> rows(kRows);
                size_t n = 0;
                while (n < kRows && (more = stream_->Next(rows[n]))) ++n;
                rows.resize(n);
                std::unique_lock g(lock_);
                moved_.wait(g, [this] { return ready_.size() < kBatches || stop_; });
                if (stop_) break;
                if (n) ready_.push_back(std::move(rows));
                g.unlock();
                moved_.notify_all();
            }
        } catch (...) {
            std::lock_guard g(lock_);
            failure_ = std::current_exception();
        }
        // The stream ends here, on its own thread (a server statement still
        // running is stopped).
        stream_.reset();
        {
            std::lock_guard g(lock_);
            ended_ = true;
        }
        moved_.notify_all();
    }
};

RowReader::~RowReader() = default;

RowReader::RowReader(ado::Connection& c, Engine e, const TablePlan& t, const KeyRange& range) {
    if (e == Engine::MySql) {
        ahead_ = std::make_unique<Prefetch>(c.OpenRowStream(SelectSql(e, t, range)));
        return;
    }
    rs_ = c.OpenRecordset(SelectSql(e, t, range), ado::adAsyncFetch);
    // Forward once: rows left behind are let go as the walk goes on.
    if (rs_->State() != ado::adStateClosed) ado::RowsetFeed::ReleasePassedRows(*rs_, true);
    row_.resize(t.columns.size());
}

bool RowReader::Next() {
    if (ahead_) return ahead_->Next(row_);
    if (rs_->State() == ado::adStateClosed) return false;
    if (started_) rs_->MoveNext();
    started_ = true;
    if (rs_->Eof()) return false;
    auto& fields = rs_->Fields();
    for (size_t i = 0; i < row_.size(); ++i) row_[i] = fields.Item(static_cast<int32_t>(i)).Value();
    return true;
}

std::unique_ptr<RowWriter> MakeWriter(ado::Connection& c, Engine target, const TablePlan& t, size_t batchBytes) {
    if (target == Engine::MySql) {
        // A server that refuses client-fed loads gets INSERTs of many rows.
        if (TakesBulkLoads(c)) return std::make_unique<LoadWriter>(c, t, kLoadChunkBytes);
        return std::make_unique<MySqlBatchWriter>(c, t, batchBytes);
    }
    // Access takes many rows a statement (its provider writes them in one
    // batch); SQL Server's driver binds at most 2100 parameters.
    size_t perRow = std::max<size_t>(t.columns.size(), 1);
    size_t rows = target == Engine::Access ? std::max<size_t>(1, 2000 / perRow) : std::max<size_t>(1, 2000 / perRow);
    (void)batchBytes;
    return std::make_unique<BoundWriter>(c, target, t, std::min<size_t>(rows, 500));
}

} // namespace zolsdk::transfer
