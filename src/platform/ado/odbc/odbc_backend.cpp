// The generic ODBC backend: a connection text goes to the unixODBC driver
// manager through the wide-character calls, so text crosses as UTF-16 on
// both sides. Every driver call on one connection is made
// under that connection's lock: an asynchronous fetch reads its cursor on a
// background thread while the caller may run other statements.
#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "platform/ado/backend.hpp"
#include "platform/ado/odbc/odbc_catalog.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/decimal.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk::ado::detail {

namespace {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the driver manager must use 2-byte wide characters");

const SQLWCHAR* W(const String& s) { return reinterpret_cast<const SQLWCHAR*>(s.c_str()); }
SQLWCHAR* W(String& s) { return reinterpret_cast<SQLWCHAR*>(s.data()); }

// One environment for the process, made on first use.
SQLHENV Environment() {
    static SQLHENV env = [] {
        SQLHENV h = SQL_NULL_HENV;
        if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &h)))
            throw ProviderFailure({{0, u"HY001", u"[Driver Manager]Unable to allocate an environment handle"}});
        SQLSetEnvAttr(h, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        return h;
    }();
    return env;
}

std::vector<ProviderError> Diagnostics(SQLSMALLINT type, SQLHANDLE h) {
    std::vector<ProviderError> out;
    for (SQLSMALLINT i = 1;; ++i) {
        SQLWCHAR state[6] = {};
        SQLINTEGER native = 0;
        String msg(1024, u'\0');
        SQLSMALLINT len = 0;
        SQLRETURN rc = SQLGetDiagRecW(type, h, i, state, &native, W(msg), static_cast<SQLSMALLINT>(msg.size()), &len);
        if (rc == SQL_SUCCESS_WITH_INFO && len >= static_cast<SQLSMALLINT>(msg.size())) {
            msg.assign(static_cast<size_t>(len) + 1, u'\0');
            rc = SQLGetDiagRecW(type, h, i, state, &native, W(msg), static_cast<SQLSMALLINT>(msg.size()), &len);
        }
        if (!SQL_SUCCEEDED(rc)) break;
        msg.resize(std::min<size_t>(static_cast<size_t>(std::max<SQLSMALLINT>(len, 0)), msg.size()));
        ProviderError e;
        e.native = static_cast<int32_t>(native);
        e.sqlState = String(reinterpret_cast<const char16_t*>(state), 5);
        e.message = std::move(msg);
        out.push_back(std::move(e));
    }
    if (out.empty()) out.push_back({0, u"HY000", u"Unspecified error"});
    return out;
}

[[noreturn]] void ThrowDiag(SQLSMALLINT type, SQLHANDLE h) { throw ProviderFailure(Diagnostics(type, h)); }

int32_t AdoType(SQLSMALLINT sqlType, bool isUnsigned) {
    switch (sqlType) {
    case SQL_TINYINT: return isUnsigned ? adType::UnsignedTinyInt : adType::TinyInt;
    case SQL_SMALLINT: return isUnsigned ? adType::UnsignedSmallInt : adType::SmallInt;
    case SQL_INTEGER: return isUnsigned ? adType::UnsignedInt : adType::Integer;
    case SQL_BIGINT: return isUnsigned ? adType::UnsignedBigInt : adType::BigInt;
    case SQL_REAL: return adType::Single;
    case SQL_FLOAT: case SQL_DOUBLE: return adType::Double;
    case SQL_DECIMAL: case SQL_NUMERIC: return adType::Numeric;
    case SQL_TYPE_DATE: case SQL_DATE: return adType::DBDate;
    case SQL_TYPE_TIME: case SQL_TIME: return adType::DBTime;
    case SQL_TYPE_TIMESTAMP: case SQL_TIMESTAMP: return adType::DBTimeStamp;
    case SQL_BIT: return adType::Boolean;
    case SQL_CHAR: case SQL_WCHAR: return adType::WChar;
    case SQL_VARCHAR: case SQL_WVARCHAR: return adType::VarWChar;
    case SQL_LONGVARCHAR: case SQL_WLONGVARCHAR: return adType::LongVarWChar;
    case SQL_BINARY: return adType::Binary;
    case SQL_VARBINARY: return adType::VarBinary;
    case SQL_LONGVARBINARY: return adType::LongVarBinary;
    case SQL_GUID: return adType::GUID;
    default: return adType::VarWChar;
    }
}

