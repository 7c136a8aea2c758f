// The grammars of the delimited texts that cross from the catalog to the
// dialects (column rows, typed column sets, row values, the bulk row mark),
// and the lists that every dialect writes from them.
#include <cstdio>

#include "dialects/sql_dialect.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"

namespace zolsdk {

const String& DbSqlDialect::Field(const std::vector<String>& fields, size_t index) {
    if (index >= fields.size()) RaisePlatform(err::SubscriptOutOfRange);
    return fields[index];
}

int32_t DbSqlDialect::FieldLong(const std::vector<String>& fields, size_t index) {
    return Variant(Field(fields, index)).ToLong();
}

bool DbSqlDialect::FieldBool(const std::vector<String>& fields, size_t index) {
    return Variant(Field(fields, index)).ToBoolean();
}

ColumnRow DbSqlDialect::ReadColumnRow(const String& row) {
    const std::vector<String> f = Split(row, u",", true);
    ColumnRow c;
    c.name = Field(f, 1);
    c.dataType = FieldLong(f, 3);
    c.group = FieldLong(f, 4);
    c.precision = FieldLong(f, 7);
    c.scale = FieldLong(f, 8);
    c.maxLength = FieldLong(f, 9);
    c.nullable = FieldBool(f, 10);
    return c;
}

std::vector<TypedColumn> DbSqlDialect::ReadColumnSet(const String& columnSet) {
    std::vector<TypedColumn> out;
    for (const String& item : Split(columnSet, u",")) {
        TypedColumn c;
        c.group = Variant(item.substr(0, 2)).ToLong();
        c.name = item.size() > 2 ? item.substr(2) : String();
        out.push_back(std::move(c));
    }
    return out;
}

String DbSqlDialect::RowMark() {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%%%X", static_cast<unsigned>(u';'));
    return Ascii(buf);
}

String DbSqlDialect::ColumnList(const std::vector<TypedColumn>& columns) const {
    String s;
    for (const TypedColumn& c : columns) {
        s += u',';
        s += Quoted(c.name);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::IndexColumnList(const String& columns, bool directions) const {
    String s;
    for (const String& item : Split(columns, u",")) {
        // The mark is the item's last character; the name is all before it.
        const char16_t mark = item.empty() ? u'\0' : item.back();
        const bool marked = mark == u'<' || mark == u'>';
        s += u',';
        s += Quoted(marked ? item.substr(0, item.size() - 1) : item);
        if (marked && directions) s += mark == u'<' ? u" ASC" : u" DESC";
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::ValueList(const std::vector<TypedColumn>& columns, const String& values,
                               const String& substitute) {
    const std::vector<String> v = Split(values, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        s += u',';
        s += GetValue(Field(v, i), columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

std::vector<String> DbSqlDialect::BulkRows(const std::vector<TypedColumn>& columns, const String& values,
                                           const String& substitute) {
    const String mark = RowMark();
    const String escapedMark = mark.substr(0, 2) + u"%" + mark.substr(2);
    std::vector<String> rows;
    for (const String& encodedRow : Split(values, mark))
        rows.push_back(BulkRowValues(columns, ReplaceAll(encodedRow, escapedMark, mark), substitute));
    return rows;
}

String DbSqlDialect::BulkRowValues(const std::vector<TypedColumn>& columns, const String& row,
                                   const String& substitute) {
    const std::vector<String> v = Split(row, u",");
    String s;
    for (size_t i = 0; i < v.size(); ++i) {
        if (i >= columns.size()) RaisePlatform(err::SubscriptOutOfRange);
        s += u',';
        s += GetValue(v[i], columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::Assignments(const String& columnSet, const String& values, const String& substitute) {
    const std::vector<TypedColumn> columns = ReadColumnSet(columnSet);
    const std::vector<String> v = Split(values, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        s += u',';
        s += Quoted(columns[i].name);
        s += u" = ";
        s += GetValue(Field(v, i), columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::AttributeFilter(const String& attributes, const String& attributeValues,
                                     const String& substitute) {
    const std::vector<TypedColumn> columns = ReadColumnSet(attributes);
    const std::vector<String> v = Split(attributeValues, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        const String& value = Field(v, i);
        s += u" AND ";
        s += Quoted(columns[i].name);
        if (!EqualsNoCase(value, u"null")) {
            s += u" = ";
            s += GetValue(value, columns[i].group, substitute);
        } else {
            s += u" IS NULL ";
        }
    }
    // The first " AND" goes; the blank behind it leads the filter.
    return s.size() > 4 ? s.substr(4) : String();
}

} // namespace zolsdk
