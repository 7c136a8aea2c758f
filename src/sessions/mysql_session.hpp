#pragma once
// The session of a MySQL (or MariaDB) server, reached through the ODBC
// driver that the connection text names. Every statement opens and closes
// a connection of its own unless a BeginTransaction bracket holds one open;
// CreateDB and DropDB use a server-level connection of their own.
#include "sessions/ado_session_common.hpp"

namespace zolsdk {

class DbMySqlDB : public AdoSession {
public:
    // The driver option bits that every connection text carries.
    static constexpr int32_t kDriverOptions = 18475;

    DbMySqlDB();

    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool CreateDB() override;
    bool DropDB() override;

protected:
    // Read and write, as every connection of this engine is opened.
    void PrepareConnection(ado::Connection& c) override { c.Mode(ado::adModeReadWrite); }
    String GetConnectionString(bool pbServer) override;
    Ref<IDBReader> MakeReader() override;

private:
    bool FTSTableColumnExists(const String& psTableName, const String& psColumnName);
    bool EnableDisableFTSOnMySQL(const String& psTableName, const String& psColumnName, bool pbEnable);
    bool CreateOrDropDB(bool create);
};

} // namespace zolsdk
