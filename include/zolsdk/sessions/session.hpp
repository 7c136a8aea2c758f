#pragma once
// The contract every engine's session keeps. A catalog holds one session;
// schema readers, dialects and data sets reach their engine through it.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class IDBReader;
class IDbSqlBuilder;

// The engine numbers (dbtypeid).
enum DbTypeId : int32_t { DbMsAccessDBId = 0, DbMsSqlDBId = 1, DbMySqlDBId = 2, DbMsXMLId = 3 };

class ZOLSDK_API IDBSession : public Object {
public:
    virtual Ref<ado::Recordset> Execute(const String& psSQL) = 0;
    // poParameters: a Collection of ado::Parameter objects, or nothing.
    virtual int32_t ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) = 0;
    virtual int32_t ExecuteNoQuery(const String& psSQL) = 0;
    virtual String ExecuteScalar(const String& psSQL, const String& psDefault) = 0;
    virtual void Connect(const String& psAttributes) = 0;
    virtual void Disconnect() = 0;
    virtual void BeginTransaction() = 0;
    virtual void EndTransaction() = 0;
    virtual void RollbackTransaction() = 0;
    virtual String ConnectionString() = 0;
    virtual String AttributeValue(const String& psAttribute) = 0;
    virtual bool IsFeatureSupported(const String& psFeature) = 0;
    virtual bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) = 0;
    virtual bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) = 0;
    virtual bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) = 0;
    virtual bool CreateDB() = 0;
    virtual bool DropDB() = 0;
    virtual Ref<IDBReader> DbReader() = 0;
    virtual Ref<IDbSqlBuilder> DbSqlBuilder() = 0;
};

} // namespace zolsdk
