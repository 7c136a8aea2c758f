#pragma once
// The contract of a SQL dialect: portable requests in, statement text out.
// A dialect never sees a connection.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class ZOLSDK_API IDbSqlBuilder : public Object {
public:
    virtual String CommandDelimiter() = 0;
    virtual String InlineCommentDelimiter() = 0;
    virtual String BlockCommentDelimiter() = 0;
    virtual String CreateTableSql(const String& psTableName, const String& psColumns, const String& psIndexes) = 0;
    virtual String DropTableSql(const String& psTableName) = 0;
    virtual String CreateIndexSql(const String& psIndexName, const String& psTableName, const String& psIdxColumns,
                                  int32_t plFlagBitMask) = 0;
    virtual String DropIndexSql(const String& psIndexName, const String& psTableName, int32_t plFlagBitMask) = 0;
    virtual String CreateKeySql() = 0;
    virtual String DropKeySql() = 0;
    virtual String CriteriaClause(const String& Alias, const String& psColumn, int32_t plDataType, int32_t plOperator,
                                  const String& psValue) = 0;
    virtual String SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) = 0;
    virtual String SelectByAttributeSql(const String& psTableName, const String& psColumnSet,
                                        const String& psAttributes, const String& psAttributeValue) = 0;
    virtual String InsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                             const String& psBlobValueSubstibute) = 0;
    virtual String BulkInsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                                 const String& psBlobValueSubstibute) = 0;
    virtual String UpdateSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                             const String& psBlobValueSubstibute) = 0;
    virtual String UpdateByAttributeSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                                        const String& psBlobValueSubstibute, const String& psAttributes,
                                        const String& psAttributeValue) = 0;
    virtual String DeleteSql(const String& psTableName) = 0;
    virtual String CreateDBSql(const String& psDatabaseName) = 0;
    virtual String DropDBSql(const String& psDatabaseName) = 0;
    virtual String AlterColumnSql(const String& psTableName, const String& psColumnDetail) = 0;
    virtual String AddColumnSql(const String& psTableName, const String& psColumns) = 0;
    virtual String DropColumnSql(const String& psTableName, const String& psColumns) = 0;
    virtual String CountSql(const String& psTableName) = 0;
};

// A new builder of the engine with this dbtypeid (nothing for an unknown one).
ZOLSDK_API Ref<IDbSqlBuilder> NewSqlBuilder(int32_t dbTypeId);

} // namespace zolsdk
