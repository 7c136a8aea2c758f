// Which backend serves a connection text: the first row of the table whose
// head starts the text (and, for ODBC texts, whose driver name starts the
// Driver value) wins.
#include "platform/ado/backend.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk::ado::detail {

namespace {

struct Route {
    StringView head;       // how the text starts, case-blind
    StringView driverName; // start of the Driver value, braces removed; empty: any
    std::shared_ptr<Backend> (*make)();
};

std::shared_ptr<Backend> PlainOdbc() { return MakeOdbcBackend(); }

const Route kRoutes[] = {
    {u"Driver=", u"MySQL", MakeMariaDbBackend},
    {u"Driver=", u"", PlainOdbc},
    {u"DSN=", u"", PlainOdbc},
    {u"FILEDSN=", u"", PlainOdbc},
    {u"Provider=Microsoft.Jet.OLEDB", u"", MakeJetBackend},
    {u"Provider=SQLOLEDB", u"", MakeSqlServerBackend},
};

bool StartsWithNoCase(StringView text, StringView head) {
    return text.size() >= head.size() && EqualsNoCase(text.substr(0, head.size()), head);
}

// The value of the leading "Driver=" item, without its braces.
StringView DriverValue(StringView text) {
    StringView v = text.substr(text.find(u'=') + 1);
    v = v.substr(0, v.find(u';'));
    while (!v.empty() && (v.front() == u'{' || v.front() == u' ')) v.remove_prefix(1);
    return v;
}

} // namespace

std::shared_ptr<Backend> MakeBackend(const String& connectionText) {
    String t = Trim(connectionText);
    for (const Route& r : kRoutes) {
        if (!StartsWithNoCase(t, r.head)) continue;
        if (!r.driverName.empty() && !StartsWithNoCase(DriverValue(t), r.driverName)) continue;
        return r.make();
    }
    RaisePlatformFrom(3706, kConnectionSource, u"Provider cannot be found. It may not be properly installed.");
}

} // namespace zolsdk::ado::detail
