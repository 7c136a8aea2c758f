// MySQL-family servers on the MariaDB client library. The connection text
// is the one the MySQL session builds for its ODBC driver; its keys keep
// their meaning here (login.hpp). Results stream from the server: a cursor
// holds one row at a time. A result read in the background (fill mode 3)
// streams on a connection of its own, opened with the same login and kept
// for the next one, so that the statements the caller runs meanwhile (the
// row count of a data set, say) neither wait for it nor make it keep its
// rows in memory. On the main connection, a statement that comes while a
// cursor is still reading makes that cursor keep the rest of its rows.
// Every call on one connection is made under its lock.
//
// A background result sees what every connection sees: committed rows.
// The library runs no engine transactions; a caller that opens one by
// statement and reads its own uncommitted rows in fill mode 3 would not
// see them, and temporary tables of the main connection are not there.
#include <mysql.h>
#include <ma_pvio.h>
#include <mysqld_error.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>

#include "platform/ado/backend.hpp"
#include "platform/ado/mariadb/binary_rows.hpp"
#include "platform/ado/mariadb/login.hpp"
#include "platform/ado/mariadb/param_arrays.hpp"
#include "platform/ado/mariadb/result_fields.hpp"
#include "platform/ado/mariadb/statement_text.hpp"

namespace zolsdk::ado::detail {

namespace {

class MariaDbCursor;
struct StreamPool;

// What one open connection shares with its cursors.
struct Link {
    std::mutex lock;
    MYSQL* db = nullptr;
    // Bumped at each close: cursors of an older generation lost their result.
    uint64_t generation = 0;
    // The cursor whose result is still arriving on this connection.
    MariaDbCursor* streaming = nullptr;
    MariaDbLogin login;
    unsigned long threadId = 0;
    int32_t loginTimeout = 15;
};

// The background connections of one backend: those free for the next
// result, and all of them, to close with the backend.
struct StreamPool {
    std::mutex lock;
    std::vector<std::shared_ptr<Link>> idle, all;
    void Give(std::shared_ptr<Link> link) {
        std::lock_guard<std::mutex> g(lock);
        idle.push_back(std::move(link));
    }
};

[[noreturn]] void ThrowServer(MYSQL* db) {
    ProviderError e;
    e.native = static_cast<int32_t>(mysql_errno(db));
    e.sqlState = FromUtf8(mysql_sqlstate(db));
    e.message = FromUtf8(mysql_error(db));
    throw ProviderFailure({std::move(e)});
}

// The warnings of the last statement as a failure, the first ones first.
[[noreturn]] void ThrowWarnings(MYSQL* db) {
    unsigned count = mysql_warning_count(db);
    std::vector<ProviderError> errors;
    static constexpr char kSql[] = "SHOW WARNINGS LIMIT 10";
    if (mysql_real_query(db, kSql, sizeof kSql - 1) == 0) {
        if (MYSQL_RES* res = mysql_store_result(db)) {
            while (MYSQL_ROW r = mysql_fetch_row(res)) {
                ProviderError e;
                e.native = r[1] ? std::atoi(r[1]) : 0;
                e.sqlState = u"01000";
                e.message = FromUtf8(r[0] ? r[0] : "") + u" " + FromUtf8(r[1] ? r[1] : "") + u": " +
                            FromUtf8(r[2] ? r[2] : "");
                errors.push_back(std::move(e));
            }
            mysql_free_result(res);
        }
    }
    if (errors.empty()) errors.push_back({0, u"01000", u"the server gave warnings"});
    // The first text says them all: callers often show only that one.
    String all = errors.front().message;
    for (size_t i = 1; i < errors.size() && i < 3; ++i) all += u"; " + errors[i].message;
    if (count > 3) all += u" (" + FromUtf8(std::to_string(count)) + u" warnings in all)";
    errors.front().message = std::move(all);
    throw ProviderFailure(std::move(errors));
}

[[noreturn]] void ThrowNotOpen() { throw ProviderFailure({{0, u"08003", u"Connection not open"}}); }

// Results after the first (of a procedure call) are read and dropped, so
// the connection is ready for the next statement.
void SkipMoreResults(MYSQL* db) {
    while (mysql_more_results(db)) {
        if (mysql_next_result(db) > 0) ThrowServer(db);
        if (MYSQL_RES* r = mysql_use_result(db)) mysql_free_result(r);
    }
}

// The data of a bulk load comes from the caller's feed, never from a file:
// a connection without a load running refuses the server's ask for one.
struct LoadFeed {
    const std::function<size_t(char*, size_t)>* feed = nullptr;
    std::exception_ptr failure;
};

int LoadInit(void** ptr, const char*, void* userdata) {
    *ptr = userdata;
    return userdata ? 0 : 1;
}

int LoadRead(void* ptr, char* buf, unsigned int size) {
    auto* f = static_cast<LoadFeed*>(ptr);
    try {
        return static_cast<int>((*f->feed)(buf, size));
    } catch (...) {
        f->failure = std::current_exception();
        return -1;
    }
}

void LoadEnd(void*) {}

int LoadError(void* ptr, char* buf, unsigned int size) {
    const char* text = ptr ? "the rows of the load could not be made" : "this client sends no files";
    std::snprintf(buf, size, "%s", text);
    return 2000;
}

void FeedLoadsFrom(MYSQL* db, LoadFeed* feed) {
    mysql_set_local_infile_handler(db, LoadInit, LoadRead, LoadEnd, LoadError, feed);
}

// A bounded connection of its own (for KILL QUERY): the login of `link`,
// waits cut at the login timeout.
MYSQL* Connect(const MariaDbLogin& login, int32_t loginTimeout, bool forStatements);

class MariaDbCursor final : public Cursor {
public:
    MariaDbCursor(std::shared_ptr<Link> link, MYSQL_RES* res, std::vector<ResultField> fields,
                  std::shared_ptr<StreamPool> pool = nullptr)
        : link_(std::move(link)), pool_(std::move(pool)), res_(res), gen_(link_->generation), fields_(std::move(fields)) {
        cols_.reserve(fields_.size());
        for (const ResultField& f : fields_) cols_.push_back(f.info);
        cells_.resize(fields_.size());
        lengths_.resize(fields_.size());
        link_->streaming = this;
    }
    // A statement read in the server's binary form (BinaryRows).
    MariaDbCursor(std::shared_ptr<Link> link, std::unique_ptr<BinaryRows> rows, std::shared_ptr<StreamPool> pool = nullptr)
        : MariaDbCursor(std::move(link), nullptr, rows->Fields(), std::move(pool)) {
        binary_ = std::move(rows);
    }
    ~MariaDbCursor() override {
        if (!Streaming()) {
            std::lock_guard<std::mutex> g(link_->lock);
            Release();
            return;
        }
        // Rows still on their way: stop the statement rather than read them all.
        Cancel();
        std::lock_guard<std::mutex> g(link_->lock);
        Release();
    }

