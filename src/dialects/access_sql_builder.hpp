#pragma once
#include "dialects/mssql_sql_builder.hpp"

namespace zolsdk {

// The Access dialect: the SQL Server statements with date literals between
// "#" marks, "-1" for true, its own type table, no database or bulk
// statements (the session handles the file itself), and a few words less in
// the column statements.
class DbMsAccessSQLBuilder : public DbMsSqlSQLBuilder {
public:
    DbMsAccessSQLBuilder();

    String CommandDelimiter() override { return {}; }
    String InlineCommentDelimiter() override { return {}; }
    String CreateDBSql(const String&) override { return {}; }
    String DropDBSql(const String&) override { return {}; }
    String BulkInsertSql(const String&, const String&, const String&, const String&) override { return {}; }
    String AddColumnSql(const String& psTableName, const String& psColumns) override;
    String DropColumnSql(const String& psTableName, const String& psColumns) override;

    String ColumnTypeSql(int32_t group, int32_t dataType, int32_t precision, int32_t scale,
                         int32_t maxLength) override;

protected:
    explicit DbMsAccessSQLBuilder(const DialectTraits& traits) : DbMsSqlSQLBuilder(traits) {}
    // The literal pieces of this engine under another class name; the XML
    // file holds any name, Jet does not.
    static DialectTraits AccessTraits(const char16_t* className, bool jetNames);
};

} // namespace zolsdk
