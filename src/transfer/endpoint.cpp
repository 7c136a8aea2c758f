#include "transfer/endpoint.hpp"

#include "catalog/attributes.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/error.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk::transfer {

String Endpoint::Attribute(StringView key) const { return SessionAttributeValue(attributes, key); }

String Endpoint::FilePath() const {
    String dir = Attribute(u"dblocation");
    for (auto& ch : dir)
        if (ch == u'\\') ch = u'/';
    return dir.empty() ? Attribute(u"dbname") : dir + u"/" + Attribute(u"dbname");
}

Endpoint OpenEndpoint(const String& attributes) {
    Endpoint e;
    e.attributes = attributes;
    e.catalog = Ref<DbCatalog>::New();
    e.catalog->Init(attributes);
    String type = LCase(SessionAttributeValue(attributes, u"dbtype"));
    if (type == u"msaccess") e.engine = Engine::Access;
    else if (type == u"mssql") e.engine = Engine::SqlServer;
    else if (type == u"mysql") e.engine = Engine::MySql;
    else if (type == u"msxml") e.engine = Engine::Xml;
    else throw DbError(err::ObjectNotSet, u"zolsdk.transfer", u"the attribute string names no engine");
    return e;
}

void Run(ado::Connection& c, const String& sql) {
    int32_t n = 0;
    c.Execute(sql, n, ado::adExecuteNoRecords);
}

Ref<ado::Connection> Connect(const Endpoint& e, int32_t lockTimeoutSeconds) {
    auto c = Ref<ado::Connection>::New();
    c->ConnectionString(e.catalog->Session()->ConnectionString());
    c->CommandTimeout(0);
    c->Open();
    String secs = IntText(lockTimeoutSeconds > 0 ? lockTimeoutSeconds : 1);
    switch (e.engine) {
    case Engine::MySql:
        // Every value travels as it is or fails aloud (strict), no mode that refuses
        // what the source holds (zero dates, long texts), 4-byte characters
        // kept, and no wait for a lock that never ends.
        Run(*c, u"SET SESSION sql_mode = 'STRICT_ALL_TABLES,NO_AUTO_VALUE_ON_ZERO,NO_ENGINE_SUBSTITUTION', "
                u"lock_wait_timeout = " + secs + u", innodb_lock_wait_timeout = " + secs +
                    u", foreign_key_checks = 0, unique_checks = 1");
        break;
    case Engine::SqlServer:
        Run(*c, u"SET LOCK_TIMEOUT " + IntText(int64_t{lockTimeoutSeconds} * 1000));
        break;
    default:
        break;
    }
    return c;
}

const char16_t* EngineName(Engine e) {
    switch (e) {
    case Engine::Access: return u"Access";
    case Engine::SqlServer: return u"SQL Server";
    case Engine::MySql: return u"MariaDB";
    case Engine::Xml: return u"XML";
    }
    return u"?";
}

} // namespace zolsdk::transfer
