#include "platform/ado/sqlserver/freetds_text.hpp"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <map>

namespace zolsdk::ado::detail {

namespace {

[[noreturn]] void Refuse(const String& reason) { throw ProviderFailure({{0, u"08001", reason}}); }

// The text's items as (lower-case key, value). A value may be quoted with
// " or ' (a doubled quote inside stands for itself); an item without "="
// is passed over; of two items with one key the later wins.
std::map<String, String> ParseOleDb(const String& text) {
    static const std::map<String, String> synonyms = {
        {u"provider", u"provider"},
        {u"data source", u"server"}, {u"server", u"server"}, {u"address", u"server"}, {u"addr", u"server"},
        {u"network address", u"server"},
        {u"initial catalog", u"database"}, {u"database", u"database"},
        {u"user id", u"user"}, {u"uid", u"user"}, {u"user", u"user"},
        {u"password", u"password"}, {u"pwd", u"password"},
        {u"integrated security", u"integrated"}, {u"trusted_connection", u"integrated"},
        {u"network library", u"netlib"}, {u"network", u"netlib"}, {u"net", u"netlib"},
        {u"connect timeout", u"timeout"}, {u"connection timeout", u"timeout"}, {u"timeout", u"timeout"},
        {u"application name", u"app"}, {u"app", u"app"},
        {u"workstation id", u"wsid"}, {u"wsid", u"wsid"},
        {u"current language", u"language"}, {u"language", u"language"},
        {u"use encryption for data", u"encrypt"}, {u"encrypt", u"encrypt"},
        {u"tds_version", u"tds_version"}, {u"port", u"port"},
    };
    std::map<String, String> items;
    size_t i = 0, n = text.size();
    while (i < n) {
        while (i < n && (text[i] == u';' || text[i] == u' ' || text[i] == u'\t')) ++i;
        if (i >= n) break;
        size_t eq = text.find(u'=', i), semi = text.find(u';', i);
        if (eq == String::npos || (semi != String::npos && semi < eq)) {
            i = semi == String::npos ? n : semi + 1;
            continue;
        }
        String key = LCase(Trim(StringView(text).substr(i, eq - i)));
        i = eq + 1;
        while (i < n && (text[i] == u' ' || text[i] == u'\t')) ++i;
        String value;
        if (i < n && (text[i] == u'"' || text[i] == u'\'')) {
            char16_t q = text[i++];
            while (i < n) {
                if (text[i] == q) {
                    if (i + 1 < n && text[i + 1] == q) {
                        value += q;
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                value += text[i++];
            }
            size_t end = text.find(u';', i);
            i = end == String::npos ? n : end + 1;
        } else {
            size_t end = text.find(u';', i);
            value = Trim(StringView(text).substr(i, (end == String::npos ? n : end) - i));
            i = end == String::npos ? n : end + 1;
        }
        if (auto s = synonyms.find(key); s != synonyms.end()) items[s->second] = std::move(value);
    }
    return items;
}

bool StartsNoCase(StringView text, StringView head) {
    return text.size() >= head.size() && EqualsNoCase(text.substr(0, head.size()), head);
}

bool IsYes(const String& v) {
    String s = LCase(Trim(v));
    return s == u"sspi" || s == u"true" || s == u"yes" || s == u"-1" || s == u"1";
}

const char16_t* const kUseTcp = u" is not available on this system: connect over TCP/IP instead (protocol=1, with the "
                                u"server's port in port).";

void CheckNetworkLibrary(const String& netlib) {
    String lib = UCase(Trim(netlib));
    if (lib.empty() || lib == u"DBMSSOCN") return;
    if (lib == u"DBNMPNTW") Refuse(u"Named pipes (Network Library=DBNMPNTW)" + String(kUseTcp));
    if (lib == u"DBMSSPXN") Refuse(u"IPX/SPX (Network Library=DBMSSPXN)" + String(kUseTcp));
    if (lib == u"DBMSRPCN") Refuse(u"Multiprotocol RPC (Network Library=DBMSRPCN)" + String(kUseTcp));
    if (lib == u"DBMSLPCN") Refuse(u"Shared memory (Network Library=DBMSLPCN)" + String(kUseTcp));
    Refuse(u"The network library " + lib + String(kUseTcp));
}

String CheckPort(const String& port) {
    String p = Trim(port);
    bool digits = !p.empty() && p.size() <= 5;
    for (char16_t c : p) digits = digits && c >= u'0' && c <= u'9';
    int32_t value = digits ? static_cast<int32_t>(std::stol(ToUtf8(p))) : 0;
    if (value < 1 || value > 65535)
        Refuse(u"'" + p + u"' is not a port number: give the server's TCP port (1 to 65535) in port.");
    return IntText(value);
}

// A value as the ODBC connection text needs it: braced when it holds a
// character that would end or open it, or blanks at its ends.
String OdbcValue(const String& v) {
    bool plain = v.find_first_of(u";{}") == String::npos && (v.empty() || (v.front() != u' ' && v.back() != u' '));
    if (plain) return v;
    String out = u"{";
    for (char16_t c : v) {
        out += c;
        if (c == u'}') out += u'}';
    }
    out += u"}";
    return out;
}

} // namespace

FreeTdsConnection TranslateToFreeTds(const String& oledbText) {
    std::map<String, String> items = ParseOleDb(oledbText);
    auto get = [&](const char16_t* key) {
        auto it = items.find(key);
        return it == items.end() ? String() : it->second;
    };

    if (IsYes(get(u"integrated"))) {
        Refuse(u"Integrated security (the system's own login) is not available on this system: give a SQL Server login "
               u"in username and password, and leave auth_mode out.");
    }
    CheckNetworkLibrary(get(u"netlib"));

    String source = Trim(get(u"server"));
    if (StartsNoCase(source, u"np:") || StartsNoCase(source, u"\\\\"))
        Refuse(u"Named pipes (Data Source " + source + u")" + String(kUseTcp));
    if (StartsNoCase(source, u"lpc:")) Refuse(u"Shared memory (Data Source " + source + u")" + String(kUseTcp));
    if (StartsNoCase(source, u"tcp:")) source = Trim(StringView(source).substr(4));

    FreeTdsConnection c;
    if (size_t comma = source.rfind(u','); comma != String::npos) {
        c.port = CheckPort(source.substr(comma + 1));
        source = Trim(StringView(source).substr(0, comma));
    } else if (String port = get(u"port"); !Trim(port).empty()) {
        c.port = CheckPort(port);
    }
    if (size_t slash = source.find(u'\\'); slash != String::npos) {
        c.instance = Trim(StringView(source).substr(slash + 1));
        source = Trim(StringView(source).substr(0, slash));
    }
    if (source == u"(local)" || source == u".") source = u"localhost";
    if (StartsNoCase(source, u"(localdb)"))
        Refuse(u"A LocalDB instance (Data Source " + get(u"server") + u")" + String(kUseTcp));
    if (source.empty())
        Refuse(u"No server is named (the Data Source is empty): give the server's host name or address in dblocation.");
    c.server = source;
    // A named instance is found through the server's browser service unless
    // its port is given; the default instance listens on 1433.
    if (c.port.empty() && c.instance.empty()) c.port = u"1433";

    String text = u"Driver=" + String(kFreeTdsDriver) + u";Server=" + OdbcValue(c.server);
    if (c.port.empty()) text += u"\\" + OdbcValue(c.instance);
    text += u";";
    if (!c.port.empty()) text += u"Port=" + c.port + u";";
    if (String db = get(u"database"); !db.empty()) text += u"Database=" + OdbcValue(db) + u";";
    text += u"UID=" + OdbcValue(get(u"user")) + u";PWD=" + OdbcValue(get(u"password")) + u";";
    String version = Trim(get(u"tds_version"));
    text += u"TDS_Version=" + (version.empty() ? String(u"auto") : OdbcValue(version)) + u";ClientCharset=UTF-8;";
    if (String app = get(u"app"); !app.empty()) text += u"APP=" + OdbcValue(app) + u";";
    if (String wsid = get(u"wsid"); !wsid.empty()) text += u"WSID=" + OdbcValue(wsid) + u";";
    if (String lang = get(u"language"); !lang.empty()) text += u"Language=" + OdbcValue(lang) + u";";
    if (IsYes(get(u"encrypt"))) text += u"Encryption=require;";
    c.text = std::move(text);

    if (String t = Trim(get(u"timeout")); !t.empty()) {
        double seconds = 0;
        if (TryParseNumber(t, seconds) && seconds >= 0 && seconds <= 2147483647.0)
            c.loginTimeout = static_cast<int32_t>(seconds);
    }
    return c;
}

ProviderFailure ExplainConnectRefusal(const ProviderFailure& refusal, const FreeTdsConnection& tried) {
    std::vector<ProviderError> kept;
    for (const ProviderError& e : refusal.Errors()) {
        if (!kept.empty() && kept.back().message == e.message && kept.back().native == e.native) continue;
        kept.push_back(e);
    }
    bool driverMissing = false, unreachable = false;
    int32_t native = 0;
    for (const ProviderError& e : kept) {
        if (e.sqlState == u"IM002" || (e.sqlState == u"01000" && e.message.find(u"Can't open lib") != String::npos))
            driverMissing = true;
        if (StartsNoCase(e.sqlState, u"08")) unreachable = true;
        if (native == 0) native = e.native;
    }
    String hint;
    if (driverMissing) {
        hint = u"The FreeTDS ODBC driver is not registered with the ODBC driver manager under the name " +
               String(kFreeTdsDriver) + u": install it (tdsodbc) and register it (scripts/register-freetds.sh).";
    } else if (unreachable) {
        String where = tried.port.empty() ? u"the instance " + tried.server + u"\\" + tried.instance +
                                                u" (its port looked up through the server's browser service, UDP 1434)"
                                          : tried.server + u", port " + tried.port;
        hint = u"No SQL Server answered at " + where +
               u" over TCP/IP: check the server's name (dblocation) and port, that the server runs and accepts TCP/IP "
               u"connections, and that no firewall is in the way.";
    }
    if (!hint.empty()) kept.insert(kept.begin(), ProviderError{native, u"08001", hint});
    return ProviderFailure(std::move(kept));
}

namespace {

// A socket closed when it goes out of scope.
struct Socket {
    int fd = -1;
    ~Socket() {
        if (fd >= 0) ::close(fd);
    }
};

// Milliseconds left until `deadline`, at least 0.
int LeftMs(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

} // namespace

void ProbeTdsServer(const FreeTdsConnection& target, int32_t seconds) {
    if (seconds <= 0 || target.port.empty()) return;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(ToUtf8(target.server).c_str(), ToUtf8(target.port).c_str(), &hints, &found) != 0 || !found)
        return; // the driver words an unknown host itself
    Socket s;
    bool connected = false;
    for (addrinfo* a = found; a && !connected; a = a->ai_next) {
        if (s.fd >= 0) ::close(s.fd);
        s.fd = ::socket(a->ai_family, a->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, a->ai_protocol);
        if (s.fd < 0) continue;
        if (::connect(s.fd, a->ai_addr, a->ai_addrlen) == 0) {
            connected = true;
            break;
        }
        if (errno != EINPROGRESS) continue;
        pollfd p{s.fd, POLLOUT, 0};
        if (::poll(&p, 1, LeftMs(deadline)) == 1) {
            int error = 0;
            socklen_t len = sizeof error;
            connected = ::getsockopt(s.fd, SOL_SOCKET, SO_ERROR, &error, &len) == 0 && error == 0;
        }
    }
    ::freeaddrinfo(found);
    if (!connected) return; // refused or unreachable: the driver says so
    // PRELOGIN: an 8-byte header, one option (VERSION) and its six bytes.
    static const unsigned char kPrelogin[] = {0x12, 0x01, 0x00, 0x14, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                              0x06, 0x00, 0x06, 0xFF, 0x09, 0x00, 0x00, 0x00, 0x00, 0x00};
    if (::send(s.fd, kPrelogin, sizeof kPrelogin, MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof kPrelogin)) return;
    pollfd p{s.fd, POLLIN, 0};
    int ready;
    do {
        ready = ::poll(&p, 1, LeftMs(deadline));
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) {
        throw ProviderFailure({{0, u"HYT00",
                                u"Login timeout expired: the server at " + target.server + u", port " + target.port +
                                    u" accepted the connection but did not answer within " + IntText(seconds) +
                                    u" seconds. Check that a SQL Server listens on that port (dblocation, port)."}});
    }
}

} // namespace zolsdk::ado::detail
