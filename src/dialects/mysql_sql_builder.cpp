#include "dialects/mysql_sql_builder.hpp"

#include <cstdio>

#include "dialects/column_types.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

const DialectTraits kMySqlTraits{
    .className = u"DbMySqlSQLBuilder",
    .nameQuotes = kBacktickQuotes,
    .stringOpen = u"'",
    .doubleBackslash = true,
    .dateOpen = u" '",
    .dateClose = u"' ",
    .yearFirst = true,
    .timeOpen = u"'1899-12-30 ",
    .timeClose = u"'",
    .boolTrue = u"1",
    .boolFalse = u"0",
};

} // namespace

DbMySqlSQLBuilder::DbMySqlSQLBuilder() : DbSqlDialect(kMySqlTraits) {}

String DbMySqlSQLBuilder::ColumnTypeSql(int32_t group, int32_t, int32_t precision, int32_t scale,
                                        int32_t maxLength) {
    return ColumnTypeText(TypeColumn::MySql, group, precision, scale, maxLength);
}

String DbMySqlSQLBuilder::ColumnDefinition(const ColumnRow& c) {
    return Quoted(c.name) + ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) +
           NullMark(c.nullable);
}

String DbMySqlSQLBuilder::CreateTableSql(const String& psTableName, const String& psColumns,
                                         const String& psIndexes) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateTableSql");
    try {
        String columns;
        ZOL_LN;
        for (const String& row : Split(psColumns, u";", true)) {
            ZOL_LN;
            columns += u", " + ColumnDefinition(ReadColumnRow(row));
        }
        // The comma goes, the blank behind it stays.
        if (!columns.empty()) columns.erase(0, 1);
        String indexes;
        ZOL_LN;
        for (const String& row : Split(psIndexes, u";", true)) {
            ZOL_LN;
            const std::vector<String> parts = Split(row, u"|");
            const std::vector<String> index = Split(Field(parts, 0), u",");
            const String list = IndexColumnList(Field(parts, 1), true);
            ZOL_LN;
            if (FieldBool(index, 2))
                indexes += u", PRIMARY KEY (" + list + u")";
            else if (FieldBool(index, 3))
                indexes += u", UNIQUE INDEX " + Quoted(Field(index, 1)) + u" (" + list + u")";
            else
                indexes += u", INDEX " + Quoted(Field(index, 1)) + u" (" + list + u")";
        }
        ZOL_LN;
        return u" CREATE TABLE " + Quoted(psTableName) + u" ( " + columns + indexes +
               u" ) ENGINE = MyISAM CHARACTER SET 'utf8' COLLATE 'utf8_general_ci' ";
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::CreateIndexSql(const String& psIndexName, const String& psTableName,
                                         const String& psIdxColumns, int32_t plFlagBitMask) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateIndexSql");
    try {
        ZOL_LN;
        // A primary key takes no direction words here.
        const bool primaryKey = (plFlagBitMask & 1) != 0;
        const String list = IndexColumnList(psIdxColumns, !primaryKey);
        String head;
        ZOL_LN;
        if (primaryKey) {
            head = u" ALTER TABLE " + Bare(psTableName, u"The table name") + u" ADD CONSTRAINT PRIMARY KEY ";
        } else {
            head = u" CREATE ";
            if (plFlagBitMask & 2) head += u" UNIQUE ";
            head += u" INDEX " + Quoted(psIndexName) + u" ON " + Bare(psTableName, u"The table name");
        }
        return head + u" (" + list + u")";
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::DropIndexSql(const String& psIndexName, const String& psTableName,
                                       int32_t plFlagBitMask) {
    if (plFlagBitMask & 1) return u" ALTER TABLE " + Quoted(psTableName) + u" DROP PRIMARY KEY ";
    return u" DROP INDEX " + Quoted(psIndexName) + u" ON " + Quoted(psTableName);
}

String DbMySqlSQLBuilder::SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_SelectSql");
    try {
        ZOL_LN;
        String s;
        if (!psColumnSet.empty()) {
            // Callers may bracket their names for any engine.
            const String set = ReplaceAll(ReplaceAll(psColumnSet, u"[", u"`"), u"]", u"`");
            s = u"SELECT " + set + u" FROM " + Quoted(psTableName);
        } else {
            s = u"SELECT * FROM " + Quoted(psTableName);
        }
        if (!psFilter.empty()) s += u" WHERE " + psFilter;
        return s;
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::SelectByAttributeSql(const String& psTableName, const String& psColumnSet,
                                               const String& psAttributes, const String& psAttributeValue) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_SelectByAttributeSql");
    try {
        // "NULL" as the substitute: a large attribute compares with NULL.
        ZOL_LN;
        const String filter = AttributeFilter(psAttributes, psAttributeValue, u"NULL");
        ZOL_LN;
        return SelectSql(psTableName, psColumnSet, filter);
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::BulkInsertSql(const String& psTableName, const String& psColumnSet,
                                        const String& psValue, const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_BulkInsertSql");
    try {
        if (psColumnSet.empty()) return {};
        ZOL_LN;
        const std::vector<TypedColumn> columns = ReadColumnSet(psColumnSet);
        // The one statement that grows with the data: made at its final size.
        String sql;
        sql.reserve(psValue.size() + psValue.size() / 4 + 256);
        sql += u" INSERT INTO ";
        sql += Quoted(psTableName);
        sql += u" (";
        sql += ColumnList(columns);
        sql += u") VALUES ";
        ZOL_LN;
        AppendBulkRows(sql, columns, psValue, psBlobValueSubstibute, u" (", u")", u",");
        return sql;
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::CreateDBSql(const String& psDatabaseName) {
    return u"CREATE DATABASE IF NOT EXISTS " + Quoted(psDatabaseName) +
           u" DEFAULT CHARACTER SET 'utf8' DEFAULT COLLATE 'utf8_general_ci' ";
}

String DbMySqlSQLBuilder::DropDBSql(const String& psDatabaseName) {
    return u"DROP DATABASE IF EXISTS " + Quoted(psDatabaseName);
}

String DbMySqlSQLBuilder::AddColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AddColumnSql");
    try {
        String text;
        ZOL_LN;
        for (const String& row : Split(psColumns, u";", true)) {
            ZOL_LN;
            text += u", ADD COLUMN " + ColumnDefinition(ReadColumnRow(row));
        }
        if (!text.empty()) text.erase(0, 1);
        ZOL_LN;
        return u" ALTER TABLE " + Bare(psTableName, u"The table name") + u" " + text;
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::DropColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_DropColumnSql");
    try {
        String text;
        ZOL_LN;
        for (const String& name : Split(psColumns, u",")) text += u", DROP COLUMN " + Bare(name, u"The column name");
        if (!text.empty()) text.erase(0, 1);
        ZOL_LN;
        return u"ALTER TABLE " + Quoted(psTableName) + text;
    }
    ZOL_RERAISE
}

String DbMySqlSQLBuilder::HexCodeStr(const String& text) {
    const std::string bytes = ToUtf8(text);
    std::string hex = "_utf8 0x";
    char buf[4];
    for (unsigned char b : bytes) {
        std::snprintf(buf, sizeof buf, "%02X", b);
        hex += buf;
    }
    return Ascii(hex);
}

} // namespace zolsdk
