#include "transfer/text_road.hpp"

#include <cstdlib>

#include "transfer/batch_writer.hpp"
#include "transfer/identifiers.hpp"
#include "transfer/load_writer.hpp"
#include "transfer/rows.hpp"
#include "transfer/values.hpp"

namespace zolsdk::transfer {

namespace {

// How a value of a type is written into an INSERT (a bulk load takes every
// value as its escaped text, binary ones as hex digits).
enum class Form { Number, Quoted, Hex };

// The MariaDB types (the first word of the column type) whose text the
// server reads back as the value it came from. Not here: BIT (its text is
// the raw bits) and the spatial types (their text is a binary form).
struct TextType {
    std::u16string_view word;
    Form form;
};
constexpr TextType kTextTypes[] = {
    {u"tinyint", Form::Number},    {u"smallint", Form::Number},  {u"mediumint", Form::Number},
    {u"int", Form::Number},        {u"bigint", Form::Number},    {u"decimal", Form::Number},
    {u"float", Form::Number},      {u"double", Form::Number},    {u"year", Form::Number},
    {u"date", Form::Quoted},       {u"datetime", Form::Quoted},  {u"timestamp", Form::Quoted},
    {u"time", Form::Quoted},       {u"char", Form::Quoted},      {u"varchar", Form::Quoted},
    {u"tinytext", Form::Quoted},   {u"text", Form::Quoted},      {u"mediumtext", Form::Quoted},
    {u"longtext", Form::Quoted},   {u"enum", Form::Quoted},      {u"set", Form::Quoted},
    {u"binary", Form::Hex},        {u"varbinary", Form::Hex},    {u"tinyblob", Form::Hex},
    {u"blob", Form::Hex},          {u"mediumblob", Form::Hex},   {u"longblob", Form::Hex},
};

bool IsBinary(Kind k) { return k == Kind::Binary || k == Kind::LongBinary; }

// The column's form, or none when its type is not one of the list (or the
// column's kind disagrees with it on being binary).
std::optional<Form> FormOf(const ColumnPlan& c) {
    String type = LCase(c.sourceNative);
    String word = type.substr(0, type.find_first_of(u"( "));
    for (const TextType& t : kTextTypes)
        if (word == t.word) {
            if ((t.form == Form::Hex) != IsBinary(c.kind)) return std::nullopt;
            return t.form;
        }
    return std::nullopt;
}

std::vector<Kind> KindsOf(const TablePlan& t) {
    std::vector<Kind> kinds;
    for (const auto& c : t.columns) kinds.push_back(c.kind);
    return kinds;
}

// A session's TIMESTAMP text in UTC: one text for one instant, whatever
// the server's own time zone.
void InUtc(ado::Connection& c) { Run(c, u"SET time_zone = '+00:00'"); }

// Appends one row "(v, v, ...)" of a multi-row INSERT.
void AppendInsertRow(const std::vector<Form>& forms, const ado::TextRow& row, std::string& out) {
    out += '(';
    for (size_t i = 0; i < row.columns; ++i) {
        if (i) out += ',';
        const char* v = row.values[i];
        std::string_view text(v ? v : "", v ? row.lengths[i] : 0);
        if (!v) {
            out += "NULL";
        } else if (forms[i] == Form::Number) {
            out += text;
        } else if (forms[i] == Form::Hex) {
            if (text.empty()) {
                out += "''";
            } else {
                out += "X'";
                AppendHex(text, out);
                out += '\'';
            }
        } else {
            out += '\'';
            for (char ch : text) {
                if (ch == '\\' || ch == '\'') out += '\\';
                out += ch == '\0' ? std::string_view("\\0") : std::string_view(&ch, 1);
            }
            out += '\'';
        }
    }
    out += ')';
}

// A server that refuses client-fed loads: INSERTs of many rows, each row
// made of the source's texts.
int64_t InsertByText(ado::Connection::TextStream& rows, ado::Connection& target, const TablePlan& t,
                     size_t batchBytes, TableSum& sent, const std::function<bool(int64_t)>& tick) {
    std::vector<Form> forms;
    for (const auto& c : t.columns) forms.push_back(*FormOf(c));
    std::string head = ToUtf8(InsertHead(Engine::MySql, t));
    std::string sql;
    int64_t written = 0;
    auto flush = [&] {
        if (sql.empty()) return;
        int32_t n = 0;
        target.Execute(FromUtf8(sql), n, ado::adExecuteNoRecords);
        written += n;
        sql.clear();
    };
    ado::TextRow row;
    while (rows.Next(row)) {
        sql += sql.empty() ? head : std::string(",");
        AppendInsertRow(forms, row, sql);
        sent.sum += TextRowHash(row);
        ++sent.rows;
        if (sql.size() >= batchBytes) flush();
        if ((sent.rows & 1023) == 0 && !tick(sent.rows)) break;
    }
    flush();
    return written;
}

// ZOL_ROW_BATCHES=off sends by bulk load even to a server that takes
// batches: for a proxy between that passes no arrays of parameters.
bool BatchesWanted() {
    const char* v = std::getenv("ZOL_ROW_BATCHES");
    return !v || std::string_view(v) != "off";
}

} // namespace

bool GoesByText(Engine source, Engine target, const TablePlan& t) {
    if (source != Engine::MySql || target != Engine::MySql || t.columns.empty()) return false;
    for (const auto& c : t.columns)
        if (!EqualsNoCase(c.targetType, c.sourceNative) || !FormOf(c)) return false;
    return true;
}

std::unique_ptr<ado::Connection::TextStream> OpenTextRows(ado::Connection& c, const TablePlan& t,
                                                          const KeyRange& range) {
    InUtc(c);
    return c.OpenTextStream(SelectSql(Engine::MySql, t, range));
}

void AppendTextLine(const std::vector<Kind>& kinds, const ado::TextRow& row, std::string& out) {
    for (size_t i = 0; i < row.columns; ++i) {
        if (i) out += '\t';
        const char* v = row.values[i];
        if (!v)
            out += "\\N";
        else if (IsBinary(kinds[i]))
            AppendHex(std::string_view(v, row.lengths[i]), out);
        else
            AppendLoadEscaped(std::string_view(v, row.lengths[i]), out);
    }
    out += '\n';
}

uint64_t TextRowHash(const ado::TextRow& row) {
    RowHasher h;
    for (size_t i = 0; i < row.columns; ++i) {
        if (row.values[i])
            h.Add(std::string_view(row.values[i], row.lengths[i]));
        else
            h.AddNull();
    }
    return h.Finish();
}

int64_t CopyByText(ado::Connection& source, ado::Connection& target, const TablePlan& t, const KeyRange& range,
                   size_t batchBytes, TableSum& sent, const std::function<bool(int64_t)>& tick) {
    sent = {};
    sent.byText = true;
    InUtc(target);
    bool batches = BatchesWanted() && target.TakesRowBatches();
    bool loads = batches || TakesBulkLoads(target);
    std::unique_ptr<ado::Connection::TextStream> rows = OpenTextRows(source, t, range);
    if (!loads) return InsertByText(*rows, target, t, batchBytes, sent, tick);
    ado::TextRow row;
    if (batches) {
        // Arrays of parameters cost the server less than a bulk load's text.
        BatchWriter writer(target, t, kLoadChunkBytes);
        while (rows->Next(row)) {
            writer.Add(row);
            sent.sum += TextRowHash(row);
            if ((++sent.rows & 1023) == 0 && !tick(sent.rows)) break;
        }
        return writer.Finish();
    }
    std::vector<Kind> kinds = KindsOf(t);
    LoadWriter load(target, t, kLoadChunkBytes);
    while (rows->Next(row)) {
        AppendTextLine(kinds, row, load.Text());
        sent.sum += TextRowHash(row);
        load.Added();
        if ((++sent.rows & 1023) == 0 && !tick(sent.rows)) break;
    }
    return load.Finish();
}

TableSum TextChecksum(ado::Connection& c, const TablePlan& t, const KeyRange& range, const std::atomic<bool>* cancel) {
    TableSum s;
    s.byText = true;
    std::unique_ptr<ado::Connection::TextStream> rows = OpenTextRows(c, t, range);
    ado::TextRow row;
    while (rows->Next(row)) {
        s.sum += TextRowHash(row);
        ++s.rows;
        if (cancel && (s.rows & 4095) == 0 && cancel->load()) break;
    }
    return s;
}

} // namespace zolsdk::transfer
