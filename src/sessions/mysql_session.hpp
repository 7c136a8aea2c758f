#pragma once
// The session of a MySQL (or MariaDB) server, reached through the ODBC
// driver that the connection text names. Every statement opens and closes
// a connection of its own unless a BeginTransaction bracket holds one open;
// CreateDB and DropDB use a server-level connection of their own.
#include "zolsdk/platform/ado/connection.hpp"
#include "sessions/session_base.hpp"

namespace zolsdk {

class DbMySqlDB : public SessionBase {
public:
    // The driver option bits that every connection text carries.
    static constexpr int32_t kDriverOptions = 18475;

    DbMySqlDB();
    ~DbMySqlDB() override;

    // Rows of a statement as a disconnected rowset. Inside a bracket a
    // statement written with a leading "!" is opened asynchronously and
    // stays bound to the open connection while its rows arrive.
    Ref<ado::Recordset> Execute(const String& psSQL) override;
    int32_t ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) override;
    int32_t ExecuteNoQuery(const String& psSQL) override;
    String ExecuteScalar(const String& psSQL, const String& psDefault) override;
    void Disconnect() override;
    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool CreateDB() override;
    bool DropDB() override;

    // The connection held open by a bracket (nothing outside one).
    const Ref<ado::Connection>& ActiveConnection() const { return moConnection; }

protected:
    void OpenConnection() override;
    void CloseConnection() override;
    String GetConnectionString(bool pbServer) override;
    Ref<IDBReader> MakeReader() override;

private:
    Ref<ado::Connection> moConnection;

    bool FTSTableColumnExists(const String& psTableName, const String& psColumnName);
    bool EnableDisableFTSOnMySQL(const String& psTableName, const String& psColumnName, bool pbEnable);
    bool CreateOrDropDB(bool create);

    // The handler of the Execute family: failures from outside the library
    // become 0x8004FFFF with the statement in the description.
    [[noreturn]] void WrapAndReraise(const RoutineMark& mark, const String& statement);
};

} // namespace zolsdk