    const std::vector<ColumnInfo>& Columns() const override { return cols_; }

    bool Fetch(std::vector<Variant>& row) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!NextCells()) return false;
        row.clear();
        row.reserve(fields_.size());
        for (size_t i = 0; i < fields_.size(); ++i) row.push_back(DecodeCell(fields_[i].kind, cells_[i], lengths_[i]));
        return true;
    }

    bool FetchText(TextRow& row) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!NextCells()) return false;
        row.values = cells_.data();
        row.lengths = lengths_.data();
        row.columns = cells_.size();
        // A held row kept only its bytes.
        row.wire = binary_ && !heldRow_ ? binary_->Wire() : nullptr;
        return true;
    }

    // From any thread: asks the server to stop the statement from a second
    // connection; the next fetch then ends.
    void Cancel() override {
        bool expected = false;
        if (!cancelled_.compare_exchange_strong(expected, true) || !Streaming()) return;
        // Without the lock: a fetch may be waiting on the server under it.
        // The login and the thread id are fixed while the connection is open.
        if (MYSQL* side = Connect(link_->login, link_->loginTimeout, false)) {
            std::string kill = "KILL QUERY " + std::to_string(link_->threadId);
            mysql_real_query(side, kill.data(), kill.size());
            mysql_close(side);
        }
    }

    // The connection closes under a result still arriving: stop the
    // statement and let go of the result first. The caller holds the lock.
    void Abandon() {
        if (!Reading()) return;
        Cancel();
        CloseResult();
        ended_ = true;
        link_->streaming = nullptr;
    }

    // Another statement needs the connection: keep what is left of this
    // result. The caller holds the lock.
    void HoldRest() {
        while (Reading() && ReadCells()) {
            HeldRow h;
            for (size_t i = 0; i < cells_.size(); ++i) {
                h.lengths.push_back(cells_[i] ? static_cast<long>(lengths_[i]) : -1);
                if (cells_[i]) h.bytes.append(cells_[i], lengths_[i]);
            }
            held_.push_back(std::move(h));
        }
    }

