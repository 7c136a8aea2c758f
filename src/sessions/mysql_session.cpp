#include "sessions/mysql_session.hpp"

#include "catalog/raise_error.hpp"
#include "readers/mysql_reader.hpp"
#include "sessions/open_connection.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMySqlDB() { return Ref<DbMySqlDB>::New(); }

namespace {

constexpr char16_t kLitExecute[] = u"DbMySqlDB:Execute Ln ";
constexpr char16_t kLitExecuteNoQuery[] = u"DbMySqlDB:ExecuteNoQuery Ln ";
constexpr char16_t kLitExecuteNoQueryEx[] = u"DbMySqlDB:IDBSession_ExecuteNoQueryEx Ln ";
constexpr char16_t kLitExecuteScalar[] = u"DbMySqlDB:ExecuteScalar Ln ";
constexpr char16_t kLitOpenConnection[] = u"DbMySqlDB:OpenConnection Ln ";
constexpr char16_t kLitCreateDB[] = u"DbMySqlDB:CreateDB Ln ";
constexpr char16_t kLitDropDB[] = u"DbMySqlDB:DropDB Ln ";
constexpr char16_t kLitIsFTSEnabled[] = u"DbMySqlDB:IsFTSEnabled Ln ";
constexpr char16_t kLitEnableFTS[] = u"DbMySqlDB:EnableFTS Ln ";
constexpr char16_t kLitFTSTableColumnExists[] = u"DbMySqlDB:FTSTableColumnExists Ln ";
constexpr char16_t kLitEnableDisableFTS[] = u"DbMySqlDB:EnableDisableFTSOnMySQL Ln ";

// A failure from outside the library, as the Execute family and the
// database routines report it: number 0x8004FFFF, the original text kept
// inside the description, the statement behind "ErrSQL: " when there is one.
DbError WrapForeign(DbError e, const String* statement) {
    if (e.Source().find(kLibrarySource) != String::npos) return e;
    String description = u"ErrNo: " + IntText(errnum::Unexpected) + u"\r\nErrDescription: " + e.Description();
    if (statement) description += u"\r\nErrSQL: \r\n" + *statement;
    return DbError(errnum::Unexpected, String(kLibrarySource) + u" => \r\n" + e.Source(), std::move(description));
}

} // namespace

DbMySqlDB::DbMySqlDB()
    : SessionBase(DbMySqlDBId, u"DbMySqlDB",
                  SessionFeatures{/*fullTextSearch=*/true, /*connectionPooling=*/true,
                                  /*createIndexInCreateTable=*/true, /*multiRowInsert=*/true}) {}

DbMySqlDB::~DbMySqlDB() {
    try {
        if (moConnection && moConnection->State() == ado::adStateOpen) moConnection->Close();
    } catch (...) {
        // The session is going; a refusal to close changes nothing.
    }
    moConnection.Release();
    moReader.Release();
}

String DbMySqlDB::GetConnectionString(bool pbServer) {
    String port = AttributeValue(u"port");
    if (port.empty()) port = u"3306";
    String text = pbServer ? u"Driver=MySQL ODBC 5.1 Driver;DATABASE=mysql;SERVER=" + AttributeValue(u"dblocation")
                           : u"Driver=MySQL ODBC 5.1 Driver;DATABASE=" + AttributeValue(u"dbname") + u";SERVER=" +
                                 AttributeValue(u"dblocation");
    text += u";UID=" + AttributeValue(u"username") + u";" + u"PASSWORD=" + AttributeValue(u"password") + u";PORT=" +
            port + u";OPTION=" + IntText(kDriverOptions) + u";";
    return text;
}

Ref<IDBReader> DbMySqlDB::MakeReader() { return Ref<DbMySQLReader>::New(); }

void DbMySqlDB::OpenConnection() {
    ZOL_ROUTINE(kLitOpenConnection);
    try {
        ZOL_LN; if (mlOpenDepth >= 1) return;
        ZOL_LN; if (!mbConnected) RaiseError(errnum::ErrDbNotInitialized, u"DbMySqlDB:OpenConnection");
        if (!moConnection) {
            ZOL_LN; moConnection = Ref<ado::Connection>::New();
            ZOL_LN; moConnection->CursorLocation(ado::adUseClient);
            ZOL_LN; moConnection->Mode(ado::adModeReadWrite);
            ZOL_LN; moConnection->ConnectionString(msConnectionString);
            ZOL_LN; moConnection->Open(String(), String(), String(), ado::adOptionUnspecified);
        } else if (moConnection->State() == ado::adStateClosed) {
            ZOL_LN; moConnection->Open(String(), String(), String(), ado::adOptionUnspecified);
        }
    } catch (...) {
        DbError e = CurrentFailure();
        ConnectionFailure f = WordConnectionFailure(e, zol_mark_.line, moConnection.get(), AttributeValue(u"dbname"),
                                                    zol_mark_.literal);
        if (!f.wrapped) throw f.error;
        CloseConnection();
        throw f.error;
    }
}

