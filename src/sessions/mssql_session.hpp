#pragma once
// The session of a SQL Server. The connection text names the server's own
// provider and its network library; the platform's provider translates it
// for the driver it uses. Every statement opens and closes a connection of
// its own unless a BeginTransaction bracket holds one open, and runs
// without a time limit; CreateDB and DropDB use a server-level connection
// of their own. Full-text search works through the server's full-text
// catalogs and its system procedures (mssql_fulltext.cpp).
#include "sessions/ado_session_common.hpp"

namespace zolsdk {

class DbMsSqlDB : public AdoSession {
public:
    // The port of a TCP/IP connection when the attributes give none.
    static constexpr int32_t kDefaultPort = 1433;

    DbMsSqlDB();

    // The full-text state of one column, and the two switches. All three
    // first ask whether the server has full-text search at all, and do
    // nothing more when it has not. EnableFTS takes the column out of its
    // catalog and DisableFTS puts it in: clients know the pair by these
    // names, so names and bodies stay as they are.
    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    // True when the server counts a row touched; no failure for none.
    bool CreateDB() override;
    bool DropDB() override;

protected:
    String GetConnectionString(bool pbServer) override;
    Ref<IDBReader> MakeReader() override;
    bool FullTextSearchSupported() override { return IsFTSInstalledOnServer(); }
    // Statements run without a time limit, the asynchronous open excepted.
    void BeforeStatement(StatementKind kind, ado::Connection& connection) override;

    // The statement CreateDB (or DropDB) sends for the session's dbname.
    String DatabaseStatement(bool create);
    // The failure CreateDB (create) or DropDB raises for `failure`, caught
    // at `line`: a failure from outside the library is reported with the
    // provider's words, under the privilege message's number for a create
    // and under its own number for a drop.
    static DbError WordDatabaseFailure(DbError failure, bool create, int line);

    // ---- full-text routines (each traps with "DbMsSqlDB:<name> Ln ") ----
    bool IsFTSInstalledOnServer();
    bool IsFTSEnabledForDB(const String& psDatabaseName);
    bool FTSCatalogExists(const String& psCatalogName);
    bool FTSCatalogTableExists(const String& psCatalogName, const String& psTableName);
    bool FTSTableColumnExists(const String& psTableName, const String& psColumnName);
    bool EnableDisableFTSForDB(bool pbEnable);
    bool CreateFTSCatalog(const String& psCatalogName);
    bool AddToCatalog(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    bool ActivateDeactivateFTSCatalog(const String& psTableName, bool pbActivate);
    // Mode 1 full, 2 incremental, 3 rebuild, 4 stop; other modes run nothing.
    bool PopulateFTSCatalog(const String& psCatalogName, int32_t plMode);
    int32_t GetFTSPopulateStatus(const String& psCatalogName);
    // Mode 1 starts change tracking and background index updates, mode 2
    // stops them; other modes run nothing.
    bool SetFTSChangeTracking(const String& psTableName, int32_t plMode);

private:
    bool CreateOrDropDB(bool create);
};

} // namespace zolsdk