private:
    std::shared_ptr<Link> link_;
    std::shared_ptr<StreamPool> pool_; // set when the link is a background connection
    MYSQL_RES* res_;                    // the rows as the server's text, or
    std::unique_ptr<BinaryRows> binary_; // in its binary form
    uint64_t gen_;
    std::vector<ResultField> fields_;
    std::vector<ColumnInfo> cols_;
    // A row kept off the wire: its cells' bytes one after another, each
    // cell's length (-1 for Null).
    struct HeldRow {
        std::string bytes;
        std::vector<long> lengths;
    };
    std::deque<HeldRow> held_;
    HeldRow current_;                   // the held row the cells point into
    bool heldRow_ = false;              // whether the cells are of a held row
    std::vector<const char*> cells_;    // the row being read: null for Null
    std::vector<unsigned long> lengths_;
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> ended_{false};

    bool Alive() const { return link_->db && link_->generation == gen_; }
    bool Streaming() const { return !ended_.load(); }

    // Points the cells at the next row, held or off the wire. The lock is held.
    bool NextCells() {
        heldRow_ = !held_.empty();
        if (heldRow_) {
            current_ = std::move(held_.front());
            held_.pop_front();
            size_t at = 0;
            for (size_t i = 0; i < current_.lengths.size(); ++i) {
                long n = current_.lengths[i];
                cells_[i] = n < 0 ? nullptr : current_.bytes.data() + at;
                lengths_[i] = n < 0 ? 0 : static_cast<unsigned long>(n);
                at += n < 0 ? 0 : static_cast<size_t>(n);
            }
            return true;
        }
        if (!Reading()) return false;
        if (!Alive()) ThrowNotOpen();
        return ReadCells();
    }

    // Reads one row off the wire into the cells, or ends the result. The
    // lock is held.
    bool ReadCells() {
        if (binary_) {
            BinaryRows::Fetched got = binary_->Fetch();
            if (got == BinaryRows::Fetched::Row) {
                cells_.assign(binary_->Cells(), binary_->Cells() + fields_.size());
                lengths_.assign(binary_->Lengths(), binary_->Lengths() + fields_.size());
                return true;
            }
            return Ended(got == BinaryRows::Fetched::Failed ? binary_->Errno() : 0);
        }
        MYSQL_ROW r = mysql_fetch_row(res_);
        if (!r) return Ended(mysql_errno(link_->db));
        const unsigned long* lengths = mysql_fetch_lengths(res_);
        cells_.assign(r, r + fields_.size());
        lengths_.assign(lengths, lengths + fields_.size());
        return true;
    }

    // No more rows came, with the server's error number `err` (0 for none).
    bool Ended(unsigned err) {
        bool interrupted = cancelled_ && (err == ER_QUERY_INTERRUPTED || err == ER_STATEMENT_TIMEOUT);
        if (err && !interrupted) {
            // A lost server or a refusal half-way is a failure, never the
            // end of a short table.
            ProviderFailure failure = Failure();
            Finish();
            throw failure;
        }
        Finish();
        return false;
    }

    ProviderFailure Failure() const {
        ProviderError e;
        e.native = static_cast<int32_t>(binary_ ? binary_->Errno() : mysql_errno(link_->db));
        e.sqlState = FromUtf8(binary_ ? binary_->SqlState() : mysql_sqlstate(link_->db));
        e.message = FromUtf8(binary_ ? binary_->Error() : mysql_error(link_->db));
        return ProviderFailure({std::move(e)});
    }

    bool Reading() const { return res_ || binary_; }

    // Lets go of the result (reading what a stopped statement still sent).
    void CloseResult() {
        if (res_) mysql_free_result(res_);
        res_ = nullptr;
        binary_.reset();
    }

    // The result is read to its end: free it and ready the connection.
    void Finish() {
        if (!Reading()) return;
        CloseResult();
        ended_ = true;
        if (link_->streaming == this) link_->streaming = nullptr;
        if (Alive()) {
            try {
                SkipMoreResults(link_->db);
            } catch (const ProviderFailure&) {
                // The statement's own rows are complete; a later result's
                // refusal belongs to nobody here.
            }
        }
        GiveBack();
    }

    // A background connection whose result is over serves the next one.
    void GiveBack() {
        if (pool_ && Alive()) pool_->Give(link_);
        pool_.reset();
    }

    // The lock is held.
    void Release() {
        if (Reading() && Alive()) {
            CloseResult();
            SkipMoreResults(link_->db);
        }
        res_ = nullptr;
        binary_.reset();
        ended_ = true;
        if (link_->streaming == this) link_->streaming = nullptr;
        held_.clear();
        GiveBack();
    }
};

