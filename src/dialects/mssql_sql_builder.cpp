#include "dialects/mssql_sql_builder.hpp"

#include "dialects/column_types.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

const DialectTraits kMsSqlTraits{
    .className = u"DbMsSqlSQLBuilder",
    .nameQuotes = kBracketQuotes,
    .stringOpen = u"N'",
    .dateOpen = u" '",
    .dateClose = u"' ",
    .timeOpen = u"'12/30/1899 ",
    .timeClose = u"'",
    .boolTrue = u"1",
    .boolFalse = u"0",
};

} // namespace

DbMsSqlSQLBuilder::DbMsSqlSQLBuilder() : DbSqlDialect(kMsSqlTraits) {}

String DbMsSqlSQLBuilder::ColumnTypeSql(int32_t group, int32_t, int32_t precision, int32_t scale,
                                        int32_t maxLength) {
    return ColumnTypeText(TypeColumn::MsSql, group, precision, scale, maxLength);
}

String DbMsSqlSQLBuilder::CreateTableSql(const String& psTableName, const String& psColumns, const String&) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateTableSql");
    try {
        // Indexes are not read: they are made by statements of their own.
        String columns;
        ZOL_LN;
        for (const String& row : Split(psColumns, u";", true)) {
            ZOL_LN;
            const ColumnRow c = ReadColumnRow(row);
            columns += u", " + Quoted(c.name) + u" " +
                       ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) + NullMark(c.nullable);
        }
        if (!columns.empty()) columns.erase(0, 1);
        ZOL_LN;
        return u" CREATE TABLE " + Quoted(psTableName) + u" ( " + columns + u" )";
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::CreateIndexSql(const String& psIndexName, const String& psTableName,
                                         const String& psIdxColumns, int32_t plFlagBitMask) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateIndexSql");
    try {
        ZOL_LN;
        const bool primaryKey = (plFlagBitMask & 1) != 0;
        const String list = IndexColumnList(psIdxColumns, !primaryKey);
        String head;
        ZOL_LN;
        const String& table = Bare(psTableName, u"The table name");
        if (primaryKey) {
            // The constraint is named after the table, not after the index.
            head = u" ALTER TABLE " + table + u" ADD CONSTRAINT [idx_" + Escaped(psTableName) + u"] PRIMARY KEY ";
        } else {
            head = u" CREATE ";
            if (plFlagBitMask & 2) head += u" UNIQUE ";
            head += u" INDEX " + Quoted(psIndexName) + u" ON " + table;
        }
        return head + u" (" + list + u")";
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DropIndexSql(const String& psIndexName, const String& psTableName,
                                       int32_t plFlagBitMask) {
    if (plFlagBitMask & 1) return u" ALTER TABLE " + Quoted(psTableName) + u" DROP PRIMARY KEY ";
    return u" DROP INDEX " + Quoted(psIndexName) + u" ON " + Bare(psTableName, u"The table name");
}

String DbMsSqlSQLBuilder::SelectText(const String& psTableName, const String& psColumnSet,
                                     const String& psFilter) const {
    String s = psColumnSet.empty() ? u"SELECT * FROM " + Quoted(psTableName)
                                   : u"SELECT " + psColumnSet + u" FROM " + Quoted(psTableName);
    if (!psFilter.empty()) s += u" WHERE " + psFilter;
    return s;
}

String DbMsSqlSQLBuilder::SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_SelectSql");
    try {
        ZOL_LN;
        return SelectText(psTableName, psColumnSet, psFilter);
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::SelectByAttributeSql(const String& psTableName, const String& psColumnSet,
                                               const String& psAttributes, const String& psAttributeValue) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_SelectByAttributeSql");
    try {
        ZOL_LN;
        const String filter = AttributeFilter(psAttributes, psAttributeValue, u"NULL");
        ZOL_LN;
        return SelectText(psTableName, psColumnSet, filter);
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::BulkInsertSql(const String& psTableName, const String& psColumnSet,
                                        const String& psValue, const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_BulkInsertSql");
    try {
        if (psColumnSet.empty()) return {};
        ZOL_LN;
        const std::vector<TypedColumn> columns = ReadColumnSet(psColumnSet);
        String sql = u" INSERT INTO " + Quoted(psTableName) + u" (" + ColumnList(columns) + u") ";
        ZOL_LN;
        // No multi-row VALUES list here: the rows are joined as selects.
        AppendBulkRows(sql, columns, psValue, psBlobValueSubstibute, u" SELECT ", u"", u" UNION ALL ");
        return sql;
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::CreateDBSql(const String& psDatabaseName) {
    return u"CREATE DATABASE " + Bare(psDatabaseName, u"The database name");
}

String DbMsSqlSQLBuilder::DropDBSql(const String& psDatabaseName) {
    return u"DROP DATABASE " + Bare(psDatabaseName, u"The database name");
}

String DbMsSqlSQLBuilder::AddedColumns(const String& psColumns) {
    String text;
    for (const String& row : Split(psColumns, u";", true)) {
        const ColumnRow c = ReadColumnRow(row);
        // No blank between the name and its type here.
        text += u", ADD " + Quoted(c.name) + ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) +
                NullMark(c.nullable);
    }
    if (!text.empty()) text.erase(0, 1);
    return text;
}

String DbMsSqlSQLBuilder::AddColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AddColumnSql");
    try {
        ZOL_LN;
        return u" ALTER TABLE " + Quoted(psTableName) + u" " + AddedColumns(psColumns);
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DropColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_DropColumnSql");
    try {
        String text;
        ZOL_LN;
        for (const String& name : Split(psColumns, u",")) text += u", DROP COLUMN " + Quoted(name);
        if (!text.empty()) text.erase(0, 1);
        ZOL_LN;
        return u"ALTER TABLE " + Quoted(psTableName) + text;
    }
    ZOL_RERAISE
}

} // namespace zolsdk
