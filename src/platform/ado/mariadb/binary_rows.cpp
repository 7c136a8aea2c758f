#include "platform/ado/mariadb/binary_rows.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <errmsg.h>

namespace zolsdk::ado::detail {

namespace {

// A longer value than its buffer is fetched on its own and the buffer
// grows to it, up to this much.
constexpr size_t kMostBytes = 1 << 20;

void Put(std::string& out, const char* begin, const char* end) { out.append(begin, static_cast<size_t>(end - begin)); }

template <class T> void PutNumber(std::string& out, T v) {
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    Put(out, buf, r.ptr);
}

// `v` in at least `width` digits.
void PutDigits(std::string& out, unsigned long v, int width) {
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    for (int n = static_cast<int>(r.ptr - buf); n < width; ++n) out += '0';
    Put(out, buf, r.ptr);
}

void PutDate(std::string& out, const MYSQL_TIME& t) {
    PutDigits(out, t.year, 4);
    out += '-';
    PutDigits(out, t.month, 2);
    out += '-';
    PutDigits(out, t.day, 2);
}

// "hh:mm:ss" and the column's digits of a second.
void PutTime(std::string& out, unsigned long hours, const MYSQL_TIME& t, unsigned decimals) {
    PutDigits(out, hours, 2);
    out += ':';
    PutDigits(out, t.minute, 2);
    out += ':';
    PutDigits(out, t.second, 2);
    // An expression's column may not say its digits: all six when any is set.
    if (decimals > 6) decimals = t.second_part ? 6 : 0;
    if (decimals == 0) return;
    char six[8];
    unsigned long part = t.second_part % 1000000;
    for (int i = 5; i >= 0; --i, part /= 10) six[i] = static_cast<char>('0' + part % 10);
    out += '.';
    out.append(six, decimals);
}

} // namespace

BinaryRows::BinaryRows(MYSQL* db, const std::string& sql) {
    stmt_ = mysql_stmt_init(db);
    if (!stmt_ || mysql_stmt_prepare(stmt_, sql.data(), sql.size()) != 0 || mysql_stmt_execute(stmt_) != 0) return;
    started_ = true;
    if (MYSQL_RES* meta = mysql_stmt_result_metadata(stmt_)) {
        Bind(mysql_fetch_fields(meta), mysql_num_fields(meta));
        mysql_free_result(meta);
    }
}

BinaryRows::~BinaryRows() {
    if (stmt_) mysql_stmt_close(stmt_);
}

unsigned BinaryRows::Errno() const { return stmt_ ? mysql_stmt_errno(stmt_) : CR_OUT_OF_MEMORY; }
const char* BinaryRows::SqlState() const { return stmt_ ? mysql_stmt_sqlstate(stmt_) : "HY001"; }
const char* BinaryRows::Error() const { return stmt_ ? mysql_stmt_error(stmt_) : "out of memory"; }

// Integers of every width as 64 bits, dates and times as their parts,
// everything else (texts, decimals, bytes) as the bytes sent.
BinaryRows::Binding BinaryRows::BindingOf(const MYSQL_FIELD& f) {
    constexpr size_t kTime = sizeof(MYSQL_TIME);
    switch (f.type) {
    case MYSQL_TYPE_TINY: case MYSQL_TYPE_SHORT: case MYSQL_TYPE_INT24: case MYSQL_TYPE_LONG: case MYSQL_TYPE_LONGLONG:
        return {(f.flags & UNSIGNED_FLAG) ? Form::Unsigned : Form::Signed, MYSQL_TYPE_LONGLONG, sizeof(long long)};
    case MYSQL_TYPE_YEAR: return {Form::Year, MYSQL_TYPE_LONGLONG, sizeof(long long)};
    case MYSQL_TYPE_FLOAT: return {Form::Float, MYSQL_TYPE_FLOAT, sizeof(float)};
    case MYSQL_TYPE_DOUBLE: return {Form::Double, MYSQL_TYPE_DOUBLE, sizeof(double)};
    case MYSQL_TYPE_DATE: case MYSQL_TYPE_NEWDATE: return {Form::Date, MYSQL_TYPE_DATE, kTime};
    case MYSQL_TYPE_DATETIME: case MYSQL_TYPE_TIMESTAMP: return {Form::DateTime, MYSQL_TYPE_DATETIME, kTime};
    case MYSQL_TYPE_TIME: return {Form::Time, MYSQL_TYPE_TIME, kTime};
    default: return {Form::Bytes, MYSQL_TYPE_STRING, std::clamp<size_t>(f.length + 1, 64, 4096)};
    }
}

void BinaryRows::Bind(const MYSQL_FIELD* fields, unsigned count) {
    columns_.resize(count);
    binds_.assign(count, MYSQL_BIND{});
    cells_.assign(count, nullptr);
    lengths_.assign(count, 0);
    wire_.assign(count, WireCell{});
    starts_.assign(count + 1, 0);
    for (unsigned i = 0; i < count; ++i) {
        const MYSQL_FIELD& f = fields[i];
        fields_.push_back(DescribeField(f));
        Column& c = columns_[i];
        MYSQL_BIND& b = binds_[i];
        c.decimals = f.decimals;
        Binding how = BindingOf(f);
        c.form = how.form;
        b.buffer_type = how.bound;
        b.is_unsigned = how.form == Form::Unsigned;
        c.first = how.bytes;
        c.buffer.resize(how.bytes);
        b.buffer = c.buffer.data();
        b.buffer_length = static_cast<unsigned long>(c.buffer.size());
        b.length = &c.length;
        b.is_null = &c.null;
        b.error = &c.error;
        // Bytes of a binary column go as bytes, never read as text of the
        // connection's character set.
        enum_field_types sent = how.bound;
        if (how.form == Form::Bytes) {
            bool decimal = f.type == MYSQL_TYPE_NEWDECIMAL || f.type == MYSQL_TYPE_DECIMAL;
            sent = decimal ? MYSQL_TYPE_NEWDECIMAL : f.charsetnr == 63 ? MYSQL_TYPE_BLOB : MYSQL_TYPE_STRING;
        }
        wire_[i] = {static_cast<int>(sent), how.form == Form::Unsigned, nullptr, static_cast<unsigned long>(how.bytes)};
    }
    if (count) mysql_stmt_bind_result(stmt_, binds_.data());
}

// A value longer than its buffer: fetched whole into a buffer grown to it.
bool BinaryRows::FetchLong(size_t i) {
    Column& c = columns_[i];
    c.buffer.resize(c.length);
    MYSQL_BIND b = binds_[i];
    b.buffer = c.buffer.data();
    b.buffer_length = c.length;
    unsigned long got = 0;
    b.length = &got;
    if (mysql_stmt_fetch_column(stmt_, &b, static_cast<unsigned>(i), 0) != 0) return false;
    return got == c.length;
}

BinaryRows::Fetched BinaryRows::Fetch() {
    if (columns_.empty()) return Fetched::End;
    if (rebind_) {
        // The buffers a long value grew: bound for the next rows (a huge one
        // goes back to its first size; values that large come one by one).
        for (size_t i = 0; i < columns_.size(); ++i) {
            Column& c = columns_[i];
            if (c.form != Form::Bytes) continue;
            if (c.buffer.size() > kMostBytes) {
                c.buffer.resize(c.first);
                c.buffer.shrink_to_fit();
            }
            binds_[i].buffer = c.buffer.data();
            binds_[i].buffer_length = static_cast<unsigned long>(c.buffer.size());
        }
        mysql_stmt_bind_result(stmt_, binds_.data());
        rebind_ = false;
    }
    int rc = mysql_stmt_fetch(stmt_);
    if (rc == MYSQL_NO_DATA) return Fetched::End;
    if (rc != 0 && rc != MYSQL_DATA_TRUNCATED) return Fetched::Failed;
    text_.clear();
    for (size_t i = 0; i < columns_.size(); ++i) {
        Column& c = columns_[i];
        starts_[i] = text_.size();
        if (c.null) continue;
        const char* p = c.buffer.data();
        switch (c.form) {
        case Form::Signed: { long long v; std::memcpy(&v, p, sizeof v); PutNumber(text_, v); break; }
        case Form::Unsigned: { unsigned long long v; std::memcpy(&v, p, sizeof v); PutNumber(text_, v); break; }
        case Form::Year: {
            // Four digits: a year of "0" would be read back as 2000.
            long long v;
            std::memcpy(&v, p, sizeof v);
            PutDigits(text_, static_cast<unsigned long>(v), 4);
            break;
        }
        case Form::Float: { float v; std::memcpy(&v, p, sizeof v); PutNumber(text_, v); break; }
        case Form::Double: { double v; std::memcpy(&v, p, sizeof v); PutNumber(text_, v); break; }
        case Form::Date: case Form::DateTime: case Form::Time: {
            MYSQL_TIME t;
            std::memcpy(&t, p, sizeof t);
            if (c.form == Form::Time) {
                if (t.neg) text_ += '-';
                PutTime(text_, static_cast<unsigned long>(t.day) * 24 + t.hour, t, c.decimals);
                break;
            }
            PutDate(text_, t);
            if (c.form == Form::DateTime) {
                text_ += ' ';
                PutTime(text_, t.hour, t, c.decimals);
            }
            break;
        }
        case Form::Bytes:
            if (c.length > binds_[i].buffer_length) {
                if (!FetchLong(i)) return Fetched::Failed;
                rebind_ = true;
            }
            break;
        }
    }
    starts_[columns_.size()] = text_.size();
    for (size_t i = 0; i < columns_.size(); ++i) {
        Column& c = columns_[i];
        if (c.null) {
            cells_[i] = nullptr;
            lengths_[i] = 0;
        } else if (c.form == Form::Bytes) {
            cells_[i] = c.buffer.data();
            lengths_[i] = c.length;
            wire_[i].data = c.buffer.data();
            wire_[i].length = c.length;
        } else {
            wire_[i].data = c.buffer.data();
            cells_[i] = text_.data() + starts_[i];
            lengths_[i] = static_cast<unsigned long>(starts_[i + 1] - starts_[i]);
        }
    }
    return Fetched::Row;
}

} // namespace zolsdk::ado::detail