MYSQL* Connect(const MariaDbLogin& login, int32_t loginTimeout, bool forStatements) {
    MYSQL* db = mysql_init(nullptr);
    if (!db) return nullptr;
    // The connect and the handshake wait at most the login timeout.
    unsigned int wait = loginTimeout > 0 ? static_cast<unsigned int>(loginTimeout) : 0;
    if (wait > 0) {
        mysql_optionsv(db, MYSQL_OPT_CONNECT_TIMEOUT, &wait);
        mysql_optionsv(db, MYSQL_OPT_READ_TIMEOUT, &wait);
        mysql_optionsv(db, MYSQL_OPT_WRITE_TIMEOUT, &wait);
    }
    mysql_optionsv(db, MYSQL_SET_CHARSET_NAME, "utf8mb4");
    if (forStatements) {
        if (login.option & mysqlOption::BigPackets) {
            unsigned long big = 1024UL * 1024 * 1024;
            mysql_optionsv(db, MYSQL_OPT_MAX_ALLOWED_PACKET, &big);
        }
        if (login.Compress()) mysql_optionsv(db, MYSQL_OPT_COMPRESS, nullptr);
        unsigned int local = 1;
        mysql_optionsv(db, MYSQL_OPT_LOCAL_INFILE, &local);
        // A streamed result waits on its reader: the server must not give
        // up on a reader that pauses (a slow target, a caller at work).
        mysql_optionsv(db, MYSQL_INIT_COMMAND, "SET SESSION net_write_timeout = 31536000");
    }
    unsigned long flags = CLIENT_MULTI_RESULTS;
    if (login.option & mysqlOption::FoundRows) flags |= CLIENT_FOUND_ROWS;
    if (login.option & mysqlOption::MultiStatements) flags |= CLIENT_MULTI_STATEMENTS;
    const char* host = login.host.empty() ? "localhost" : login.host.c_str();
    const char* socket = login.socket.empty() ? nullptr : login.socket.c_str();
    const char* database = login.database.empty() ? nullptr : login.database.c_str();
    if (!mysql_real_connect(db, host, login.user.c_str(), login.password.c_str(), database, login.port, socket, flags)) {
        if (!forStatements) {
            mysql_close(db);
            return nullptr;
        }
        ProviderError e{static_cast<int32_t>(mysql_errno(db)), FromUtf8(mysql_sqlstate(db)), FromUtf8(mysql_error(db))};
        mysql_close(db);
        // Some client-side texts (a server that accepts and never answers) name no
        // server; the user must learn which one did not answer.
        if (e.native >= 2000 && e.message.find(FromUtf8(host)) == String::npos)
            e.message += u" (server " + FromUtf8(host) + u":" + FromUtf8(std::to_string(login.port)) + u")";
        throw ProviderFailure({std::move(e)});
    }
    if (forStatements) FeedLoadsFrom(db, nullptr);
    // Statements themselves run as long as they need.
    if (MARIADB_PVIO* pvio = db->net.pvio; pvio && pvio->methods && pvio->methods->set_timeout) {
        pvio->methods->set_timeout(pvio, PVIO_READ_TIMEOUT, 0);
        pvio->methods->set_timeout(pvio, PVIO_WRITE_TIMEOUT, 0);
    }
    return db;
}

