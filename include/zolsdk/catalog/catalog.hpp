#pragma once
// DbCatalog: one database, reached through one session made from an
// attribute string such as "dbtype=mysql;dbname=shop;dblocation=127.0.0.1".
// Create it with Ref<DbCatalog>::New() (or CreateObject(u"DbCatalog")):
// the objects it hands out hold a reference to it.
#include <cstdint>

#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class IDBSession;
class DbTables;

class DbCatalog : public Object {
public:
    // Makes the session for the attribute's dbtype and hands it the
    // attributes; opens nothing. An unknown dbtype leaves no session, and
    // this and every later call fail with 91.
    void Init(const String& psAttributes);
    Ref<IDBSession> Session() const { return m_oSession; }
    bool Drop();
    bool Create();
    String Name();
    String DBProperty(const String& psString);
    String CatalogType();
    String Location();
    // A new collection at every call.
    Ref<DbTables> Tables();
    int32_t GetDataRowCount(const String& psTableName);
    bool IsFeatureSupported(const String& psFeature);
    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    // A connection scope: the store stays open from the first Begin to the
    // matching End. Nothing is ever rolled back in the engine.
    void BeginTransaction();
    void EndTransaction();
    void RollbackTransaction();

private:
    Ref<IDBSession> m_oSession;
};

} // namespace zolsdk