bool IsBinaryType(int32_t t) { return t == adType::Binary || t == adType::VarBinary || t == adType::LongVarBinary; }

// What one open ODBC connection shares with its cursors.
struct Link {
    std::mutex lock;
    SQLHDBC dbc = SQL_NULL_HDBC;
    bool open = false;
    // Bumped at each disconnect: statements of an older generation were
    // freed with the connection.
    uint64_t generation = 0;
};

class OdbcCursor final : public Cursor {
public:
    OdbcCursor(std::shared_ptr<Link> link, SQLHSTMT stmt, std::vector<ColumnInfo> cols)
        : link_(std::move(link)), stmt_(stmt), gen_(link_->generation), cols_(std::move(cols)) {}
    ~OdbcCursor() override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (Alive()) SQLFreeHandle(SQL_HANDLE_STMT, stmt_);
    }
    const std::vector<ColumnInfo>& Columns() const override { return cols_; }

    bool Fetch(std::vector<Variant>& row) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (done_) return false;
        if (!Alive()) throw ProviderFailure({{0, u"08003", u"[Driver Manager]Connection not open"}});
        SQLRETURN rc = SQLFetch(stmt_);
        if (rc == SQL_NO_DATA) {
            done_ = true;
            SQLCloseCursor(stmt_);
            return false;
        }
        if (!SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt_);
        row.clear();
        row.reserve(cols_.size());
        for (size_t i = 0; i < cols_.size(); ++i) row.push_back(Read(static_cast<SQLUSMALLINT>(i + 1), cols_[i].type));
        return true;
    }

    void Cancel() override {
        // Under the lock, so never in the middle of a fetch: the driver does
        // not survive a cancel racing its own reads. Between rows a cancel
        // closes the cursor, and the next fetch ends.
        std::lock_guard<std::mutex> g(link_->lock);
        if (Alive() && !done_) {
            SQLCancel(stmt_);
            done_ = true;
        }
    }