// Opens `link` on a new connection; the caller holds its lock.
void OpenLink(Link& link, MariaDbLogin login, int32_t loginTimeout) {
    link.db = Connect(login, loginTimeout, true);
    link.login = std::move(login);
    link.loginTimeout = loginTimeout;
    link.threadId = mysql_thread_id(link.db);
}

// Closes `link`, stopping a result still arriving; the caller holds its lock.
void CloseLink(Link& link) {
    if (!link.db) return;
    if (link.streaming) link.streaming->Abandon();
    mysql_close(link.db);
    link.db = nullptr;
    link.streaming = nullptr;
    ++link.generation;
}

// Runs `sql` on `link` (locked by the caller) and gives its rows as a
// streaming cursor, or nothing for a statement without rows.
std::unique_ptr<Cursor> Run(const std::shared_ptr<Link>& link, const std::string& text, int64_t& affected,
                            std::shared_ptr<StreamPool> pool) {
    MYSQL* db = link->db;
    if (mysql_real_query(db, text.data(), text.size()) != 0) ThrowServer(db);
    if (mysql_field_count(db) == 0) {
        affected = static_cast<int64_t>(mysql_affected_rows(db));
        SkipMoreResults(db);
        if (pool) pool->Give(link);
        return nullptr;
    }
    affected = -1;
    MYSQL_RES* res = mysql_use_result(db);
    if (!res) ThrowServer(db);
    unsigned n = mysql_num_fields(res);
    MYSQL_FIELD* f = mysql_fetch_fields(res);
    std::vector<ResultField> fields;
    fields.reserve(n);
    for (unsigned i = 0; i < n; ++i) fields.push_back(DescribeField(f[i]));
    return std::make_unique<MariaDbCursor>(link, res, std::move(fields), std::move(pool));
}

// The connection's current database ("" for none); the caller holds its lock.
std::string CurrentDatabase(MYSQL* db) {
    static constexpr char kSql[] = "SELECT DATABASE()";
    if (mysql_real_query(db, kSql, sizeof kSql - 1) != 0) ThrowServer(db);
    MYSQL_RES* res = mysql_store_result(db);
    if (!res) ThrowServer(db);
    std::string name;
    if (MYSQL_ROW r = mysql_fetch_row(res); r && r[0]) name.assign(r[0], mysql_fetch_lengths(res)[0]);
    mysql_free_result(res);
    return name;
}

