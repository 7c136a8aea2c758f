// Stands in for the MySQL session until its provider is built; the file
// goes when the real session arrives.
#include "sessions/pending_session.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMySqlDB() { return Ref<PendingSession>::New(DbMySqlDBId, u"DbMySqlDB", u"MySQL"); }

} // namespace zolsdk
