#pragma once
// What a Connection needs from the access layer under it: open by a
// connection text, run a statement (with bound parameters) as a
// forward-only cursor, and answer schema questions. Each backend lives in
// its own folder (odbc/, mariadb/, jet/, sqlserver/); a connection text
// chooses its backend (backend_factory.cpp).
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/ado/connection.hpp"

namespace zolsdk::ado::detail {

struct ColumnInfo {
    String name;
    int32_t type = adType::VarWChar; // ADO type number
    int32_t size = 0;                // defined size (characters or bytes)
    uint8_t precision = 0;
    uint8_t scale = 0;
};

struct ProviderError {
    int32_t native = 0;
    String sqlState;
    String message;
};

// A refusal of the store or the driver: the list of its messages, first
// one first.
class ProviderFailure : public std::exception {
public:
    explicit ProviderFailure(std::vector<ProviderError> errors) : errors_(std::move(errors)) {}
    const std::vector<ProviderError>& Errors() const { return errors_; }
    String Description() const { return errors_.empty() ? String(u"Unspecified error") : errors_.front().message; }
    const char* what() const noexcept override { return "provider failure"; }

private:
    std::vector<ProviderError> errors_;
};

// The rows of one statement, read forward once.
class Cursor {
public:
    virtual ~Cursor() = default;
    virtual const std::vector<ColumnInfo>& Columns() const = 0;
    // Reads the next row into `row` (one Variant a column); false at the end.
    virtual bool Fetch(std::vector<Variant>& row) = 0;
    // The next row as the store's own text (Connection::TextStream); only
    // stores that send their values as text give it.
    virtual bool FetchText(TextRow&) { throw ProviderFailure({{0, u"HYC00", u"This provider gives no text rows"}}); }
    // Asks a running statement to stop; may be called from another thread.
    virtual void Cancel() = 0;
};

class Backend {
public:
    virtual ~Backend() = default;
    virtual void Open(const String& connectionText, int32_t loginTimeout) = 0;
    virtual void Close() = 0;
    virtual bool IsOpen() const = 0;
    // Runs a statement. A statement without a result set gives nothing and
    // the number of rows it touched in `affected` (-1 when unknown).
    virtual std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params,
                                            int64_t& affected, int32_t timeout) = 0;
    // A statement whose rows are read in the background while the caller
    // may run other statements on this backend.
    virtual std::unique_ptr<Cursor> ExecuteInBackground(const String& sql, int32_t timeout) {
        int64_t affected = 0;
        return Execute(sql, {}, affected, timeout);
    }
    // A statement whose rows are read by FetchText (Connection::OpenTextStream).
    virtual std::unique_ptr<Cursor> ExecuteForText(const String& sql, int32_t timeout) {
        int64_t affected = 0;
        return Execute(sql, {}, affected, timeout);
    }
    // A bulk load fed by the client (Connection::BulkLoad); the rows taken.
    virtual int64_t BulkLoad(const String&, const std::function<size_t(char*, size_t)>&) {
        throw ProviderFailure({{0, u"HYC00", u"This provider takes no bulk load"}});
    }
    // Rows a batch at a time (Connection::NewRowBatch).
    virtual bool TakesRowBatches() { return false; }
    virtual std::unique_ptr<RowBatch> NewRowBatch(const String&) {
        throw ProviderFailure({{0, u"HYC00", u"This provider takes no row batches"}});
    }
    virtual int64_t SendRowBatch(RowBatch&) {
        throw ProviderFailure({{0, u"HYC00", u"This provider takes no row batches"}});
    }
    virtual Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria) = 0;
    // The "?" marks of a statement as this store's SQL reads them (its
    // quotes, names and comments differ).
    virtual int32_t ParameterMarks(StringView sql) const { return CountParameterMarks(sql); }
};

// The backend for a connection text; raises 3706 (provider not found) when
// no backend serves it.
std::shared_ptr<Backend> MakeBackend(const String& connectionText);
// How a driver under the generic ODBC backend behaves where drivers differ.
struct OdbcOptions {
    // A statement may answer with row counts before its rows: skip them.
    bool countsBeforeRows = false;
};
// The unixODBC backend ("Driver=...", "DSN=...").
std::shared_ptr<Backend> MakeOdbcBackend(OdbcOptions options = {});
// MySQL-family servers, for the texts that name the MySQL driver
// ("Driver=MySQL ODBC 5.1 Driver;DATABASE=...;SERVER=...").
std::shared_ptr<Backend> MakeMariaDbBackend();
// Access files ("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=...").
std::shared_ptr<Backend> MakeJetBackend();
// SQL Server ("Provider=SQLOLEDB.1;..."), translated for the ODBC layer.
std::shared_ptr<Backend> MakeSqlServerBackend();

// Where the "?" marks of a statement stand (outside quotes and comments).
std::vector<size_t> ParameterMarkPositions(StringView sql);

// Fills a new disconnected rowset from a cursor, all rows at once.
Ref<Recordset> DrainToRowset(Cursor& cursor);
// A new rowset (closed) with the cursor's fields defined.
Ref<Recordset> RowsetFor(const std::vector<ColumnInfo>& columns);

// Schema rowsets of a MySQL-family server, built from INFORMATION_SCHEMA
// through `backend` itself.
Ref<Recordset> MySqlOpenSchema(Backend& backend, int32_t schema, const std::vector<Variant>& criteria);

} // namespace zolsdk::ado::detail
