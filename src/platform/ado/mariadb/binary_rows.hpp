#pragma once
// The rows of a statement read in the server's binary form, so that the
// server writes no number or date out as text (half of what a plain read
// costs it), and given as the text the server reads back as the same
// value: numbers in their shortest exact form, dates and times as the
// server writes them, with the column's digits of a second, and every
// other value (texts, decimals, bytes) as the bytes it sent.
#include <mysql.h>

#include <string>
#include <vector>

#include "platform/ado/connection.hpp"
#include "platform/ado/mariadb/result_fields.hpp"

namespace zolsdk::ado::detail {

class BinaryRows {
public:
    // Prepares and runs `sql` on `db`.
    BinaryRows(MYSQL* db, const std::string& sql);
    ~BinaryRows();
    BinaryRows(const BinaryRows&) = delete;
    BinaryRows& operator=(const BinaryRows&) = delete;

    // Whether the statement runs and gives rows; otherwise its failure is
    // in Errno()/Error().
    bool Started() const { return started_; }
    const std::vector<ResultField>& Fields() const { return fields_; }

    enum class Fetched { Row, End, Failed };
    // The next row into Cells()/Lengths() (a null cell for Null).
    Fetched Fetch();
    const char* const* Cells() const { return cells_.data(); }
    const unsigned long* Lengths() const { return lengths_.data(); }
    // The same row as bound: numbers, dates and times in their binary form.
    const WireCell* Wire() const { return wire_.data(); }

    unsigned Errno() const;
    const char* SqlState() const;
    const char* Error() const;

private:
    // How a column is bound, and so written out.
    enum class Form : unsigned char { Signed, Unsigned, Year, Float, Double, Date, DateTime, Time, Bytes };
    struct Column {
        Form form = Form::Bytes;
        unsigned decimals = 0;             // digits of a second
        std::string buffer;                // the bound bytes (or value)
        size_t first = 0;                  // the buffer's first size (bytes)
        unsigned long length = 0;
        my_bool null = 0, error = 0;
    };

    MYSQL_STMT* stmt_ = nullptr;
    bool started_ = false;
    std::vector<ResultField> fields_;
    std::vector<Column> columns_;
    std::vector<MYSQL_BIND> binds_;
    bool rebind_ = false;  // a buffer grew for a long value
    std::string text_;     // the written-out values of the row
    std::vector<size_t> starts_; // where each value starts in text_
    std::vector<const char*> cells_;
    std::vector<unsigned long> lengths_;
    std::vector<WireCell> wire_;

    struct Binding {
        Form form;
        enum_field_types bound; // the type the value is fetched as
        size_t bytes;           // the buffer's first size
    };
    static Binding BindingOf(const MYSQL_FIELD& field);
    void Bind(const MYSQL_FIELD* fields, unsigned count);
    bool FetchLong(size_t column);
};

} // namespace zolsdk::ado::detail
