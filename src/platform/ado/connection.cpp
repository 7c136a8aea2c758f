#include "platform/ado/connection.hpp"

#include <condition_variable>
#include <deque>
#include <chrono>
#include <thread>

#include "platform/ado/backend.hpp"
#include "platform/failure_chain.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk::ado {

using detail::Backend;
using detail::ColumnInfo;
using detail::Cursor;
using detail::ProviderFailure;

Ref<ado::Error> Errors::Item(int32_t index) const {
    if (index < 0 || index >= Count()) RaisePlatform(err::AdoItemNotFound);
    return items_[static_cast<size_t>(index)];
}

Ref<Parameter> Parameters::Item(int32_t index) const {
    if (index < 0 || index >= Count()) RaisePlatform(err::AdoItemNotFound);
    return items_[static_cast<size_t>(index)];
}

namespace detail {

Ref<Recordset> RowsetFor(const std::vector<ColumnInfo>& columns) {
    auto rs = Ref<Recordset>::New();
    rs->CursorLocation(adUseClient);
    for (const ColumnInfo& c : columns) {
        rs->Fields().Append(c.name, c.type, c.size, -1);
        Field& f = rs->Fields().Item(rs->Fields().Count() - 1);
        f.Precision(c.precision);
        f.NumericScale(c.scale);
    }
    return rs;
}

Ref<Recordset> DrainToRowset(Cursor& cursor) {
    Ref<Recordset> rs = RowsetFor(cursor.Columns());
    rs->Open();
    std::vector<Variant> row;
    while (cursor.Fetch(row)) RowsetFeed::AppendRow(*rs, std::move(row));
    return rs;
}

// One asynchronous statement: a background thread executes it and reads
// its rows into a bounded queue; the rowset's feed moves them in on the
// caller's thread.
class AsyncFetch {
public:
    AsyncFetch(std::shared_ptr<Backend> backend, String sql, int32_t timeout)
        : backend_(std::move(backend)), sql_(std::move(sql)), timeout_(timeout) {}
    ~AsyncFetch() { Stop(); }

    void Start() { thread_ = std::thread([this] { Run(); }); }

    // Waits until the statement has run; raises its refusal.
    const std::vector<ColumnInfo>& WaitExecuted() {
        std::unique_lock<std::mutex> g(m_);
        cv_.wait(g, [this] { return executed_; });
        if (failure_ && !cursorSeen_) {
            auto f = failure_;
            failure_ = nullptr;
            std::rethrow_exception(f);
        }
        return columns_;
    }

    // Moves the rows that have arrived into `rs`, waiting for at least one
    // unless the fetch has ended. False once nothing more will come.
    bool Feed(Recordset& rs) {
        std::deque<std::vector<Variant>> batch;
        bool finished;
        {
            // The fetch wakes the reader only once a batch has gathered (a
            // wake-up a row costs more than the row on a busy machine); a
            // short wait lets a trickle of rows through as well.
            std::unique_lock<std::mutex> g(m_);
            while (!cv_.wait_for(g, kTrickle, [this] { return !queue_.empty() || done_; })) {
            }
            batch.swap(queue_);
            finished = done_;
            if (batch.empty() && failure_) {
                auto f = failure_;
                failure_ = nullptr;
                std::rethrow_exception(f);
            }
        }
        cv_.notify_all();
        for (auto& row : batch) RowsetFeed::AppendRow(rs, std::move(row));
        if (!finished) return true;
        std::lock_guard<std::mutex> g(m_);
        // A failure after the last good row is reported at the next read.
        return !queue_.empty() || failure_ != nullptr;
    }

    // Cancels the statement and waits for the thread; rows already queued
    // can still be moved in.
    void Stop() {
        {
            std::lock_guard<std::mutex> g(m_);
            cancel_ = true;
            if (cursor_) cursor_->Cancel();
        }
        cv_.notify_all();
        if (thread_.joinable()) thread_.join();
    }

private:
    std::shared_ptr<Backend> backend_;
    String sql_;
    int32_t timeout_;
    std::thread thread_;
    std::mutex m_;
    std::condition_variable cv_;
    std::deque<std::vector<Variant>> queue_;
    std::vector<ColumnInfo> columns_;
    std::unique_ptr<Cursor> cursor_;
    std::exception_ptr failure_;
    bool executed_ = false, cursorSeen_ = false, done_ = false, cancel_ = false;
    // Rows waiting to be moved in; the fetch pauses when the reader lags
    // this far behind, so a huge result does not pile up twice in memory.
    static constexpr size_t kMaxQueued = 8192;
    // Rows that wake the reader, and the longest a lone row waits for it.
    static constexpr size_t kBatch = 256;
    static constexpr std::chrono::milliseconds kTrickle{1};

