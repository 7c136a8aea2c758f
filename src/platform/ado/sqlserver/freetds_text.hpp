#pragma once
// The SQL Server provider takes the OLE DB connection text the sessions
// write ("Provider=SQLOLEDB.1;...;Data Source=host,1433;") and connects
// through the FreeTDS ODBC driver, which knows other keywords and only
// TCP/IP. This is the translation, and the wording of refusals: forms that
// cannot work on this system (named pipes and the other network libraries,
// the system's own login) are refused before any connection is tried, with
// a reason a person can act on.
#include <vector>

#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

// The name under which the FreeTDS driver is registered with the ODBC
// driver manager (scripts/register-freetds.sh registers it).
inline constexpr char16_t kFreeTdsDriver[] = u"FreeTDS";

struct FreeTdsConnection {
    String text;               // the ODBC connection text for the driver
    String server;             // host as the driver gets it
    String instance;           // named instance, looked up when no port is given
    String port;               // empty when the instance's port is looked up
    int32_t loginTimeout = -1; // seconds from "Connect Timeout"; -1 when not given
};

// Translates an OLE DB connection text for SQL Server. Keys are compared
// case-blind and may be written in their usual synonyms ("Server" for
// "Data Source", "Database" for "Initial Catalog", "UID", "PWD", ...);
// values may be quoted. Raises ProviderFailure (SQLSTATE 08001) for a text
// that cannot connect here.
FreeTdsConnection TranslateToFreeTds(const String& oledbText);

// The driver's refusal to connect, with a first entry that says what to
// check (the server and port it tried, a missing driver registration).
// Consecutive repeats of one message are dropped.
ProviderFailure ExplainConnectRefusal(const ProviderFailure& refusal, const FreeTdsConnection& tried);

// The driver bounds the TCP connect by the login timeout but not the
// server's answer to the login: a server that accepts the connection and
// never speaks keeps it waiting for ever. Before the driver connects, this
// sends the first packet of a login (a PRELOGIN) on a connection of its own
// and waits at most `seconds` for any answer; silence raises ProviderFailure
// (SQLSTATE HYT00) naming the server, a refused connection is left to the
// driver's own words. Skipped for 0 seconds (no limit) and for a named
// instance whose port is not known yet.
void ProbeTdsServer(const FreeTdsConnection& target, int32_t seconds);

} // namespace zolsdk::ado::detail