private:
    std::shared_ptr<Link> link_;
    SQLHSTMT stmt_;
    uint64_t gen_;
    std::vector<ColumnInfo> cols_;
    bool done_ = false;

    bool Alive() const { return link_->open && link_->generation == gen_; }

    void Check(SQLRETURN rc) {
        if (!SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt_);
    }

    Variant ReadText(SQLUSMALLINT col) {
        String out;
        std::vector<SQLWCHAR> buf(4096);
        for (;;) {
            SQLLEN ind = 0;
            SQLRETURN rc = SQLGetData(stmt_, col, SQL_C_WCHAR, buf.data(), static_cast<SQLLEN>(buf.size() * sizeof(SQLWCHAR)), &ind);
            if (rc == SQL_NO_DATA) break;
            Check(rc);
            if (ind == SQL_NULL_DATA) return Variant::Null();
            size_t room = buf.size() - 1;
            size_t got = (ind == SQL_NO_TOTAL || static_cast<size_t>(ind) / sizeof(SQLWCHAR) > room)
                             ? room
                             : static_cast<size_t>(ind) / sizeof(SQLWCHAR);
            out.append(reinterpret_cast<const char16_t*>(buf.data()), got);
            if (rc == SQL_SUCCESS) break;
        }
        return Variant(std::move(out));
    }

    Variant ReadBytes(SQLUSMALLINT col) {
        Bytes out;
        std::vector<uint8_t> buf(16384);
        for (;;) {
            SQLLEN ind = 0;
            SQLRETURN rc = SQLGetData(stmt_, col, SQL_C_BINARY, buf.data(), static_cast<SQLLEN>(buf.size()), &ind);
            if (rc == SQL_NO_DATA) break;
            Check(rc);
            if (ind == SQL_NULL_DATA) return Variant::Null();
            size_t got = (ind == SQL_NO_TOTAL || static_cast<size_t>(ind) > buf.size()) ? buf.size() : static_cast<size_t>(ind);
            out.insert(out.end(), buf.begin(), buf.begin() + static_cast<long>(got));
            if (rc == SQL_SUCCESS) break;
        }
        return Variant(std::move(out));
    }

    template <class T>
    bool ReadFixed(SQLUSMALLINT col, SQLSMALLINT ctype, T& v) {
        SQLLEN ind = 0;
        Check(SQLGetData(stmt_, col, ctype, &v, sizeof(T), &ind));
        return ind != SQL_NULL_DATA;
    }

    Variant Read(SQLUSMALLINT col, int32_t type) {
        switch (type) {
        case adType::TinyInt: case adType::SmallInt: case adType::Integer: case adType::BigInt:
        case adType::UnsignedSmallInt: case adType::UnsignedInt: {
            SQLBIGINT v = 0;
            if (!ReadFixed(col, SQL_C_SBIGINT, v)) return Variant::Null();
            if (type == adType::TinyInt || type == adType::SmallInt) {
                if (v >= INT16_MIN && v <= INT16_MAX) return Variant(static_cast<int16_t>(v));
            }
            return Variant::FromInt64(v);
        }
        case adType::UnsignedTinyInt: {
            SQLUBIGINT v = 0;
            if (!ReadFixed(col, SQL_C_UBIGINT, v)) return Variant::Null();
            if (v <= 255) return Variant(static_cast<uint8_t>(v));
            return Variant::FromInt64(static_cast<int64_t>(v));
        }
        case adType::UnsignedBigInt: {
            SQLUBIGINT v = 0;
            if (!ReadFixed(col, SQL_C_UBIGINT, v)) return Variant::Null();
            if (v > static_cast<SQLUBIGINT>(INT64_MAX)) return Variant(Decimal::FromUInt64(v));
            return Variant::FromInt64(static_cast<int64_t>(v));
        }
        case adType::Single: {
            float v = 0;
            if (!ReadFixed(col, SQL_C_FLOAT, v)) return Variant::Null();
            return Variant(v);
        }
        case adType::Double: {
            double v = 0;
            if (!ReadFixed(col, SQL_C_DOUBLE, v)) return Variant::Null();
            return Variant(v);
        }
        case adType::Numeric: case adType::Decimal: {
            Variant t = ReadText(col);
            if (t.IsNull()) return t;
            Decimal d;
            try {
                if (Decimal::TryParse(t.ToString(), u'.', d)) return Variant(d);
            } catch (const DbError&) {
                // More digits than the decimal holds: fall back to a double.
            }
            double x = 0;
            if (TryParseNumber(t.ToString(), x)) return Variant(x);
            return t;
        }
        case adType::DBDate: {
            SQL_DATE_STRUCT v{};
            if (!ReadFixed(col, SQL_C_TYPE_DATE, v)) return Variant::Null();
            if (v.year == 0 || v.month == 0 || v.day == 0) return Variant::Null(); // zero date
            DateParts p; // the server's year as it stands: no two-digit window
            p.year = v.year; p.month = v.month; p.day = v.day;
            p.hour = p.minute = p.second = 0;
            return Variant::FromDate(JoinDate(p));
        }
        case adType::DBTime: {
            SQL_TIME_STRUCT v{};
            if (!ReadFixed(col, SQL_C_TYPE_TIME, v)) return Variant::Null();
            return Variant::FromDate(TimeSerial(v.hour, v.minute, v.second));
        }
        case adType::DBTimeStamp: case adType::Date: {
            SQL_TIMESTAMP_STRUCT v{};
            if (!ReadFixed(col, SQL_C_TYPE_TIMESTAMP, v)) return Variant::Null();
            if (v.year == 0 || v.month == 0 || v.day == 0) return Variant::Null(); // zero date
            DateParts p;
            p.year = v.year; p.month = v.month; p.day = v.day;
            p.hour = v.hour; p.minute = v.minute; p.second = v.second;
            return Variant::FromDate(JoinDate(p));
        }
        case adType::Boolean: {
            unsigned char v = 0;
            if (!ReadFixed(col, SQL_C_BIT, v)) return Variant::Null();
            return Variant(v != 0);
        }
        default:
            if (IsBinaryType(type)) return ReadBytes(col);
            return ReadText(col);
        }
    }
};