void DbMySqlDB::CloseConnection() {
    if (mlOpenDepth != 0) return;
    if (moConnection) {
        if (moConnection->State() == ado::adStateOpen) moConnection->Close();
        moConnection.Release();
    }
}

void DbMySqlDB::Disconnect() {
    if (moConnection) {
        if (moConnection->State() == ado::adStateOpen) moConnection->Close();
        moConnection.Release();
        mlOpenDepth = 0;
    }
    mbConnected = false;
}

void DbMySqlDB::WrapAndReraise(const RoutineMark& mark, const String& statement) {
    DbError e = CurrentFailure();
    e.AppendTrace(mark.literal, mark.line);
    DbError out = WrapForeign(std::move(e), &statement);
    CloseConnection();
    throw out;
}

Ref<ado::Recordset> DbMySqlDB::Execute(const String& psSQL) {
    ZOL_ROUTINE(kLitExecute);
    String statement = psSQL;
    try {
        ZOL_LN; OpenConnection();
        Ref<ado::Recordset> rs;
        if (!psSQL.empty() && psSQL[0] == u'!' && mlOpenDepth != 0) {
            // Asynchronous: the rowset stays bound to the bracket's connection.
            statement = psSQL.substr(1);
            ZOL_LN; rs = moConnection->OpenRecordset(statement, ado::adAsyncExecute | ado::adAsyncFetch);
        } else {
            int32_t affected = 0;
            ZOL_LN; rs = moConnection->Execute(psSQL, affected, ado::adOptionUnspecified);
        }
        ZOL_LN; CloseConnection();
        return rs;
    } catch (...) {
        WrapAndReraise(zol_mark_, statement);
    }
}

int32_t DbMySqlDB::ExecuteNoQuery(const String& psSQL) {
    ZOL_ROUTINE(kLitExecuteNoQuery);
    try {
        int32_t affected = 0;
        ZOL_LN; OpenConnection();
        ZOL_LN; moConnection->Execute(psSQL, affected, ado::adExecuteNoRecords);
        ZOL_LN; CloseConnection();
        return affected;
    } catch (...) {
        WrapAndReraise(zol_mark_, psSQL);
    }
}

int32_t DbMySqlDB::ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) {
    ZOL_ROUTINE(kLitExecuteNoQueryEx);
    try {
        int32_t affected = 0;
        ZOL_LN; OpenConnection();
        if (!poParameters) {
            ZOL_LN; moConnection->Execute(psSQL, affected, ado::adExecuteNoRecords);
        } else {
            ZOL_LN; auto command = Ref<ado::Command>::New();
            ZOL_LN; command->ActiveConnection(moConnection);
            ZOL_LN; command->CommandType(ado::adCmdText);
            ZOL_LN; command->CommandText(psSQL);
            // The provider has derived the list from the statement's marks;
            // the caller's values go into it in order, nothing is appended.
            for (int32_t i = 0; i < poParameters->Count(); ++i) {
                ZOL_LN; Ref<ado::Parameter> given = poParameters->Item(Variant(i + 1)).As<ado::Parameter>();
                ZOL_LN; Ref<ado::Parameter> target = command->Parameters().Item(i);
                ZOL_LN; target->Type(given->Type());
                ZOL_LN; target->Size(given->Size());
                ZOL_LN; target->Value(given->Value());
            }
            ZOL_LN; command->Execute(affected, ado::adExecuteNoRecords);
            command.Release();
        }
        ZOL_LN; CloseConnection();
        return affected;
    } catch (...) {
        WrapAndReraise(zol_mark_, psSQL);
    }
}

