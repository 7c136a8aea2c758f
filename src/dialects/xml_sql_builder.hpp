#pragma once
#include "dialects/access_sql_builder.hpp"

namespace zolsdk {

// The dialect of the XML file engine. Schema statements and DeleteSql are
// written as <sql> records of intent for the XML session; the other data
// statements are the Access dialect's SQL.
class DbMsXMLSQLBuilder : public DbMsAccessSQLBuilder {
public:
    DbMsXMLSQLBuilder();

    String CreateTableSql(const String& psTableName, const String& psColumns, const String& psIndexes) override;
    String DropTableSql(const String& psTableName) override;
    String CreateIndexSql(const String& psIndexName, const String& psTableName, const String& psIdxColumns,
                          int32_t plFlagBitMask) override;
    String DropIndexSql(const String& psIndexName, const String& psTableName, int32_t plFlagBitMask) override;
    String SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) override;
    String DeleteSql(const String& psTableName) override;
    String AlterColumnSql(const String& psTableName, const String& psColumnDetail) override;
    String AddColumnSql(const String& psTableName, const String& psColumns) override;
    String DropColumnSql(const String& psTableName, const String& psColumns) override;

private:
    String ColumnItem(const String& tableName, const String& row);
    String ColumnsBlock(const String& tableName, const String& psColumns);
    String IndexItem(const String& tableName, const String& indexName, bool primaryKey, bool unique,
                     const String& idxColumns);
};

} // namespace zolsdk
