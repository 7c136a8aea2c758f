#include "catalog/adaptor_factory.hpp"

#include "catalog/attributes.hpp"
#include "sessions/session_factory.hpp"

namespace zolsdk {

Ref<IDBSession> DbAdaptorFactory::GetDbSessionAdaptor(const String& psAttributes) {
    String type = LCase(AttributeValue(psAttributes, u"dbtype"));
    if (type == u"msaccess") return NewDbMsAccessDB();
    if (type == u"mssql") return NewDbMsSqlDB();
    if (type == u"mysql") return NewDbMySqlDB();
    if (type == u"msxml") return NewDbMsXML();
    return nullptr;
}

String DbAdaptorFactory::AttributeValue(const String& psAttributes, const String& psAttribute) {
    return FactoryAttributeValue(psAttributes, psAttribute);
}

} // namespace zolsdk
