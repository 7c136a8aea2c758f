// Stands in for the SQL Server session until its provider is built; the file
// goes when the real session arrives.
#include "sessions/pending_session.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsSqlDB() { return Ref<PendingSession>::New(DbMsSqlDBId, u"DbMsSqlDB", u"SQL Server"); }

} // namespace zolsdk
