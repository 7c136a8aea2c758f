// Attribute strings as anyone might write them: both readers, the check
// that refuses values they would shorten, and the SQL Server connection
// text built from them. Failures must be DbError or the provider's refusal;
// a value read never holds the ";" that ends an item.
#include <cstdlib>

#include "catalog/attributes.hpp"
#include "fuzz_input.hpp"
#include "platform/ado/sqlserver/freetds_text.hpp"

using namespace zolsdk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzing::Input in(data, size);
    const String text = in.Rest();
    for (const char16_t* key : {u"dbtype", u"dbname", u"dblocation", u"password", u"port", u""}) {
        const String a = FactoryAttributeValue(text, key);
        const String b = SessionAttributeValue(text, key);
        if (a.find(u';') != String::npos || b.find(u';') != String::npos) std::abort();
        try {
            CheckWholeAttribute(text, key);
        } catch (const DbError&) {
        }
    }
    try {
        ado::detail::FreeTdsConnection c = ado::detail::TranslateToFreeTds(text);
        if (c.text.empty()) std::abort();
    } catch (const ado::detail::ProviderFailure&) {
    }
    return 0;
}
