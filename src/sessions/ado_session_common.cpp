#include "sessions/ado_session_common.hpp"

#include "catalog/raise_error.hpp"
#include "sessions/open_connection.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

DbError WrapForeignFailure(DbError failure, const String* statement) {
    if (failure.Source().find(kLibrarySource) != String::npos) return failure;
    String description =
        u"ErrNo: " + IntText(errnum::Unexpected) + u"\r\nErrDescription: " + failure.Description();
    if (statement) description += u"\r\nErrSQL: \r\n" + *statement;
    return DbError(errnum::Unexpected, String(kLibrarySource) + u" => \r\n" + failure.Source(), std::move(description));
}

AdoSession::AdoSession(int32_t dbTypeId, String className, SessionFeatures features)
    : SessionBase(dbTypeId, std::move(className), features) {
    litExecute_ = Literal(u"Execute");
    litExecuteNoQuery_ = Literal(u"ExecuteNoQuery");
    litExecuteNoQueryEx_ = Literal(u"IDBSession_ExecuteNoQueryEx");
    litExecuteScalar_ = Literal(u"ExecuteScalar");
    litOpenConnection_ = Literal(u"OpenConnection");
    routineOpenConnection_ = ClassName() + u":OpenConnection";
}

AdoSession::~AdoSession() {
    try {
        if (moConnection && moConnection->State() == ado::adStateOpen) moConnection->Close();
    } catch (...) {
        // The session is going; a refusal to close changes nothing.
    }
    moConnection.Release();
    moReader.Release();
}

void AdoSession::OpenConnection() {
    ZOL_ROUTINE(litOpenConnection_);
    try {
        ZOL_LN; if (mlOpenDepth >= 1) return;
        ZOL_LN; if (!mbConnected) RaiseError(errnum::ErrDbNotInitialized, routineOpenConnection_);
        ZOL_LN; CheckWholeAttributes();
        if (!moConnection) {
            ZOL_LN; moConnection = Ref<ado::Connection>::New();
            ZOL_LN; moConnection->CursorLocation(ado::adUseClient);
            ZOL_LN; PrepareConnection(*moConnection);
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

void AdoSession::CloseConnection() {
    if (mlOpenDepth != 0) return;
    if (moConnection) {
        if (moConnection->State() == ado::adStateOpen) moConnection->Close();
        moConnection.Release();
    }
}

void AdoSession::Disconnect() {
    if (moConnection) {
        if (moConnection->State() == ado::adStateOpen) moConnection->Close();
        moConnection.Release();
        mlOpenDepth = 0;
    }
    mbConnected = false;
}

void AdoSession::WrapAndReraise(const RoutineMark& mark, const String& statement) {
    DbError e = CurrentFailure();
    e.AppendTrace(mark.literal, mark.line);
    DbError out = WrapForeignFailure(std::move(e), &statement);
    CloseConnection();
    throw out;
}

Ref<ado::Recordset> AdoSession::Execute(const String& psSQL) {
    ZOL_ROUTINE(litExecute_);
    String statement = psSQL;
    try {
        ZOL_LN; OpenConnection();
        Ref<ado::Recordset> rs;
        if (!psSQL.empty() && psSQL[0] == u'!' && mlOpenDepth != 0) {
            // Asynchronous: the rowset stays bound to the bracket's connection.
            statement = psSQL.substr(1);
            ZOL_LN; BeforeStatement(StatementKind::AsyncRows, *moConnection);
            ZOL_LN; rs = moConnection->OpenRecordset(statement, ado::adAsyncExecute | ado::adAsyncFetch);
        } else {
            int32_t affected = 0;
            ZOL_LN; BeforeStatement(StatementKind::Rows, *moConnection);
            ZOL_LN; rs = moConnection->Execute(psSQL, affected, ado::adOptionUnspecified);
        }
        ZOL_LN; CloseConnection();
        return rs;
    } catch (...) {
        WrapAndReraise(zol_mark_, statement);
    }
}

int32_t AdoSession::ExecuteNoQuery(const String& psSQL) {
    ZOL_ROUTINE(litExecuteNoQuery_);
    try {
        int32_t affected = 0;
        ZOL_LN; OpenConnection();
        ZOL_LN; BeforeStatement(StatementKind::NoRows, *moConnection);
        ZOL_LN; moConnection->Execute(psSQL, affected, ado::adExecuteNoRecords);
        ZOL_LN; CloseConnection();
        return affected;
    } catch (...) {
        WrapAndReraise(zol_mark_, psSQL);
    }
}

int32_t AdoSession::ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) {
    ZOL_ROUTINE(litExecuteNoQueryEx_);
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
            ZOL_LN; BeforeStatement(StatementKind::BoundParameters, *moConnection);
            ZOL_LN; command->Execute(affected, ado::adExecuteNoRecords);
            command.Release();
        }
        ZOL_LN; CloseConnection();
        return affected;
    } catch (...) {
        WrapAndReraise(zol_mark_, psSQL);
    }
}

String AdoSession::ExecuteScalar(const String& psSQL, const String& psDefault) {
    ZOL_ROUTINE(litExecuteScalar_);
    try {
        int32_t affected = 0;
        ZOL_LN; OpenConnection();
        ZOL_LN; BeforeStatement(StatementKind::Scalar, *moConnection);
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

} // namespace zolsdk
