#include "platform/ado/mariadb/param_arrays.hpp"

#include <cstring>

namespace zolsdk::ado::detail {

namespace {

// Types the client library reads as a pointer and a length; every other
// one as a value of fixed width.
bool Variable(int type) {
    switch (type) {
    case MYSQL_TYPE_STRING: case MYSQL_TYPE_VAR_STRING: case MYSQL_TYPE_VARCHAR: case MYSQL_TYPE_BLOB:
    case MYSQL_TYPE_TINY_BLOB: case MYSQL_TYPE_MEDIUM_BLOB: case MYSQL_TYPE_LONG_BLOB: case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL:
        return true;
    default:
        return false;
    }
}

// Fixed-width types the client library still reads through a pointer a
// row: dates and times.
bool ByPointer(int type) {
    switch (type) {
    case MYSQL_TYPE_DATE: case MYSQL_TYPE_NEWDATE: case MYSQL_TYPE_TIME: case MYSQL_TYPE_DATETIME:
    case MYSQL_TYPE_TIMESTAMP:
        return true;
    default:
        return false;
    }
}

// A time read back holds all its hours in `hour` (up to 838); the client
// library sends a time as days and a byte of hours.
void SplitHours(char* at) {
    MYSQL_TIME t;
    std::memcpy(&t, at, sizeof t);
    t.day += t.hour / 24;
    t.hour %= 24;
    std::memcpy(at, &t, sizeof t);
}

} // namespace

// The columns' types come with the first row: those of its binary form,
// or text for every column.
void ParamArrays::Shape(const TextRow& row) {
    binary_ = row.wire != nullptr;
    columns_.assign(row.columns, Column{});
    for (size_t i = 0; i < row.columns; ++i) {
        Column& c = columns_[i];
        if (!binary_) continue;
        c.type = row.wire[i].type;
        c.isUnsigned = row.wire[i].isUnsigned;
        c.width = Variable(c.type) ? 0 : row.wire[i].length;
    }
}

bool ParamArrays::Add(const TextRow& row) {
    if (rows_ == 0) {
        Shape(row);
    } else if ((row.wire != nullptr) != binary_ || row.columns != columns_.size()) {
        return false;
    }
    for (size_t i = 0; i < row.columns; ++i) {
        Column& c = columns_[i];
        bool null = row.values[i] == nullptr;
        c.indicators.push_back(static_cast<char>(null ? STMT_INDICATOR_NULL : STMT_INDICATOR_NONE));
        if (c.width) {
            size_t at = c.fixed.size();
            c.fixed.resize(at + c.width);
            if (!null) std::memcpy(c.fixed.data() + at, row.wire[i].data, c.width);
            if (!null && c.type == MYSQL_TYPE_TIME) SplitHours(c.fixed.data() + at);
            held_ += c.width;
            continue;
        }
        const char* p = null ? "" : binary_ ? static_cast<const char*>(row.wire[i].data) : row.values[i];
        unsigned long n = null ? 0 : binary_ ? row.wire[i].length : row.lengths[i];
        c.starts.push_back(text_.size());
        c.lengths.push_back(n);
        text_.append(p, n);
        held_ += n + 8;
    }
    ++rows_;
    return true;
}

void ParamArrays::Clear() {
    for (Column& c : columns_) {
        c.fixed.clear();
        c.starts.clear();
        c.lengths.clear();
        c.indicators.clear();
    }
    text_.clear();
    rows_ = 0;
    held_ = 0;
}

bool ParamArrays::Execute(MYSQL_STMT* stmt) {
    binds_.assign(columns_.size(), MYSQL_BIND{});
    for (size_t i = 0; i < columns_.size(); ++i) {
        Column& c = columns_[i];
        MYSQL_BIND& b = binds_[i];
        b.buffer_type = static_cast<enum_field_types>(c.type);
        b.is_unsigned = c.isUnsigned;
        b.u.indicator = c.indicators.data();
        if (c.width && !ByPointer(c.type)) {
            b.buffer = c.fixed.data();
            continue;
        }
        // The values no longer grow: their addresses hold.
        c.pointers.resize(rows_);
        for (size_t r = 0; r < rows_; ++r)
            c.pointers[r] = c.width ? c.fixed.data() + r * c.width : text_.data() + c.starts[r];
        b.buffer = c.pointers.data();
        if (!c.width) b.length = c.lengths.data();
    }
    auto size = static_cast<unsigned int>(rows_);
    return mysql_stmt_attr_set(stmt, STMT_ATTR_ARRAY_SIZE, &size) == 0 &&
           mysql_stmt_bind_param(stmt, binds_.data()) == 0 && mysql_stmt_execute(stmt) == 0;
}

} // namespace zolsdk::ado::detail
