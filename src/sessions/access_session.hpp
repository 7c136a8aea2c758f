#pragma once
// The session of an Access (Jet) database file. Statements run over the
// Jet provider's connection exactly as in the other provider sessions
// (AdoSession); the database is one file, dblocation "\" dbname, that
// CreateDB makes as a new Jet 4 file and DropDB deletes.
#include "sessions/ado_session_common.hpp"

namespace zolsdk {

class DbMsAccessDB : public AdoSession {
public:
    // The password of the connection text when the attributes give none.
    static constexpr char16_t kBuiltInPassword[] = u"Tul4ra9mex";

    DbMsAccessDB();

    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool CreateDB() override;
    bool DropDB() override;

protected:
    // The file is proven to lie inside dblocation before Jet opens it.
    void PrepareConnection(ado::Connection& c) override {
        DatabaseFile();
        c.Mode(ado::adModeReadWrite);
    }
    String GetConnectionString(bool pbServer) override;
    Ref<IDBReader> MakeReader() override;

private:
    // dblocation, "\" and dbname.
    String FilePath();
};

} // namespace zolsdk
