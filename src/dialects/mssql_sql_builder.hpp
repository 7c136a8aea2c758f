#pragma once
#include "dialects/sql_dialect.hpp"

namespace zolsdk {

// The SQL Server dialect: bracket quotes, N'' strings, indexes by separate
// statements, and bulk rows joined as selects. The Access dialect words
// most of its statements the same way and builds on this class.
class DbMsSqlSQLBuilder : public DbSqlDialect {
public:
    DbMsSqlSQLBuilder();

    String CommandDelimiter() override { return u"go"; }
    String InlineCommentDelimiter() override { return u"#"; }
    String CreateTableSql(const String& psTableName, const String& psColumns, const String& psIndexes) override;
    String CreateIndexSql(const String& psIndexName, const String& psTableName, const String& psIdxColumns,
                          int32_t plFlagBitMask) override;
    String DropIndexSql(const String& psIndexName, const String& psTableName, int32_t plFlagBitMask) override;
    String SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) override;
    String SelectByAttributeSql(const String& psTableName, const String& psColumnSet, const String& psAttributes,
                                const String& psAttributeValue) override;
    String BulkInsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                         const String& psBlobValueSubstibute) override;
    String CreateDBSql(const String& psDatabaseName) override;
    String DropDBSql(const String& psDatabaseName) override;
    String AddColumnSql(const String& psTableName, const String& psColumns) override;
    String DropColumnSql(const String& psTableName, const String& psColumns) override;

    String ColumnTypeSql(int32_t group, int32_t dataType, int32_t precision, int32_t scale,
                         int32_t maxLength) override;

protected:
    explicit DbMsSqlSQLBuilder(const DialectTraits& traits) : DbSqlDialect(traits) {}

    // ", ADD [name]type null-mark" for each row, the first comma cut.
    String AddedColumns(const String& psColumns);
    // The statement texts proper, without a trap of their own, so that a
    // derived dialect that words one operation differently still composes
    // the others from these.
    String SelectText(const String& psTableName, const String& psColumnSet, const String& psFilter) const;
};

} // namespace zolsdk
