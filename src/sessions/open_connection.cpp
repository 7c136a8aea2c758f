#include "sessions/open_connection.hpp"

#include "catalog/raise_error.hpp"
#include "sessions/session_base.hpp"
#include "support/replace_text.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

ConnectionFailure WordConnectionFailure(const DbError& failure, int line, const ado::Connection* connection,
                                        const String& target, StringView literal) {
    String trace = failure.Source();
    String reason;
    if (connection) {
        for (const Ref<ado::Error>& e : *connection->Errors()) {
            trace += u" => [" + IntText(e->Number()) + u"#" + IntText(e->NativeError()) + u"][" + e->Source() + u"][" +
                     e->SQLState() + u"] " + e->Description();
            if (e->NativeError() != 0) {
                if (!reason.empty()) reason += u"\r\n";
                reason += e->Description();
            }
        }
    }
    String message;
    if (!reason.empty()) {
        message = ReplaceAll(ErrorText(errnum::ErrConnect), u"%1",
                             u"ErrNo:" + IntText(failure.Number()) + u"\r\n Details:" + reason);
    } else if (failure.Source().find(kLibrarySource) != String::npos) {
        DbError same = failure;
        same.AppendTrace(literal, line);
        return {same, false};
    } else {
        message = ReplaceAll(ErrorText(errnum::ErrConnect), u"%1",
                             u"ErrNo:" + IntText(failure.Number()) + u"\r\n Details:" + failure.Description());
    }
    message = ReplaceAll(message, u"%0", target);
    String source = String(kLibrarySource) + u" => \r\n" + trace + u" => \r\n" + String(literal) + IntText(line);
    return {DbError(errnum::ConnectFailed, std::move(source), std::move(message)), true};
}

namespace {

bool OpenWith(const Ref<ado::Connection>& connection, const String* connectionString, const Ref<IDBSession>& session,
              const RoutineMark& mark, int& line, StringView attribute) {
    try {
        if (auto* base = dynamic_cast<const SessionBase*>(session.get())) {
            line = __LINE__; base->CheckWholeAttributes();
        }
        line = __LINE__; connection->CursorLocation(ado::adUseClient);
        line = __LINE__; connection->ConnectionString(connectionString ? *connectionString : session->ConnectionString());
        line = __LINE__; connection->Open(String(), String(), String(), ado::adOptionUnspecified);
        return true;
    } catch (...) {
        DbError e = CurrentFailure();
        String target = session ? session->AttributeValue(String(attribute)) : String();
        ConnectionFailure f = WordConnectionFailure(e, line, connection.get(), target, mark.literal);
        if (f.wrapped && connection && connection->State() == ado::adStateOpen) connection->Close();
        throw f.error;
    }
}

} // namespace

bool OpenConnection_DB(const Ref<ado::Connection>& connection, const Ref<IDBSession>& session) {
    RoutineMark mark{u"OpenConnection_DB Ln ", __LINE__};
    return OpenWith(connection, nullptr, session, mark, mark.line, u"dbname");
}

bool OpenConnection_Server(const Ref<ado::Connection>& connection, const String& connectionString,
                           const Ref<IDBSession>& session) {
    RoutineMark mark{u"OpenConnection_Server Ln ", __LINE__};
    return OpenWith(connection, &connectionString, session, mark, mark.line, u"dblocation");
}

void CloseConnection(const Ref<ado::Connection>& connection) {
    ZOL_ROUTINE(u"CloseConnection Ln ");
    try {
        ZOL_LN; if (connection->State() == ado::adStateOpen) connection->Close();
    } ZOL_RERAISE
}

} // namespace zolsdk
