#include "sessions/access_session.hpp"

#include "catalog/raise_error.hpp"
#include "platform/ado/jet/jet_files.hpp"
#include "readers/access_reader.hpp"
#include "sessions/session_factory.hpp"
#include "support/copy_to_file.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsAccessDB() { return Ref<DbMsAccessDB>::New(); }

DbMsAccessDB::DbMsAccessDB() : AdoSession(DbMsAccessDBId, u"DbMsAccessDB", SessionFeatures{}) {}

Ref<IDBReader> DbMsAccessDB::MakeReader() { return Ref<DbMsAccessReader>::New(); }

String DbMsAccessDB::FilePath() { return AttributeValue(u"dblocation") + u"\\" + AttributeValue(u"dbname"); }

String DbMsAccessDB::GetConnectionString(bool) {
    // This routine has always traced under the name of CloseConnection.
    ZOL_ROUTINE(u"DbMsAccessDB:CloseConnection Ln ");
    try {
        ZOL_LN; String password = AttributeValue(u"password");
        if (password.empty()) password = kBuiltInPassword;
        ZOL_LN; return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + FilePath() +
                       u";Persist Security Info=False;Jet OLEDB:Database Password=" + password;
    } ZOL_RERAISE
}

bool DbMsAccessDB::CreateDB() {
    ZOL_ROUTINE(u"DbMsAccessDB:CreateDB Ln ");
    try {
        ZOL_LN; String path = DatabaseFile();
        ZOL_LN; if (FileExists(path)) RaiseError(errnum::ErrCreateDb, u"DbMsAccessDB:CreateDB");
        // The new file carries no password, whatever the attributes say.
        ZOL_LN; ado::CreateJetDatabase(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path +
                                       u";Jet OLEDB:Engine Type=5");
        return true;
    } ZOL_RERAISE
}

bool DbMsAccessDB::DropDB() {
    ZOL_ROUTINE(u"DbMsAccessDB:DropDB Ln ");
    try {
        ZOL_LN; String path = DatabaseFile();
        if (FileExists(path)) {
            // Jet holds an open file against deletion; a connection of this
            // process (a bracket of any session on it) keeps it open.
            ZOL_LN; if (ado::JetFileInUse(path)) RaisePlatform(err::PermissionDenied, path + u": the file is open");
            ZOL_LN; ado::ReleaseJetFile(path);
            ZOL_LN; DeleteFile(path);
        }
        return true;
    } ZOL_RERAISE
}

// No full-text search on this engine: nothing to ask, nothing to switch.
bool DbMsAccessDB::IsFTSEnabled(const String&, const String&, const String&) { return false; }
bool DbMsAccessDB::EnableFTS(const String&, const String&, const String&) { return false; }
bool DbMsAccessDB::DisableFTS(const String&, const String&, const String&) { return true; }

} // namespace zolsdk