// Buffers of bound parameters, kept until the statement has run.
struct BoundParam {
    String text;
    Bytes bytes;
    SQLBIGINT integer = 0;
    double real = 0;
    SQL_TIMESTAMP_STRUCT stamp{};
    SQLLEN ind = 0;
};

void BindParameters(SQLHSTMT stmt, const std::vector<Ref<Parameter>>& params, std::vector<BoundParam>& bufs) {
    bufs.resize(params.size());
    for (size_t i = 0; i < params.size(); ++i) {
        const Parameter& p = *params[i];
        BoundParam& b = bufs[i];
        const Variant& v = p.Value();
        bool isNull = v.IsNull() || v.IsEmpty();
        SQLSMALLINT ctype = SQL_C_WCHAR, sqltype = SQL_WVARCHAR;
        SQLULEN colSize = 1;
        SQLSMALLINT digits = 0;
        SQLPOINTER data = nullptr;
        SQLLEN bufLen = 0;
        int32_t t = p.Type();
        if (IsBinaryType(t)) {
            ctype = SQL_C_BINARY;
            sqltype = SQL_LONGVARBINARY;
            if (!isNull) b.bytes = v.ToBytes();
            colSize = std::max<SQLULEN>(b.bytes.size(), 1);
            data = b.bytes.data();
            bufLen = static_cast<SQLLEN>(b.bytes.size());
            b.ind = bufLen;
        } else if (t == adType::TinyInt || t == adType::SmallInt || t == adType::Integer || t == adType::BigInt ||
                   t == adType::UnsignedTinyInt || t == adType::UnsignedSmallInt || t == adType::UnsignedInt ||
                   t == adType::UnsignedBigInt || t == adType::Boolean) {
            ctype = SQL_C_SBIGINT;
            sqltype = SQL_BIGINT;
            if (!isNull) {
                if (t == adType::Boolean) b.integer = v.ToBoolean() ? 1 : 0;
                else b.integer = v.ToDecimal().ToInt64();
            }
            colSize = 20;
            data = &b.integer;
            b.ind = 0;
        } else if (t == adType::Single || t == adType::Double) {
            ctype = SQL_C_DOUBLE;
            sqltype = SQL_DOUBLE;
            if (!isNull) b.real = v.ToDouble();
            colSize = 15;
            data = &b.real;
            b.ind = 0;
        } else if (t == adType::Date || t == adType::DBDate || t == adType::DBTime || t == adType::DBTimeStamp) {
            ctype = SQL_C_TYPE_TIMESTAMP;
            sqltype = SQL_TYPE_TIMESTAMP;
            if (!isNull) {
                DateParts d = SplitDate(v.ToDate());
                b.stamp.year = static_cast<SQLSMALLINT>(d.year);
                b.stamp.month = static_cast<SQLUSMALLINT>(d.month);
                b.stamp.day = static_cast<SQLUSMALLINT>(d.day);
                b.stamp.hour = static_cast<SQLUSMALLINT>(d.hour);
                b.stamp.minute = static_cast<SQLUSMALLINT>(d.minute);
                b.stamp.second = static_cast<SQLUSMALLINT>(d.second);
            }
            colSize = 19;
            data = &b.stamp;
            b.ind = 0;
        } else {
            // Text, and every number that must not lose digits (currency,
            // decimal) as its invariant text.
            if (!isNull) {
                if (t == adType::Currency || t == adType::Decimal || t == adType::Numeric)
                    b.text = v.ToDecimal().ToText(u'.');
                else
                    b.text = v.ToString();
            }
            sqltype = (t == adType::LongVarWChar || t == adType::LongVarChar || b.text.size() > 4000) ? SQL_WLONGVARCHAR
                                                                                                     : SQL_WVARCHAR;
            colSize = std::max<SQLULEN>(b.text.size(), 1);
            data = W(b.text);
            bufLen = static_cast<SQLLEN>((b.text.size() + 1) * sizeof(SQLWCHAR));
            b.ind = static_cast<SQLLEN>(b.text.size() * sizeof(SQLWCHAR));
        }
        if (isNull) b.ind = SQL_NULL_DATA;
        SQLRETURN rc = SQLBindParameter(stmt, static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, ctype, sqltype, colSize,
                                        digits, data, bufLen, &b.ind);
        if (!SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt);
    }
}