    void Run() {
        try {
            std::unique_ptr<Cursor> c = backend_->ExecuteInBackground(sql_, timeout_);
            {
                std::lock_guard<std::mutex> g(m_);
                if (c) columns_ = c->Columns();
                cursor_ = std::move(c);
                cursorSeen_ = true;
                executed_ = true;
            }
            cv_.notify_all();
            std::vector<Variant> row;
            for (;;) {
                Cursor* cur;
                {
                    std::lock_guard<std::mutex> g(m_);
                    if (cancel_ || !cursor_) break;
                    cur = cursor_.get();
                }
                if (!cur->Fetch(row)) break;
                std::unique_lock<std::mutex> g(m_);
                cv_.wait(g, [this] { return queue_.size() < kMaxQueued || cancel_; });
                if (cancel_) break;
                queue_.push_back(std::move(row));
                bool wake = queue_.size() % kBatch == 0;
                g.unlock();
                if (wake) cv_.notify_all();
            }
        } catch (...) {
            std::lock_guard<std::mutex> g(m_);
            // A cancelled statement's refusal is the cancel itself.
            if (!cancel_ || !cursorSeen_) failure_ = std::current_exception();
        }
        std::unique_ptr<Cursor> last;
        {
            std::lock_guard<std::mutex> g(m_);
            last = std::move(cursor_);
            executed_ = true;
            done_ = true;
        }
        last.reset(); // frees the statement before anyone waits on the end
        cv_.notify_all();
    }
};

} // namespace detail

