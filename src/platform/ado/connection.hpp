#pragma once
// Connections to a store, statements, bound parameters and the provider's
// error list. A connection text that starts with "Driver=" (or "Driver={")
// is handed to the ODBC driver manager; the driver named in it must be
// registered in the ODBC installation.
//
// Results come back as client-side rowsets (ado::Recordset) that live on
// after the connection closes. The one exception is an asynchronous open
// (OpenRecordset with adAsyncExecute/adAsyncFetch): its rowset is fed by a
// background fetch on the connection until the last row has been moved in.
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "zolsdk/platform/ado/parameter.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado {

// Options of Execute and Open.
constexpr int32_t adOptionUnspecified = -1;
constexpr int32_t adCmdText = 1;
constexpr int32_t adAsyncExecute = 16;
constexpr int32_t adAsyncFetch = 32;
constexpr int32_t adExecuteNoRecords = 128;
constexpr int32_t adModeReadWrite = 3;
constexpr int32_t adUseServer = 2;

// Schema numbers of OpenSchema.
constexpr int32_t adSchemaColumns = 4;
constexpr int32_t adSchemaIndexes = 12;
constexpr int32_t adSchemaTables = 20;
constexpr int32_t adSchemaForeignKeys = 27;
constexpr int32_t adSchemaPrimaryKeys = 28;

// The number every provider failure carries (the platform's generic
// failure), and the source text of failures raised by the provider.
constexpr int32_t kProviderFailure = static_cast<int32_t>(0x80004005u);
inline constexpr char16_t kProviderSource[] = u"ODBC Provider";
// Failures of the connection object itself.
inline constexpr char16_t kConnectionSource[] = u"ADODB.Connection";
constexpr int32_t adErrFeatureNotAvailable = 3251;
constexpr int32_t adErrInvalidConnection = 3709;
constexpr int32_t adErrOperationCancelled = 3712;

class Error : public Object {
public:
    Error() = default;
    Error(int32_t number, int32_t nativeError, String source, String sqlState, String description)
        : number_(number), native_(nativeError), source_(std::move(source)), sqlState_(std::move(sqlState)),
          description_(std::move(description)) {}
    int32_t Number() const { return number_; }
    int32_t NativeError() const { return native_; }
    const String& Source() const { return source_; }
    const String& SQLState() const { return sqlState_; }
    const String& Description() const { return description_; }

private:
    int32_t number_ = 0, native_ = 0;
    String source_, sqlState_, description_;
};

// The provider's errors of the last failure on a connection.
class Errors : public Object {
public:
    int32_t Count() const { return static_cast<int32_t>(items_.size()); }
    // 0-based, as the platform's error list; 3265 out of range.
    Ref<ado::Error> Item(int32_t index) const;
    void Clear() { items_.clear(); }
    void Append(Ref<ado::Error> e) { items_.push_back(std::move(e)); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<Ref<ado::Error>> items_;
};

class Parameters {
public:
    int32_t Count() const { return static_cast<int32_t>(items_.size()); }
    // 0-based; 3265 out of range.
    Ref<Parameter> Item(int32_t index) const;
    void Append(Ref<Parameter> p) { items_.push_back(std::move(p)); }
    void Clear() { items_.clear(); }
    const std::vector<Ref<Parameter>>& All() const { return items_; }

private:
    std::vector<Ref<Parameter>> items_;
};

// A value as the store's client library holds it in binary form, for a
// writer to the same kind of store: `type` is that library's type code,
// `data` its bytes (a number's bits, a date's parts, a text's bytes).
struct WireCell {
    int type = 0;
    bool isUnsigned = false;
    const void* data = nullptr;
    unsigned long length = 0;
};

// One row as the store sent it: `values[i]` and `lengths[i]` are a
// column's bytes, `values[i]` null for Null. `wire`, when not null, is the
// same row in the client library's binary form, a cell a column.
struct TextRow {
    const char* const* values = nullptr;
    const unsigned long* lengths = nullptr;
    size_t columns = 0;
    const WireCell* wire = nullptr;
};

// The rows of one execution of an INSERT with a "?" a column, held in the
// form the store's client sends parameters in. Filled on one thread, sent
// (Connection::SendRowBatch) on another, never both at once.
class RowBatch {
public:
    virtual ~RowBatch() = default;
    // Adds a copy of the row; false, adding nothing, when the batch holds
    // rows of another form and must be sent first.
    virtual bool Add(const TextRow& row) = 0;
    virtual size_t Rows() const = 0;
    // About how many bytes the rows take.
    virtual size_t Bytes() const = 0;
    virtual void Clear() = 0;
};

namespace detail {
class Backend;
class CursorStream;
class AsyncFetch;
}

class Connection : public Object {
public:
    Connection();
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const String& ConnectionString() const { return connectionString_; }
    void ConnectionString(String s) { connectionString_ = std::move(s); }
    int32_t CursorLocation() const { return cursorLocation_; }
    void CursorLocation(int32_t v) { cursorLocation_ = v; }
    int32_t Mode() const { return mode_; }
    void Mode(int32_t v) { mode_ = v; }
    // Seconds a statement may run; 0 waits for ever.
    int32_t CommandTimeout() const { return commandTimeout_; }
    void CommandTimeout(int32_t v) { commandTimeout_ = v; }
    int32_t ConnectionTimeout() const { return connectionTimeout_; }
    void ConnectionTimeout(int32_t v) { connectionTimeout_ = v; }

