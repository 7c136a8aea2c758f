#pragma once
// Opening a provider connection for a session or its reader, and the
// wording of a refusal: the provider's error list goes into the failure's
// Source, its texts into the library's "Failed to connect" message.
#include "platform/ado/connection.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

// Opens `connection` (client-side cursors) with the session's connection
// text for its database. A refusal raises 0x8004F001 naming `dbname`.
bool OpenConnection_DB(const Ref<ado::Connection>& connection, const Ref<IDBSession>& session);

// The same with a connection text of the caller's (a server-level one);
// the message names the session's `dblocation`.
bool OpenConnection_Server(const Ref<ado::Connection>& connection, const String& connectionString,
                           const Ref<IDBSession>& session);

// Closes the connection when it is open.
void CloseConnection(const Ref<ado::Connection>& connection);

// The failure a connection routine raises for `failure`, caught at `line`
// of the routine with trace literal `literal`. `target` replaces "%0".
// `wrapped` is false when the failure was the library's own and only
// gained its chain line; then nothing is to be closed.
struct ConnectionFailure {
    DbError error;
    bool wrapped;
};
ConnectionFailure WordConnectionFailure(const DbError& failure, int line, const ado::Connection* connection,
                                        const String& target, StringView literal);

} // namespace zolsdk