String DbMySqlDB::ExecuteScalar(const String& psSQL, const String& psDefault) {
    ZOL_ROUTINE(kLitExecuteScalar);
    try {
        int32_t affected = 0;
        ZOL_LN; OpenConnection();
        ZOL_LN; Ref<ado::Recordset> rs = moConnection->Execute(psSQL, affected, ado::adOptionUnspecified);
        ZOL_LN; CloseConnection();
        Variant value;
        ZOL_LN; if (rs->Eof() && rs->Bof()) return psDefault;
        ZOL_LN; rs->MoveFirst();
        ZOL_LN; value = rs->Fields().Item(0).Value();
        if (value.IsNull()) {
            ZOL_LN; rs->Close();
            return psDefault;
        }
        ZOL_LN; rs->Close();
        ZOL_LN; return value.ToString();
    } catch (...) {
        WrapAndReraise(zol_mark_, psSQL);
    }
}

bool DbMySqlDB::CreateOrDropDB(bool create) {
    ZOL_ROUTINE(create ? kLitCreateDB : kLitDropDB);
    Ref<ado::Connection> connection;
    try {
        ZOL_LN; connection = Ref<ado::Connection>::New();
        ZOL_LN; Ref<IDbSqlBuilder> builder = DbSqlBuilder();
        ZOL_LN; String sql = create ? builder->CreateDBSql(AttributeValue(u"dbname"))
                                    : builder->DropDBSql(AttributeValue(u"dbname"));
        ZOL_LN; OpenConnection_Server(connection, GetConnectionString(true), SelfRef<IDBSession>(this));
        int32_t affected = 0;
        ZOL_LN; connection->Execute(sql, affected, ado::adExecuteNoRecords);
        ZOL_LN; zolsdk::CloseConnection(connection);
        if (!create) {
            connection.Release();
            return true;
        }
        if (affected != 0) {
            connection.Release();
            return affected >= 1;
        }
        ZOL_LN; RaiseError(errnum::ErrCreateDb, u"DbMySqlDB:CreateDB");
    } catch (...) {
        DbError e = CurrentFailure();
        e.AppendTrace(zol_mark_.literal, zol_mark_.line);
        DbError out = WrapForeign(std::move(e), nullptr);
        if (connection) {
            if (connection->State() == ado::adStateOpen) connection->Close();
            connection.Release();
        }
        throw out;
    }
}

bool DbMySqlDB::CreateDB() { return CreateOrDropDB(true); }

bool DbMySqlDB::DropDB() { return CreateOrDropDB(false); }

// ---- full-text search -------------------------------------------------------------
// A column is under full-text search when it has a full-text index; the
// catalog name plays no part.

bool DbMySqlDB::FTSTableColumnExists(const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitFTSTableColumnExists);
    try {
        ZOL_LN; String found = ExecuteScalar(u" SHOW INDEX FROM `" + psTableName + u"` WHERE Column_name = '" +
                                                  psColumnName + u"' AND Index_type = 'FULLTEXT'",
                                              String());
        return !found.empty();
    } ZOL_RERAISE
}

bool DbMySqlDB::EnableDisableFTSOnMySQL(const String& psTableName, const String& psColumnName, bool pbEnable) {
    ZOL_ROUTINE(kLitEnableDisableFTS);
    try {
        if (pbEnable) {
            ZOL_LN; ExecuteNoQuery(u" ALTER TABLE " + psTableName + u" ADD FULLTEXT `FT_" + psColumnName + u"` (`" +
                                   psColumnName + u"`) ");
        } else {
            ZOL_LN; ExecuteNoQuery(u" ALTER TABLE " + psTableName + u" DROP INDEX `FT_" + psColumnName + u"` ");
        }
        return true;
    } ZOL_RERAISE
}

bool DbMySqlDB::IsFTSEnabled(const String&, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitIsFTSEnabled);
    try {
        ZOL_LN; if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName)) return true;
        return false;
    } ZOL_RERAISE
}

bool DbMySqlDB::EnableFTS(const String&, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(kLitEnableFTS);
    try {
        // The index is added only where one exists already: that is how the
        // switch has always behaved, and callers depend on it.
        ZOL_LN; if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName))
            EnableDisableFTSOnMySQL(psTableName, psColumnName, true);
        return true;
    } ZOL_RERAISE
}

bool DbMySqlDB::DisableFTS(const String&, const String& psTableName, const String& psColumnName) {
    if (IsFeatureSupported(u"fts") && FTSTableColumnExists(psTableName, psColumnName))
        EnableDisableFTSOnMySQL(psTableName, psColumnName, false);
    return true;
}

} // namespace zolsdk
