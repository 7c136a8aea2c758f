// Stands in for the XML session until its provider is built; the file
// goes when the real session arrives.
#include "sessions/pending_session.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsXML() { return Ref<PendingSession>::New(DbMsXMLId, u"DbMsXML", u"XML"); }

} // namespace zolsdk
