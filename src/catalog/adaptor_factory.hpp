#pragma once
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

// Chooses the session class by the attribute string's dbtype.
class DbAdaptorFactory {
public:
    // A new, unconnected session; nothing for an unknown or absent dbtype.
    Ref<IDBSession> GetDbSessionAdaptor(const String& psAttributes);
    String AttributeValue(const String& psAttributes, const String& psAttribute);
};

} // namespace zolsdk