    // Opens by the connection text (the argument when not empty). A refusal
    // fills Errors and raises the provider's failure.
    void Open(const String& connectionString = {}, const String& userId = {}, const String& password = {},
              int32_t options = adOptionUnspecified);
    // Closes; an asynchronous fetch still running is cancelled first (its
    // rowset keeps the rows moved in so far).
    void Close();
    // 0 closed, 1 open.
    int32_t State() const;

    // Runs a statement. With adExecuteNoRecords the result is nothing and
    // recordsAffected the count; otherwise a disconnected client-side rowset
    // (a closed one for a statement that gives no rows).
    Ref<Recordset> Execute(const String& commandText, int32_t& recordsAffected,
                           int32_t options = adOptionUnspecified);
    Ref<Recordset> Execute(const String& commandText) {
        int32_t n = 0;
        return Execute(commandText, n);
    }

    // Opens a rowset of the statement. With adAsyncExecute or adAsyncFetch
    // the rows are fetched by a background thread: the rowset's State shows
    // adStateFetching (with adStateOpen) until the last row has been moved
    // in, rows move in on the caller's thread as they are read, and reading
    // a row that has not arrived yet waits for it.
    Ref<Recordset> OpenRecordset(const String& source, int32_t options = adOptionUnspecified);

    // A schema rowset (adSchemaTables, adSchemaColumns, adSchemaIndexes,
    // adSchemaForeignKeys, adSchemaPrimaryKeys) with the usual field names;
    // criteria are the restriction values in the schema's order, an empty
    // or Empty value restricting nothing.
    Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria = {});

    const Ref<ado::Errors>& Errors() const { return errors_; }

    // Stops every asynchronous fetch on this connection.
    void CancelFetches();

    // The "?" marks of a statement as the open store's SQL reads them; by the
    // common rules (CountParameterMarks) while closed.
    int32_t ParameterMarks(StringView sql) const;

    // The rows of a statement one at a time, read forward once without a
    // rowset, for a caller that looks at each row once. The store's
    // failures are raised as by Execute, from Next as well.
    class RowStream {
    public:
        virtual ~RowStream() = default;
        // The next row into `row` (one value a column); false at the end.
        virtual bool Next(std::vector<Variant>& row) = 0;
    };
    std::unique_ptr<RowStream> OpenRowStream(const String& statement);

    // The rows of a statement as text the store reads back as the same
    // values (UTF-8 for text, the bytes themselves for binary values), for
    // a caller that passes values on to the same kind of store unchanged.
    // Only stores of the MySQL family give it; others raise.
    class TextStream {
    public:
        virtual ~TextStream() = default;
        // The next row into `row`, valid until the next call; false at the end.
        virtual bool Next(TextRow& row) = 0;
    };
    std::unique_ptr<TextStream> OpenTextStream(const String& statement);

    // Runs a bulk-load statement whose rows the client sends (on MySQL-family
    // servers "LOAD DATA LOCAL INFILE ..."): `feed` fills the buffer it is
    // given and answers how many bytes it put there, 0 at the end. A warning
    // of the server fails the load with the server's texts. Answers the rows
    // the server took. A failure thrown by `feed` comes out as it is.
    int64_t BulkLoad(const String& statement, const std::function<size_t(char*, size_t)>& feed);

    // Whether the store takes rows a batch at a time (RowBatch): on
    // MySQL-family servers, MariaDB servers do.
    bool TakesRowBatches();
    // An empty batch for `statement`, an INSERT with a "?" a column.
    std::unique_ptr<RowBatch> NewRowBatch(const String& statement);
    // Runs the batch's statement once for all its rows and answers the rows
    // taken; a warning of the server fails it with the server's texts.
    int64_t SendRowBatch(RowBatch& batch);

    // For Command: runs with bound parameters.
    Ref<Recordset> ExecuteWith(const String& commandText, const std::vector<Ref<Parameter>>& params,
                               int32_t& recordsAffected, int32_t options);

private:
    String connectionString_;
    int32_t cursorLocation_ = adUseServer;
    int32_t mode_ = 0;
    int32_t commandTimeout_ = 30;
    int32_t connectionTimeout_ = 15;
    Ref<ado::Errors> errors_;
    std::shared_ptr<detail::Backend> backend_;
    std::vector<std::weak_ptr<detail::AsyncFetch>> fetches_;

    detail::Backend& RequireOpen();
    std::unique_ptr<detail::CursorStream> OpenStream(const String& statement, bool asText);
    [[noreturn]] void Fail(int32_t number, StringView description);
    void ForgetFinishedFetches();
};

class Command : public Object {
public:
    const Ref<Connection>& ActiveConnection() const { return connection_; }
    void ActiveConnection(Ref<Connection> c);
    int32_t CommandType() const { return commandType_; }
    void CommandType(int32_t t) { commandType_ = t; }
    const String& CommandText() const { return text_; }
    void CommandText(String t);
    int32_t CommandTimeout() const { return timeout_; }
    void CommandTimeout(int32_t t) { timeout_ = t; }

    // Derived from the statement's "?" marks (outside quotes and comments)
    // the first time they are asked for; each starts as a wide text
    // parameter holding Null.
    ado::Parameters& Parameters();

    Ref<Recordset> Execute(int32_t& recordsAffected, int32_t options = adOptionUnspecified);

private:
    Ref<Connection> connection_;
    int32_t commandType_ = adCmdText;
    int32_t timeout_ = 30;
    String text_;
    ado::Parameters params_;
    bool derived_ = false;
};

// The number of "?" parameter marks in a statement, not counting those in
// quoted texts, quoted names or comments.
int32_t CountParameterMarks(StringView sql);

} // namespace zolsdk::ado
