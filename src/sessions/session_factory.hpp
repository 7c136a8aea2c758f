#pragma once
// Constructors of the four sessions, for the adaptor factory.
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

Ref<IDBSession> NewDbMsAccessDB();
Ref<IDBSession> NewDbMsSqlDB();
Ref<IDBSession> NewDbMySqlDB();
Ref<IDBSession> NewDbMsXML();

} // namespace zolsdk
