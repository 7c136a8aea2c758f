// The connection texts of the SQL Server session for every network
// library, port and login choice, and their translation for the driver.
#include "mssql_support.hpp"
#include "platform/ado/sqlserver/freetds_text.hpp"
#include "platform/ado/sqlserver/tsql_marks.hpp"

namespace zolsdk::mssqltest {
namespace {

using ado::detail::FreeTdsConnection;
using ado::detail::ProviderError;
using ado::detail::ProviderFailure;
using ado::detail::TranslateToFreeTds;

const String kHead = u"Provider=SQLOLEDB.1;Persist Security Info=False;";

String DatabaseText(const String& attributes) {
    auto s = Ref<RecordingSession>::New();
    s->Connect(attributes);
    return s->ConnectionString();
}

String ServerText(const String& attributes) {
    auto s = Ref<RecordingSession>::New();
    s->Connect(attributes);
    return s->GetConnectionString(true);
}

TEST(MsSqlConnectionText, EveryNetworkLibraryPortAndLogin) {
    const String login = u"User ID=sa;Password=pw;";
    const String base = u"dbname=shop;dblocation=db1\\SALES;username=sa;password=pw;";
    struct Case {
        String protocol, port, network, portPart;
    };
    const std::vector<Case> cases = {
        {u"1", u"", u"Network Library=DBMSSOCN;", u",1433"},
        {u"1", u"14330", u"Network Library=DBMSSOCN;", u",14330"},
        {u"2", u"", u"Network Library=DBNMPNTW;", u""},
        {u"2", u"14330", u"Network Library=DBNMPNTW;", u""},
        {u"3", u"", u"Network Library=DBMSSPXN;", u""},
        {u"3", u"14330", u"Network Library=DBMSSPXN;", u""},
        {u"4", u"", u"Network Library=DBMSRPCN;", u""},
        {u"4", u"14330", u"Network Library=DBMSRPCN;", u""},
        {u"0", u"", u"", u""},
        {u"0", u"14330", u"", u""},
        {u"7", u"14330", u"", u""},
        {u"-1", u"", u"", u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(ToUtf8(u"protocol=" + c.protocol + u" port=" + c.port));
        String attrs = base + u"protocol=" + c.protocol + u";port=" + c.port;
        EXPECT_EQ(DatabaseText(attrs),
                  kHead + c.network + login + u"Initial Catalog=shop;Data Source=db1\\SALES" + c.portPart + u";");
        EXPECT_EQ(ServerText(attrs), kHead + c.network + login + u"Data Source=db1\\SALES" + c.portPart + u";");
        // The system's own login, in any case, replaces user and password.
        for (const char16_t* os : {u"os", u"OS", u"Os"}) {
            EXPECT_EQ(DatabaseText(attrs + u";auth_mode=" + os),
                      kHead + c.network + u"Integrated Security=SSPI;Initial Catalog=shop;Data Source=db1\\SALES" +
                          c.portPart + u";");
            EXPECT_EQ(ServerText(attrs + u";auth_mode=" + os),
                      kHead + c.network + u"Integrated Security=SSPI;Data Source=db1\\SALES" + c.portPart + u";");
        }
        // Any other mode is a server login.
        EXPECT_EQ(DatabaseText(attrs + u";auth_mode=sql"),
                  kHead + c.network + login + u"Initial Catalog=shop;Data Source=db1\\SALES" + c.portPart + u";");
    }
    // Absent names stay empty in the text; a numeric text with blanks converts.
    EXPECT_EQ(DatabaseText(u"protocol= 1 "),
              kHead + u"Network Library=DBMSSOCN;User ID=;Password=;Initial Catalog=;Data Source=,1433;");
}

TEST(MsSqlConnectionText, ConnectTakesAttributesAndFailsOnlyOnTheProtocol) {
    auto s = Ref<DbMsSqlDB>::New();
    EXPECT_EQ(s->AttributeValue(u"dbtypeid"), u"1");
    s->Connect(u"protocol=1;dbname=a;dblocation=h");
    // A second Connect stacks in front and wins.
    s->Connect(u"dbname=b;port=2000");
    EXPECT_EQ(s->ConnectionString(), kHead + u"Network Library=DBMSSOCN;User ID=;Password=;Initial Catalog=b;"
                                             u"Data Source=h,2000;");

    for (const char16_t* bad : {u"dbname=x", u"protocol=;dbname=x", u"protocol=tcp;dbname=x"}) {
        SCOPED_TRACE(ToUtf8(bad));
        auto t = Ref<DbMsSqlDB>::New();
        DbError e = Failure([&] { t->Connect(bad); });
        EXPECT_EQ(e.Number(), err::TypeMismatch);
        EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:GetConnectionString Ln "));
        // Connect itself adds no line of its own.
        EXPECT_EQ(e.Source().rfind(u"DbMsSqlDB:GetConnectionString Ln "), e.Source().find(u"DbMsSqlDB:"));
    }
    auto big = Ref<DbMsSqlDB>::New();
    EXPECT_EQ(Failure([&] { big->Connect(u"protocol=70000"); }).Number(), err::Overflow);

    // The feature table needs no server where the answer is fixed.
    EXPECT_TRUE(s->IsFeatureSupported(u"Connection_Pooling"));
    EXPECT_FALSE(s->IsFeatureSupported(u"multi_row_insert"));
    EXPECT_FALSE(s->IsFeatureSupported(u"create_index_in_create_table"));
    EXPECT_FALSE(s->IsFeatureSupported(u"transactions"));
    EXPECT_TRUE(s->DbReader() == s->DbReader()) << "one reader per session";
    EXPECT_FALSE(s->DbSqlBuilder() == s->DbSqlBuilder()) << "a new builder at every call";
}

TEST(MsSqlConnectionText, TranslationForTheDriver) {
    // What the session writes, database and server form.
    FreeTdsConnection c = TranslateToFreeTds(kHead + u"Network Library=DBMSSOCN;User ID=sa;Password=pw;"
                                                     u"Initial Catalog=shop;Data Source=db1,14330;");
    EXPECT_EQ(c.text, u"Driver=FreeTDS;Server=db1;Port=14330;Database=shop;UID=sa;PWD=pw;TDS_Version=auto;"
                      u"ClientCharset=UTF-8;");
    EXPECT_EQ(c.loginTimeout, -1);
    EXPECT_EQ(TranslateToFreeTds(kHead + u"Network Library=DBMSSOCN;User ID=sa;Password=pw;Data Source=db1,1433;").text,
              u"Driver=FreeTDS;Server=db1;Port=1433;UID=sa;PWD=pw;TDS_Version=auto;ClientCharset=UTF-8;");
    // No network library: TCP/IP on the default port, or the named
    // instance looked up; a port given wins over the instance.
    EXPECT_EQ(TranslateToFreeTds(kHead + u"User ID=u;Password=p;Initial Catalog=d;Data Source=db1;").text,
              u"Driver=FreeTDS;Server=db1;Port=1433;Database=d;UID=u;PWD=p;TDS_Version=auto;ClientCharset=UTF-8;");
    c = TranslateToFreeTds(kHead + u"User ID=u;Password=p;Data Source=db1\\SALES;");
    EXPECT_EQ(c.text, u"Driver=FreeTDS;Server=db1\\SALES;UID=u;PWD=p;TDS_Version=auto;ClientCharset=UTF-8;");
    EXPECT_EQ(c.instance, u"SALES");
    EXPECT_EQ(c.port, u"");
    c = TranslateToFreeTds(u"Provider=SQLOLEDB.1;Network Library=DBMSSOCN;Data Source=db1\\SALES,2433;");
    EXPECT_EQ(c.text, u"Driver=FreeTDS;Server=db1;Port=2433;UID=;PWD=;TDS_Version=auto;ClientCharset=UTF-8;");
    // The local server, synonyms, quoting, case of keys, the extras.
    EXPECT_EQ(TranslateToFreeTds(u"provider=sqloledb;SERVER=(local);DATABASE=x;UID=me;PWD=\"a;b}c\";"
                                 u"Application Name=zol;Workstation ID=ws1;Current Language=us_english;"
                                 u"Use Encryption for Data=True;Connect Timeout=7;Auto Translate=True")
                  .text,
              u"Driver=FreeTDS;Server=localhost;Port=1433;Database=x;UID=me;PWD={a;b}}c};TDS_Version=auto;"
              u"ClientCharset=UTF-8;APP=zol;WSID=ws1;Language=us_english;Encryption=require;");
    EXPECT_EQ(TranslateToFreeTds(u"Provider=SQLOLEDB;Data Source=tcp:10.0.0.5,1500;Connect Timeout=7").loginTimeout, 7);
    EXPECT_EQ(TranslateToFreeTds(u"Provider=SQLOLEDB;Data Source=.;User ID=' x ';Integrated Security=False").text,
              u"Driver=FreeTDS;Server=localhost;Port=1433;UID={ x };PWD=;TDS_Version=auto;ClientCharset=UTF-8;");
    EXPECT_EQ(TranslateToFreeTds(u"Provider=SQLOLEDB;Data Source=h;TDS_Version=7.1").text,
              u"Driver=FreeTDS;Server=h;Port=1433;UID=;PWD=;TDS_Version=7.1;ClientCharset=UTF-8;");
}

// The reason a refused translation gives (SQLSTATE 08001, no native number).
String Refusal(const String& text) {
    try {
        TranslateToFreeTds(text);
    } catch (const ProviderFailure& f) {
        EXPECT_EQ(f.Errors().size(), 1u);
        EXPECT_EQ(f.Errors().front().sqlState, u"08001");
        EXPECT_EQ(f.Errors().front().native, 0);
        return f.Description();
    }
    ADD_FAILURE() << "translated: " << ToUtf8(text);
    return String();
}

TEST(MsSqlConnectionText, FormsThatCannotWorkHereAreRefusedWithAReason) {
    const String tcp = u"connect over TCP/IP instead (protocol=1, with the server's port in port).";
    EXPECT_EQ(Refusal(kHead + u"Network Library=DBNMPNTW;User ID=u;Password=p;Data Source=h;"),
              u"Named pipes (Network Library=DBNMPNTW) is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(kHead + u"Network Library=DBMSSPXN;Data Source=h;"),
              u"IPX/SPX (Network Library=DBMSSPXN) is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(kHead + u"Network Library=DBMSRPCN;Data Source=h;"),
              u"Multiprotocol RPC (Network Library=DBMSRPCN) is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Network=dbmslpcn;Data Source=h"),
              u"Shared memory (Network Library=DBMSLPCN) is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Net=DBMSVINN;Data Source=h"),
              u"The network library DBMSVINN is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Data Source=np:\\\\h\\pipe\\sql\\query"),
              u"Named pipes (Data Source np:\\\\h\\pipe\\sql\\query) is not available on this system: " + tcp);
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Data Source=lpc:h"),
              u"Shared memory (Data Source lpc:h) is not available on this system: " + tcp);
    const String integrated = u"Integrated security (the system's own login) is not available on this system: give a "
                              u"SQL Server login in username and password, and leave auth_mode out.";
    EXPECT_EQ(Refusal(kHead + u"Network Library=DBMSSOCN;Integrated Security=SSPI;Data Source=h,1433;"), integrated);
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Trusted_Connection=yes;Data Source=h"), integrated);
    EXPECT_EQ(Refusal(kHead + u"Network Library=DBMSSOCN;User ID=u;Password=p;Data Source=,1433;"),
              u"No server is named (the Data Source is empty): give the server's host name or address in dblocation.");
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Data Source=h,14x3"),
              u"'14x3' is not a port number: give the server's TCP port (1 to 65535) in port.");
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Data Source=h,70000"),
              u"'70000' is not a port number: give the server's TCP port (1 to 65535) in port.");
    EXPECT_EQ(Refusal(u"Provider=SQLOLEDB;Data Source=h,0"),
              u"'0' is not a port number: give the server's TCP port (1 to 65535) in port.");
}