namespace {

// Turns a provider refusal into the connection's error list and the
// failure that the caller sees.
[[noreturn]] void RaiseProvider(const ProviderFailure& f, ado::Errors* errors) {
    if (errors) {
        errors->Clear();
        for (const auto& e : f.Errors())
            errors->Append(Ref<ado::Error>::New(kProviderFailure, e.native, String(kProviderSource), e.sqlState, e.message));
    }
    throw DbError(kProviderFailure, String(kProviderSource), f.Description());
}

template <class F>
auto Guarded(ado::Errors* errors, F&& f) -> decltype(f()) {
    try {
        return f();
    } catch (const ProviderFailure& pf) {
        RaiseProvider(pf, errors);
    }
}

int32_t Clamp(int64_t n) {
    if (n > INT32_MAX) return INT32_MAX;
    if (n < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(n);
}

} // namespace

Connection::Connection() : errors_(Ref<ado::Errors>::New()) {}

Connection::~Connection() {
    try {
        CancelFetches();
        if (backend_) backend_->Close();
    } catch (...) {
        // Nothing may leave a destructor; the handles are gone either way.
    }
}

void Connection::Fail(int32_t number, StringView description) {
    RaisePlatformFrom(number, kConnectionSource, description);
}

detail::Backend& Connection::RequireOpen() {
    if (!backend_ || !backend_->IsOpen())
        Fail(adErrInvalidConnection, u"The connection cannot be used to perform this operation. It is either closed or "
                                     u"invalid in this context.");
    return *backend_;
}

void Connection::Open(const String& connectionString, const String& userId, const String& password, int32_t) {
    if (State() == adStateOpen) Fail(err::AdoNotAllowedOpen, u"Operation is not allowed when the object is open.");
    if (!connectionString.empty()) connectionString_ = connectionString;
    String text = connectionString_;
    if (!userId.empty()) text += u";UID=" + userId;
    if (!password.empty()) text += u";PWD=" + password;
    if (Trim(text).empty())
        Fail(err::AdoArguments, u"Arguments are of the wrong type, are out of acceptable range, or are in conflict "
                                u"with one another.");
    std::shared_ptr<Backend> b = detail::MakeBackend(text);
    Guarded(errors_.get(), [&] { b->Open(text, connectionTimeout_); });
    backend_ = std::move(b);
}

void Connection::Close() {
    if (State() != adStateOpen) Fail(err::AdoNotAllowedClosed, u"Operation is not allowed when the object is closed.");
    CancelFetches();
    backend_->Close();
    backend_.reset();
}

int32_t Connection::State() const { return backend_ && backend_->IsOpen() ? adStateOpen : adStateClosed; }

Ref<Recordset> Connection::Execute(const String& commandText, int32_t& recordsAffected, int32_t options) {
    return ExecuteWith(commandText, {}, recordsAffected, options);
}

Ref<Recordset> Connection::ExecuteWith(const String& commandText, const std::vector<Ref<Parameter>>& params,
                                       int32_t& recordsAffected, int32_t options) {
    Backend& b = RequireOpen();
    ForgetFinishedFetches();
    return Guarded(errors_.get(), [&]() -> Ref<Recordset> {
        int64_t affected = 0;
        std::unique_ptr<Cursor> cursor = b.Execute(commandText, params, affected, commandTimeout_);
        recordsAffected = Clamp(affected);
        if (options != adOptionUnspecified && (options & adExecuteNoRecords)) return nullptr;
        if (!cursor) {
            // A statement without rows still answers a (closed) rowset.
            auto rs = Ref<Recordset>::New();
            rs->CursorLocation(adUseClient);
            return rs;
        }
        return detail::DrainToRowset(*cursor);
    });
}

namespace detail {

// A statement's cursor read forward once, by values or by the store's text.
class CursorStream final : public Connection::RowStream, public Connection::TextStream {
public:
    CursorStream(std::shared_ptr<Backend> backend, std::unique_ptr<Cursor> cursor, Ref<ado::Errors> errors)
        : backend_(std::move(backend)), cursor_(std::move(cursor)), errors_(std::move(errors)) {}
    bool Next(std::vector<Variant>& row) override {
        if (!cursor_) return false;
        return Guarded(errors_.get(), [&] { return cursor_->Fetch(row); });
    }
    bool Next(TextRow& row) override {
        if (!cursor_) return false;
        return Guarded(errors_.get(), [&] { return cursor_->FetchText(row); });
    }

private:
    std::shared_ptr<Backend> backend_; // outlives the cursor
    std::unique_ptr<Cursor> cursor_;   // none for a statement without rows
    Ref<ado::Errors> errors_;
};

} // namespace detail

std::unique_ptr<detail::CursorStream> Connection::OpenStream(const String& statement, bool asText) {
    Backend& b = RequireOpen();
    ForgetFinishedFetches();
    return Guarded(errors_.get(), [&] {
        int64_t affected = 0;
        std::unique_ptr<Cursor> cursor = asText ? b.ExecuteForText(statement, commandTimeout_)
                                                : b.Execute(statement, {}, affected, commandTimeout_);
        return std::make_unique<detail::CursorStream>(backend_, std::move(cursor), errors_);
    });
}

std::unique_ptr<Connection::RowStream> Connection::OpenRowStream(const String& statement) {
    return OpenStream(statement, false);
}

std::unique_ptr<Connection::TextStream> Connection::OpenTextStream(const String& statement) {
    return OpenStream(statement, true);
}

int64_t Connection::BulkLoad(const String& statement, const std::function<size_t(char*, size_t)>& feed) {
    Backend& b = RequireOpen();
    ForgetFinishedFetches();
    return Guarded(errors_.get(), [&] { return b.BulkLoad(statement, feed); });
}

bool Connection::TakesRowBatches() {
    Backend& b = RequireOpen();
    return Guarded(errors_.get(), [&] { return b.TakesRowBatches(); });
}

std::unique_ptr<RowBatch> Connection::NewRowBatch(const String& statement) {
    Backend& b = RequireOpen();
    return Guarded(errors_.get(), [&] { return b.NewRowBatch(statement); });
}

int64_t Connection::SendRowBatch(RowBatch& batch) {
    Backend& b = RequireOpen();
    return Guarded(errors_.get(), [&] { return b.SendRowBatch(batch); });
}

Ref<Recordset> Connection::OpenRecordset(const String& source, int32_t options) {
    Backend& b = RequireOpen();
    ForgetFinishedFetches();
    bool async = options != adOptionUnspecified && (options & (adAsyncExecute | adAsyncFetch));
    if (!async) {
        int32_t n = 0;
        return Execute(source, n);
    }
    auto job = std::make_shared<detail::AsyncFetch>(backend_, source, commandTimeout_);
    (void)b;
    job->Start();
    const std::vector<ColumnInfo>* cols = nullptr;
    Guarded(errors_.get(), [&] { cols = &job->WaitExecuted(); });
    auto rs = detail::RowsetFor(*cols);
    if (cols->empty()) return rs; // no rows to come: a closed rowset, as for Execute
    rs->Open();
    fetches_.push_back(job);
    // The feed lives inside the rowset, so a plain pointer back to it is
    // safe; the connection is held weakly, only to report a late failure.
    Recordset* target = rs.get();
    std::weak_ptr<Object> conn = weak_from_this();
    Ref<ado::Errors> errors = errors_;
    RowsetFeed::SetRowFeed(*rs,
        [job, target, conn, errors](size_t) -> bool {
            try {
                return job->Feed(*target);
            } catch (const ProviderFailure& pf) {
                RowsetFeed::FeedComplete(*target);
                RaiseProvider(pf, conn.expired() ? nullptr : errors.get());
            }
        },
        adStateFetching);
    return rs;
}

Ref<Recordset> Connection::OpenSchema(int32_t schema, const std::vector<Variant>& criteria) {
    Backend& b = RequireOpen();
    return Guarded(errors_.get(), [&] { return b.OpenSchema(schema, criteria); });
}

void Connection::CancelFetches() {
    for (auto& w : fetches_)
        if (auto job = w.lock()) job->Stop();
    fetches_.clear();
}

int32_t Connection::ParameterMarks(StringView sql) const {
    return backend_ && backend_->IsOpen() ? backend_->ParameterMarks(sql) : CountParameterMarks(sql);
}

void Connection::ForgetFinishedFetches() {
    std::erase_if(fetches_, [](const std::weak_ptr<detail::AsyncFetch>& w) { return w.expired(); });
}

// ---- Command -------------------------------------------------------------------

void Command::ActiveConnection(Ref<Connection> c) { connection_ = std::move(c); }

void Command::CommandText(String t) {
    text_ = std::move(t);
    derived_ = false;
    params_.Clear();
}

ado::Parameters& Command::Parameters() {
    if (!derived_) {
        params_.Clear();
        int32_t n = connection_ ? connection_->ParameterMarks(text_) : CountParameterMarks(text_);
        for (int32_t i = 0; i < n; ++i)
            params_.Append(Ref<Parameter>::New(u"Param" + IntText(i + 1), adType::VarWChar, adParamInput, 0, Variant::Null()));
        derived_ = true;
    }
    return params_;
}

Ref<Recordset> Command::Execute(int32_t& recordsAffected, int32_t options) {
    if (!connection_)
        RaisePlatformFrom(adErrInvalidConnection, u"ADODB.Command",
                          u"The connection cannot be used to perform this operation. It is either closed or invalid in "
                          u"this context.");
    std::vector<Ref<Parameter>> params = Parameters().All();
    return connection_->ExecuteWith(text_, params, recordsAffected, options);
}

namespace detail {

std::vector<size_t> ParameterMarkPositions(StringView sql) {
    std::vector<size_t> marks;
    size_t i = 0, len = sql.size();
    while (i < len) {
        char16_t c = sql[i];
        if (c == u'\'' || c == u'"' || c == u'`') {
            // Quoted text or name: a doubled quote, or a back-slash in text,
            // does not end it.
            ++i;
            while (i < len) {
                if (c != u'`' && sql[i] == u'\\') { i += 2; continue; }
                if (sql[i] == c) {
                    if (i + 1 < len && sql[i + 1] == c) { i += 2; continue; }
                    break;
                }
                ++i;
            }
            ++i;
        } else if (c == u'-' && i + 1 < len && sql[i + 1] == u'-') {
            while (i < len && sql[i] != u'\n') ++i;
        } else if (c == u'#') {
            while (i < len && sql[i] != u'\n') ++i;
        } else if (c == u'/' && i + 1 < len && sql[i + 1] == u'*') {
            size_t e = sql.find(u"*/", i + 2);
            i = e == StringView::npos ? len : e + 2;
        } else {
            if (c == u'?') marks.push_back(i);
            ++i;
        }
    }
    return marks;
}

} // namespace detail

int32_t CountParameterMarks(StringView sql) { return static_cast<int32_t>(detail::ParameterMarkPositions(sql).size()); }

} // namespace zolsdk::ado