class OdbcBackend final : public Backend {
public:
    explicit OdbcBackend(OdbcOptions options) : link_(std::make_shared<Link>()), options_(options) {}
    ~OdbcBackend() override { Close(); }

    void Open(const String& connectionText, int32_t loginTimeout) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (link_->open) return;
        SQLHDBC dbc = SQL_NULL_HDBC;
        if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_DBC, Environment(), &dbc))) ThrowDiag(SQL_HANDLE_ENV, Environment());
        if (loginTimeout > 0)
            SQLSetConnectAttr(dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(loginTimeout)), 0);
        String out(1024, u'\0');
        SQLSMALLINT outLen = 0;
        SQLRETURN rc = SQLDriverConnectW(dbc, nullptr, const_cast<SQLWCHAR*>(W(connectionText)), SQL_NTS, W(out),
                                         static_cast<SQLSMALLINT>(out.size()), &outLen, SQL_DRIVER_NOPROMPT);
        if (!SQL_SUCCEEDED(rc)) {
            auto diags = Diagnostics(SQL_HANDLE_DBC, dbc);
            SQLFreeHandle(SQL_HANDLE_DBC, dbc);
            throw ProviderFailure(std::move(diags));
        }
        link_->dbc = dbc;
        link_->open = true;
        dbmsName_ = InfoText(SQL_DBMS_NAME);
    }

    void Close() override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->open) return;
        SQLDisconnect(link_->dbc);
        SQLFreeHandle(SQL_HANDLE_DBC, link_->dbc);
        link_->dbc = SQL_NULL_HDBC;
        link_->open = false;
        ++link_->generation;
    }

    bool IsOpen() const override { return link_->open; }

    std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params, int64_t& affected,
                                    int32_t timeout) override {
        std::unique_lock<std::mutex> g(link_->lock);
        if (!link_->open) throw ProviderFailure({{0, u"08003", u"[Driver Manager]Connection not open"}});
        SQLHSTMT stmt = SQL_NULL_HSTMT;
        if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, link_->dbc, &stmt))) ThrowDiag(SQL_HANDLE_DBC, link_->dbc);
        try {
            if (timeout > 0)
                SQLSetStmtAttr(stmt, SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(timeout)), 0);
            std::vector<BoundParam> bufs;
            if (!params.empty()) BindParameters(stmt, params, bufs);
            SQLRETURN rc = SQLExecDirectW(stmt, const_cast<SQLWCHAR*>(W(sql)), SQL_NTS);
            if (rc != SQL_NO_DATA && !SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt);
            SQLSMALLINT ncols = 0;
            if (rc != SQL_NO_DATA && !SQL_SUCCEEDED(SQLNumResultCols(stmt, &ncols))) ThrowDiag(SQL_HANDLE_STMT, stmt);
            SQLLEN count = -1;
            SQLRowCount(stmt, &count);
            affected = rc == SQL_NO_DATA ? 0 : static_cast<int64_t>(count);
            if (rc != SQL_NO_DATA && ncols <= 0 && options_.countsBeforeRows) ncols = SkipCountsToRows(stmt);
            if (ncols <= 0) {
                SQLFreeHandle(SQL_HANDLE_STMT, stmt);
                return nullptr;
            }
            std::vector<ColumnInfo> cols = Describe(stmt, ncols);
            g.unlock();
            return std::make_unique<OdbcCursor>(link_, stmt, std::move(cols));
        } catch (...) {
            SQLFreeHandle(SQL_HANDLE_STMT, stmt);
            throw;
        }
    }

    // Schema rowsets differ by store: the backend of each store builds them
    // (from the catalog calls below or from its own statements).
    Ref<Recordset> OpenSchema(int32_t, const std::vector<Variant>&) override {
        RaisePlatformFrom(adErrFeatureNotAvailable, kConnectionSource,
                          u"Object or provider is not capable of performing requested operation.");
    }

    const String& DbmsName() const { return dbmsName_; }

    // One of the driver's catalog calls as a cursor.
    std::unique_ptr<Cursor> Catalog(OdbcCatalogCall call, const std::vector<String>& args) {
        std::unique_lock<std::mutex> g(link_->lock);
        if (!link_->open) throw ProviderFailure({{0, u"08003", u"[Driver Manager]Connection not open"}});
        // Pattern arguments are meant literally: escape the wildcards with
        // the driver's own escape character.
        String escape = InfoText(SQL_SEARCH_PATTERN_ESCAPE);
        std::vector<String> a(args);
        a.resize(6);
        // No catalog means the connection's current database (drivers
        // differ: some read a null catalog as "every database").
        String current = CurrentCatalog();
        if (a[0].empty()) a[0] = current;
        if (call == OdbcCatalogCall::ForeignKeys && a[3].empty()) a[3] = current;
        auto literal = [&](String& v) {
            if (escape.empty() || v.empty()) return;
            String out;
            for (char16_t c : v) {
                if (c == u'_' || c == u'%' || c == escape[0]) out += escape[0];
                out += c;
            }
            v = std::move(out);
        };
        if (call == OdbcCatalogCall::Tables || call == OdbcCatalogCall::Columns) {
            literal(a[1]);
            literal(a[2]);
            if (call == OdbcCatalogCall::Columns) literal(a[3]);
        }
        auto arg = [&](size_t i) -> SQLWCHAR* { return a[i].empty() ? nullptr : const_cast<SQLWCHAR*>(W(a[i])); };
        auto len = [&](size_t i) -> SQLSMALLINT { return a[i].empty() ? 0 : static_cast<SQLSMALLINT>(a[i].size()); };
        SQLHSTMT stmt = SQL_NULL_HSTMT;
        if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, link_->dbc, &stmt))) ThrowDiag(SQL_HANDLE_DBC, link_->dbc);
        try {
            SQLRETURN rc = SQL_ERROR;
            switch (call) {
            case OdbcCatalogCall::Tables:
                rc = SQLTablesW(stmt, arg(0), len(0), arg(1), len(1), arg(2), len(2), arg(3), len(3));
                break;
            case OdbcCatalogCall::Columns:
                rc = SQLColumnsW(stmt, arg(0), len(0), arg(1), len(1), arg(2), len(2), arg(3), len(3));
                break;
            case OdbcCatalogCall::Statistics:
                rc = SQLStatisticsW(stmt, arg(0), len(0), arg(1), len(1), arg(2), len(2), SQL_INDEX_ALL, SQL_QUICK);
                break;
            case OdbcCatalogCall::PrimaryKeys:
                rc = SQLPrimaryKeysW(stmt, arg(0), len(0), arg(1), len(1), arg(2), len(2));
                break;
            case OdbcCatalogCall::ForeignKeys:
                rc = SQLForeignKeysW(stmt, arg(0), len(0), arg(1), len(1), arg(2), len(2), arg(3), len(3), arg(4), len(4),
                                     arg(5), len(5));
                break;
            }
            if (!SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt);
            SQLSMALLINT ncols = 0;
            if (!SQL_SUCCEEDED(SQLNumResultCols(stmt, &ncols))) ThrowDiag(SQL_HANDLE_STMT, stmt);
            std::vector<ColumnInfo> cols = Describe(stmt, ncols);
            g.unlock();
            return std::make_unique<OdbcCursor>(link_, stmt, std::move(cols));
        } catch (...) {
            SQLFreeHandle(SQL_HANDLE_STMT, stmt);
            throw;
        }
    }