// A batch of rows for one INSERT on a connection: its statement is
// prepared at the first send and closed with the batch, under the
// connection's lock.
class LinkedBatch final : public ParamArrays {
public:
    LinkedBatch(std::shared_ptr<Link> link, std::string sql) : link_(std::move(link)), sql_(std::move(sql)) {}
    ~LinkedBatch() override {
        std::lock_guard<std::mutex> g(link_->lock);
        // A statement of a closed connection is only freed.
        if (stmt_) mysql_stmt_close(stmt_);
    }

    bool On(const std::shared_ptr<Link>& link) const { return link_ == link; }

    int64_t Send() {
        std::lock_guard<std::mutex> g(link_->lock);
        MYSQL* db = link_->db;
        if (!db) ThrowNotOpen();
        if (link_->streaming) link_->streaming->HoldRest();
        if (stmt_ && gen_ != link_->generation) {
            mysql_stmt_close(stmt_);
            stmt_ = nullptr;
        }
        if (!stmt_) {
            stmt_ = mysql_stmt_init(db);
            if (!stmt_) ThrowServer(db);
            gen_ = link_->generation;
            if (mysql_stmt_prepare(stmt_, sql_.data(), sql_.size()) != 0) Fail();
        }
        if (!Execute(stmt_)) Fail();
        auto taken = static_cast<int64_t>(mysql_stmt_affected_rows(stmt_));
        if (mysql_warning_count(db) > 0) ThrowWarnings(db);
        return taken;
    }

private:
    std::shared_ptr<Link> link_;
    std::string sql_;
    MYSQL_STMT* stmt_ = nullptr;
    uint64_t gen_ = 0;

    [[noreturn]] void Fail() {
        ProviderError e{static_cast<int32_t>(mysql_stmt_errno(stmt_)), FromUtf8(mysql_stmt_sqlstate(stmt_)),
                        FromUtf8(mysql_stmt_error(stmt_))};
        throw ProviderFailure({std::move(e)});
    }
};

class MariaDbBackend final : public Backend {
public:
    MariaDbBackend() : link_(std::make_shared<Link>()), pool_(std::make_shared<StreamPool>()) {}
    ~MariaDbBackend() override { Close(); }

