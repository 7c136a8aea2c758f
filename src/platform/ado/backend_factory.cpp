// Which backend serves a connection text. Texts naming an ODBC driver or
// data source go to the driver manager; other providers join here.
#include "platform/ado/backend.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk::ado::detail {

namespace {
bool StartsWithNoCase(StringView text, StringView head) {
    return text.size() >= head.size() && EqualsNoCase(text.substr(0, head.size()), head);
}
} // namespace

std::shared_ptr<Backend> MakeBackend(const String& connectionText) {
    String t = Trim(connectionText);
    if (StartsWithNoCase(t, u"Driver=") || StartsWithNoCase(t, u"DSN=") || StartsWithNoCase(t, u"FILEDSN="))
        return MakeOdbcBackend();
    if (StartsWithNoCase(t, u"Provider=Microsoft.Jet.OLEDB")) return MakeJetBackend();
    if (StartsWithNoCase(t, u"Provider=SQLOLEDB")) return MakeSqlServerBackend();
    RaisePlatformFrom(3706, kConnectionSource, u"Provider cannot be found. It may not be properly installed.");
}

} // namespace zolsdk::ado::detail