private:
    std::shared_ptr<Link> link_;
    OdbcOptions options_;
    String dbmsName_;

    // The connection's current database; the caller holds the lock.
    String CurrentCatalog() {
        String buf(256, u'\0');
        SQLINTEGER len = 0;
        if (!SQL_SUCCEEDED(SQLGetConnectAttrW(link_->dbc, SQL_ATTR_CURRENT_CATALOG, W(buf),
                                              static_cast<SQLINTEGER>(buf.size() * sizeof(SQLWCHAR)), &len)))
            return {};
        buf.resize(std::min<size_t>(static_cast<size_t>(std::max<SQLINTEGER>(len, 0)) / sizeof(SQLWCHAR), buf.size()));
        return buf;
    }

    // A statement may answer with row counts (of statements inside a
    // procedure, say) before the rows it was asked for: move past
    // them to the first result that has columns. Refusals on the way are
    // raised, not lost. Answers the number of columns found (0 for none).
    static SQLSMALLINT SkipCountsToRows(SQLHSTMT stmt) {
        for (;;) {
            SQLRETURN rc = SQLMoreResults(stmt);
            if (rc == SQL_NO_DATA) return 0;
            if (!SQL_SUCCEEDED(rc)) ThrowDiag(SQL_HANDLE_STMT, stmt);
            SQLSMALLINT ncols = 0;
            if (!SQL_SUCCEEDED(SQLNumResultCols(stmt, &ncols))) ThrowDiag(SQL_HANDLE_STMT, stmt);
            if (ncols > 0) return ncols;
        }
    }

    String InfoText(SQLUSMALLINT what) {
        String buf(256, u'\0');
        SQLSMALLINT len = 0;
        if (!SQL_SUCCEEDED(SQLGetInfoW(link_->dbc, what, W(buf), static_cast<SQLSMALLINT>(buf.size() * 2), &len)))
            return {};
        buf.resize(std::min<size_t>(static_cast<size_t>(len) / 2, buf.size()));
        return buf;
    }

    static std::vector<ColumnInfo> Describe(SQLHSTMT stmt, SQLSMALLINT ncols) {
        std::vector<ColumnInfo> cols;
        for (SQLSMALLINT i = 1; i <= ncols; ++i) {
            String name(256, u'\0');
            SQLSMALLINT nameLen = 0, sqlType = 0, digits = 0, nullable = 0;
            SQLULEN size = 0;
            if (!SQL_SUCCEEDED(SQLDescribeColW(stmt, static_cast<SQLUSMALLINT>(i), W(name), static_cast<SQLSMALLINT>(name.size()),
                                               &nameLen, &sqlType, &size, &digits, &nullable)))
                ThrowDiag(SQL_HANDLE_STMT, stmt);
            name.resize(std::min<size_t>(static_cast<size_t>(std::max<SQLSMALLINT>(nameLen, 0)), name.size()));
            SQLLEN isUnsigned = SQL_FALSE;
            SQLColAttributeW(stmt, static_cast<SQLUSMALLINT>(i), SQL_DESC_UNSIGNED, nullptr, 0, nullptr, &isUnsigned);
            ColumnInfo c;
            c.name = std::move(name);
            bool numeric = sqlType == SQL_TINYINT || sqlType == SQL_SMALLINT || sqlType == SQL_INTEGER || sqlType == SQL_BIGINT;
            c.type = AdoType(sqlType, numeric && isUnsigned == SQL_TRUE);
            c.size = size > static_cast<SQLULEN>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(size);
            if (c.type == adType::Numeric) {
                c.precision = static_cast<uint8_t>(std::min<SQLULEN>(size, 255));
                c.scale = static_cast<uint8_t>(std::max<SQLSMALLINT>(digits, 0));
            }
            cols.push_back(std::move(c));
        }
        return cols;
    }
};

} // namespace

std::shared_ptr<Backend> MakeOdbcBackend(OdbcOptions options) { return std::make_shared<OdbcBackend>(options); }

namespace {
OdbcBackend& AsOdbc(Backend& b) {
    auto* odbc = dynamic_cast<OdbcBackend*>(&b);
    if (!odbc)
        RaisePlatformFrom(adErrFeatureNotAvailable, kConnectionSource,
                          u"Object or provider is not capable of performing requested operation.");
    return *odbc;
}
} // namespace

std::unique_ptr<Cursor> OdbcCatalog(Backend& odbc, OdbcCatalogCall call, const std::vector<String>& arguments) {
    return AsOdbc(odbc).Catalog(call, arguments);
}

String OdbcDbmsName(Backend& odbc) { return AsOdbc(odbc).DbmsName(); }

} // namespace zolsdk::ado::detail