TEST(MsSqlConnectionText, DriverRefusalsSayWhatToCheck) {
    FreeTdsConnection tcp;
    tcp.server = u"db1";
    tcp.port = u"1433";
    // The driver repeats its message; the repeat goes, the hint comes first
    // with the driver's native number so that it joins the reason.
    ProviderFailure unreachable({{20009, u"08S01", u"[FreeTDS][SQL Server]Unable to connect"},
                                 {20009, u"08S01", u"[FreeTDS][SQL Server]Unable to connect"},
                                 {0, u"08001", u"[FreeTDS][SQL Server]Unable to connect to data source"}});
    ProviderFailure explained = ado::detail::ExplainConnectRefusal(unreachable, tcp);
    ASSERT_EQ(explained.Errors().size(), 3u);
    EXPECT_EQ(explained.Errors()[0].native, 20009);
    EXPECT_EQ(explained.Description(),
              u"No SQL Server answered at db1, port 1433 over TCP/IP: check the server's name (dblocation) and port, that "
              u"the server runs and accepts TCP/IP connections, and that no firewall is in the way.");
    EXPECT_EQ(explained.Errors()[2].message, u"[FreeTDS][SQL Server]Unable to connect to data source");

    FreeTdsConnection named;
    named.server = u"db1";
    named.instance = u"SALES";
    EXPECT_TRUE(Contains(ado::detail::ExplainConnectRefusal(unreachable, named).Description(),
                         u"the instance db1\\SALES (its port looked up through the server's browser service, UDP 1434)"));

    ProviderFailure noDriver({{0, u"IM002", u"[unixODBC][Driver Manager]Data source name not found"}});
    EXPECT_TRUE(Contains(ado::detail::ExplainConnectRefusal(noDriver, tcp).Description(),
                         u"The FreeTDS ODBC driver is not registered"));
    // A login the server refuses speaks for itself.
    ProviderFailure login({{18456, u"42000", u"Login failed for user 'sa'."}});
    ProviderFailure same = ado::detail::ExplainConnectRefusal(login, tcp);
    ASSERT_EQ(same.Errors().size(), 1u);
    EXPECT_EQ(same.Description(), u"Login failed for user 'sa'.");
}

TEST(MsSqlConnectionText, ParameterMarksAreCountedByTheServersQuoting) {
    using ado::detail::CountTSqlParameterMarks;
    EXPECT_EQ(CountTSqlParameterMarks(u"SELECT ? FROM t WHERE a = 'it''s ?' AND b = ?"), 2);
    // A back-slash ends nothing and escapes nothing.
    EXPECT_EQ(CountTSqlParameterMarks(u"WHERE p = 'C:\\' AND q = ?"), 1);
    EXPECT_EQ(CountTSqlParameterMarks(u"[odd?name] = ? AND \"x?y\" = ? AND [a]]?b] = ?"), 3);
    // "#" names a temporary table; a back-quote is no quote.
    EXPECT_EQ(CountTSqlParameterMarks(u"INSERT INTO #tmp VALUES (?, `?`)"), 2);
    // Block comments nest; line comments end at the line's end.
    EXPECT_EQ(CountTSqlParameterMarks(u"/* ? /* ? */ ? */ ? -- ?\n?"), 2);
    EXPECT_EQ(CountTSqlParameterMarks(u"'unclosed ?"), 0);
}

} // namespace
} // namespace zolsdk::mssqltest
