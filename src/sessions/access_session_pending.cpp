// Stands in for the Access session until its provider is built; the file
// goes when the real session arrives.
#include "sessions/pending_session.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsAccessDB() { return Ref<PendingSession>::New(DbMsAccessDBId, u"DbMsAccessDB", u"Access"); }

} // namespace zolsdk
