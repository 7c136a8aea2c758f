#include "catalog/adaptor_factory.hpp"

#include "catalog/attributes.hpp"
#include "catalog/engines.hpp"

namespace zolsdk {

Ref<IDBSession> DbAdaptorFactory::GetDbSessionAdaptor(const String& psAttributes) {
    const Engine* engine = EngineByType(AttributeValue(psAttributes, u"dbtype"));
    return engine ? engine->newSession() : nullptr;
}

String DbAdaptorFactory::AttributeValue(const String& psAttributes, const String& psAttribute) {
    return FactoryAttributeValue(psAttributes, psAttribute);
}

} // namespace zolsdk
