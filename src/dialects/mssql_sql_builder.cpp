#include "dialects/mssql_sql_builder.hpp"

#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

const DialectTraits kMsSqlTraits{
    u"DbMsSqlSQLBuilder", u"[", u"]", u"N'", false, u" '", u"' ", false, u"'12/30/1899 ", u"'", u"1", u"0", false,
};

// Brackets every name of an index column list; a primary key takes no
// direction words, other indexes get ASC and DESC for the marks.
String IndexColumns(const String& columns, bool primaryKey) {
    String s = ReplaceAll(columns, u"<", u"]<");
    s = ReplaceAll(s, u">", u"]>");
    s = ReplaceAll(s, u",", u",[");
    s = u"[" + s;
    if (primaryKey) return ReplaceAll(ReplaceAll(s, u"<", u""), u">", u"");
    return ReplaceAll(ReplaceAll(s, u"<", u" ASC"), u">", u" DESC");
}

} // namespace

DbMsSqlSQLBuilder::DbMsSqlSQLBuilder() : DbSqlDialect(kMsSqlTraits) {}

String DbMsSqlSQLBuilder::ColumnTypeSql(int32_t group, int32_t, int32_t precision, int32_t scale,
                                        int32_t maxLength) {
    switch (group) {
    case dtVarChar: return maxLength != 0 ? u"NVARCHAR(" + IntText(maxLength) + u")" : String(u"NVARCHAR(255)");
    case dtCharBLOB: return u"NTEXT";
    case dtInteger:
    case dtUnsignedInteger:
        // No widths and no unsigned forms on this engine.
        if (precision <= 1) return {};
        if (precision <= 3) return u"TINYINT";
        if (precision <= 5) return u"SMALLINT";
        if (precision <= 10) return u"INTEGER";
        return u"BIGINT";
    case dtDate:
    case dtTime:
    case dtDateTime: return u"DATETIME";
    case dtBoolean: return u"BIT";
    case dtDouble: return u"FLOAT";
    case dtBinaryBLOB: return u"IMAGE";
    case dtSingle: return u"REAL";
    case dtDecimal: return u"DECIMAL(" + IntText(precision) + u"," + IntText(scale) + u")";
    case dtCurrency: return u"MONEY";
    default: return {};
    }
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
            columns += u", [" + c.name + u"]" + u" " +
                       ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) + NullMark(c.nullable);
        }
        if (!columns.empty()) columns.erase(0, 1);
        return u" CREATE TABLE [" + psTableName + u"] ( " + columns + u" )";
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DropTableSql(const String& psTableName) { return u"DROP TABLE [" + psTableName + u"]"; }