    void Open(const String& connectionText, int32_t loginTimeout) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (link_->db) return;
        OpenLink(*link_, ReadMariaDbLogin(connectionText), loginTimeout);
    }

    void Close() override {
        std::vector<std::shared_ptr<Link>> all;
        {
            std::lock_guard<std::mutex> g(pool_->lock);
            all.swap(pool_->all);
            pool_->idle.clear();
        }
        for (auto& l : all) {
            std::lock_guard<std::mutex> g(l->lock);
            CloseLink(*l);
        }
        std::lock_guard<std::mutex> g(link_->lock);
        CloseLink(*link_);
    }

    bool IsOpen() const override { return link_->db != nullptr; }

    // The command timeout is not applied: the library's statements (a
    // long export, a large batch) run as long as they need; only the login
    // is bounded.
    std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params, int64_t& affected,
                                    int32_t) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->db) ThrowNotOpen();
        if (link_->streaming) link_->streaming->HoldRest();
        return Run(link_, StatementText(link_->db, sql, params), affected, nullptr);
    }

    // Read in the server's binary form: the server writes no number or date
    // out as text, and FetchText gives them as text the server reads back.
    std::unique_ptr<Cursor> ExecuteForText(const String& sql, int32_t) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->db) ThrowNotOpen();
        if (link_->streaming) link_->streaming->HoldRest();
        auto rows = std::make_unique<BinaryRows>(link_->db, StatementText(link_->db, sql, {}));
        if (!rows->Started()) {
            ProviderError e{static_cast<int32_t>(rows->Errno()), FromUtf8(rows->SqlState()), FromUtf8(rows->Error())};
            throw ProviderFailure({std::move(e)});
        }
        if (rows->Fields().empty()) return nullptr;
        return std::make_unique<MariaDbCursor>(link_, std::move(rows));
    }

    std::unique_ptr<Cursor> ExecuteInBackground(const String& sql, int32_t) override {
        std::string text, database;
        MariaDbLogin login;
        int32_t timeout = 15;
        {
            // The main connection's current database, which a statement may
            // have changed since the login.
            std::lock_guard<std::mutex> g(link_->lock);
            if (!link_->db) ThrowNotOpen();
            if (link_->streaming) link_->streaming->HoldRest();
            text = StatementText(link_->db, sql, {});
            login = link_->login;
            timeout = link_->loginTimeout;
            database = CurrentDatabase(link_->db);
        }
        std::shared_ptr<Link> link;
        {
            std::lock_guard<std::mutex> g(pool_->lock);
            if (!pool_->idle.empty()) {
                link = std::move(pool_->idle.back());
                pool_->idle.pop_back();
            }
        }
        if (!link) {
            link = std::make_shared<Link>();
            login.database = database;
            std::lock_guard<std::mutex> g(link->lock);
            OpenLink(*link, std::move(login), timeout);
            std::lock_guard<std::mutex> p(pool_->lock);
            pool_->all.push_back(link);
        }
        std::lock_guard<std::mutex> g(link->lock);
        if (!link->db) ThrowNotOpen();
        if (!database.empty() && (!link->db->db || database != link->db->db) &&
            mysql_select_db(link->db, database.c_str()) != 0)
            ThrowServer(link->db);
        int64_t affected = 0;
        try {
            return Run(link, text, affected, pool_);
        } catch (const ProviderFailure&) {
            pool_->Give(link); // a refused statement leaves the connection ready
            throw;
        }
    }

    // LOAD DATA LOCAL from the caller's feed. The server turns what would
    // be errors of an INSERT into warnings here (it cannot stop the data
    // midway), so any warning fails the load with the server's texts.
    int64_t BulkLoad(const String& sql, const std::function<size_t(char*, size_t)>& feed) override {
        std::lock_guard<std::mutex> g(link_->lock);
        MYSQL* db = link_->db;
        if (!db) ThrowNotOpen();
        if (link_->streaming) link_->streaming->HoldRest();
        std::string text = StatementText(db, sql, {});
        LoadFeed f{&feed, nullptr};
        FeedLoadsFrom(db, &f);
        int rc = mysql_real_query(db, text.data(), text.size());
        FeedLoadsFrom(db, nullptr);
        if (f.failure) {
            SkipMoreResults(db);
            std::rethrow_exception(f.failure);
        }
        if (rc != 0) ThrowServer(db);
        auto taken = static_cast<int64_t>(mysql_affected_rows(db));
        SkipMoreResults(db);
        if (mysql_warning_count(db) > 0) ThrowWarnings(db);
        return taken;
    }

    // MariaDB servers run an INSERT for an array of parameters in one
    // go; other servers of the family do not.
    bool TakesRowBatches() override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->db) ThrowNotOpen();
        unsigned long long extended = 0;
        mariadb_get_infov(link_->db, MARIADB_CONNECTION_EXTENDED_SERVER_CAPABILITIES, &extended);
        return extended & (MARIADB_CLIENT_STMT_BULK_OPERATIONS >> 32);
    }

    std::unique_ptr<RowBatch> NewRowBatch(const String& sql) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->db) ThrowNotOpen();
        return std::make_unique<LinkedBatch>(link_, StatementText(link_->db, sql, {}));
    }

    int64_t SendRowBatch(RowBatch& batch) override {
        auto* linked = dynamic_cast<LinkedBatch*>(&batch);
        if (!linked || !linked->On(link_))
            throw ProviderFailure({{0, u"HY024", u"The batch was made for another connection"}});
        return linked->Send();
    }

    Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria) override {
        return MySqlOpenSchema(*this, schema, criteria);
    }

private:
    std::shared_ptr<Link> link_;
    std::shared_ptr<StreamPool> pool_;
};

} // namespace

std::shared_ptr<Backend> MakeMariaDbBackend() { return std::make_shared<MariaDbBackend>(); }

} // namespace zolsdk::ado::detail