String DbMsSqlSQLBuilder::CreateIndexSql(const String& psIndexName, const String& psTableName,
                                         const String& psIdxColumns, int32_t plFlagBitMask) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateIndexSql");
    try {
        ZOL_LN;
        const bool primaryKey = (plFlagBitMask & 1) != 0;
        const String list = IndexColumns(psIdxColumns, primaryKey);
        String head;
        if (primaryKey) {
            // The constraint is named after the table, not after the index.
            head = u" ALTER TABLE " + psTableName + u" ADD CONSTRAINT [idx_" + psTableName + u"] PRIMARY KEY ";
        } else {
            head = u" CREATE ";
            if (plFlagBitMask & 2) head += u" UNIQUE ";
            head += u" INDEX [" + psIndexName + u"] ON " + psTableName;
        }
        return head + u" (" + list + u")";
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DropIndexSql(const String& psIndexName, const String& psTableName,
                                       int32_t plFlagBitMask) {
    if (plFlagBitMask & 1) return u" ALTER TABLE [" + psTableName + u"] DROP PRIMARY KEY ";
    return u" DROP INDEX [" + psIndexName + u"] ON " + psTableName;
}

String DbMsSqlSQLBuilder::SelectText(const String& psTableName, const String& psColumnSet,
                                     const String& psFilter) const {
    String s = psColumnSet.empty() ? u"SELECT * FROM [" + psTableName + u"]"
                                   : u"SELECT " + psColumnSet + u" FROM [" + psTableName + u"]";
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

String DbMsSqlSQLBuilder::InsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                                    const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_InsertSql");
    try {
        if (psColumnSet.empty()) return {};
        ZOL_LN;
        const std::vector<TypedColumn> columns = ReadColumnSet(psColumnSet);
        ZOL_LN;
        const String values = ValueList(columns, psValue, psBlobValueSubstibute);
        return u"INSERT INTO [" + psTableName + u"] (" + ColumnList(columns) + u") VALUES (" + values + u")";
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
        CStringBuilder sql;
        sql.Append(u" INSERT INTO [").Append(psTableName).Append(u"] (").Append(ColumnList(columns)).Append(u") ");
        bool first = true;
        ZOL_LN;
        for (const String& values : BulkRows(columns, psValue, psBlobValueSubstibute)) {
            // No multi-row VALUES list here: the rows are joined as selects.
            if (!first) sql.Append(u" UNION ALL ");
            sql.Append(u" SELECT ").Append(values);
            first = false;
        }
        return sql.ToString();
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::UpdateText(const String& psTableName, const String& psColumnSet, const String& psValue,
                                     const String& psBlobValueSubstibute) {
    return u" UPDATE [" + psTableName + u"] SET " + Assignments(psColumnSet, psValue, psBlobValueSubstibute);
}

String DbMsSqlSQLBuilder::UpdateSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                                    const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_UpdateSql");
    try {
        ZOL_LN;
        return UpdateText(psTableName, psColumnSet, psValue, psBlobValueSubstibute);
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::UpdateByAttributeSql(const String& psTableName, const String& psColumnSet,
                                               const String& psValue, const String& psBlobValueSubstibute,
                                               const String& psAttributes, const String& psAttributeValue) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_UpdateByAttributeSql");
    try {
        ZOL_LN;
        String filter = AttributeFilter(psAttributes, psAttributeValue, psBlobValueSubstibute);
        if (!psAttributes.empty()) filter = u" WHERE " + filter;
        ZOL_LN;
        return UpdateText(psTableName, psColumnSet, psValue, psBlobValueSubstibute) + filter;
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DeleteSql(const String& psTableName) { return u"DELETE FROM [" + psTableName + u"]"; }

String DbMsSqlSQLBuilder::CreateDBSql(const String& psDatabaseName) { return u"CREATE DATABASE " + psDatabaseName; }

String DbMsSqlSQLBuilder::DropDBSql(const String& psDatabaseName) { return u"DROP DATABASE " + psDatabaseName; }

String DbMsSqlSQLBuilder::AlterColumnSql(const String& psTableName, const String& psColumnDetail) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AlterColumnSql");
    try {
        String change;
        if (!psColumnDetail.empty()) {
            ZOL_LN;
            const ColumnRow c = ReadColumnRow(psColumnDetail);
            change = u"ALTER COLUMN [" + c.name + u"]" + u" " +
                     ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) + NullMark(c.nullable);
        }
        return u" ALTER TABLE [" + psTableName + u"] " + change;
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::AddedColumns(const String& psColumns) {
    String text;
    for (const String& row : Split(psColumns, u";", true)) {
        const ColumnRow c = ReadColumnRow(row);
        // No blank between the name and its type here.
        text += u", ADD [" + c.name + u"]" + ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) +
                NullMark(c.nullable);
    }
    if (!text.empty()) text.erase(0, 1);
    return text;
}

String DbMsSqlSQLBuilder::AddColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AddColumnSql");
    try {
        ZOL_LN;
        return u" ALTER TABLE [" + psTableName + u"] " + AddedColumns(psColumns);
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::DropColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_DropColumnSql");
    try {
        String text;
        ZOL_LN;
        for (const String& name : Split(psColumns, u",")) text += u", DROP COLUMN [" + name + u"]";
        if (!text.empty()) text.erase(0, 1);
        return u"ALTER TABLE [" + psTableName + u"]" + text;
    }
    ZOL_RERAISE
}

String DbMsSqlSQLBuilder::CountSql(const String& psTableName) {
    return u"SELECT COUNT(*) FROM [" + psTableName + u"]";
}

} // namespace zolsdk
