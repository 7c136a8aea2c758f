// The connection texts of the SQL Server session for every network
// library, port and login choice, and their translation for the driver.
#include "mssql_support.hpp"
#include "platform/ado/sqlserver/freetds_text.hpp"
#include "platform/ado/sqlserver/tsql_marks.hpp"

namespace zolsdk::mssqltest {
namespace {

using namespace ado::detail;
const String kHead = u"Provider=SQLOLEDB.1;Persist Security Info=False;";

TEST(MsSqlConnectionText, EveryNetworkLibraryPortAndLogin) {
    const std::vector<std::tuple<String, String, String, String>> cases = {
        // protocol, port, network part, port part
        {u"1", u"", u"Network Library=DBMSSOCN;", u",1433"}, {u"1", u"14330", u"Network Library=DBMSSOCN;", u",14330"},
        {u"2", u"", u"Network Library=DBNMPNTW;", u""},      {u"2", u"14330", u"Network Library=DBNMPNTW;", u""},
        {u"3", u"", u"Network Library=DBMSSPXN;", u""},      {u"3", u"14330", u"Network Library=DBMSSPXN;", u""},
        {u"4", u"", u"Network Library=DBMSRPCN;", u""},      {u"4", u"14330", u"Network Library=DBMSRPCN;", u""},
        {u"0", u"14330", u"", u""},                          {u"-1", u"", u"", u""},
        {u" 7 ", u"14330", u"", u""}};
    for (const auto& [protocol, port, network, portPart] : cases) {
        SCOPED_TRACE(ToUtf8(u"protocol=" + protocol + u" port=" + port));
        String attrs = u"dbname=shop;dblocation=db1\\SALES;username=sa;password=pw;protocol=" + protocol + u";port=" + port;
        for (const char16_t* mode : {u"", u"sql", u"os", u"OS"}) {
            auto s = Ref<RecordingSession>::New();
            s->Connect(attrs + u";auth_mode=" + mode);
            // The system's own login, in any case, replaces user and password.
            String login = EqualsNoCase(mode, u"os") ? u"Integrated Security=SSPI;" : u"User ID=sa;Password=pw;";
            String tail = u"Data Source=db1\\SALES" + portPart + u";";
            EXPECT_EQ(s->ConnectionString(), kHead + network + login + u"Initial Catalog=shop;" + tail);
            EXPECT_EQ(s->GetConnectionString(true), kHead + network + login + tail);
        }
    }
    auto bare = Ref<RecordingSession>::New();
    bare->Connect(u"protocol=1");
    EXPECT_EQ(bare->ConnectionString(),
              kHead + u"Network Library=DBMSSOCN;User ID=;Password=;Initial Catalog=;Data Source=,1433;");
    // A second Connect stacks in front and wins.
    bare->Connect(u"dbname=b;port=2000;dblocation=h");
    EXPECT_EQ(bare->ConnectionString(),
              kHead + u"Network Library=DBMSSOCN;User ID=;Password=;Initial Catalog=b;Data Source=h,2000;");
}

TEST(MsSqlConnectionText, ConnectFailsOnlyOnTheProtocol) {
    for (const char16_t* bad : {u"dbname=x", u"protocol=;dbname=x", u"protocol=tcp"}) {
        SCOPED_TRACE(ToUtf8(bad));
        auto s = Ref<DbMsSqlDB>::New();
        DbError e = Failure([&] { s->Connect(bad); });
        EXPECT_EQ(e.Number(), err::TypeMismatch);
        // The only line of trace: Connect adds none of its own.
        size_t at = e.Source().find(u" => \r\nDbMsSqlDB:");
        EXPECT_EQ(at, e.Source().rfind(u" => \r\n"));
        EXPECT_EQ(e.Source().substr(at + 6, 33), u"DbMsSqlDB:GetConnectionString Ln ");
    }
    auto big = Ref<DbMsSqlDB>::New();
    EXPECT_EQ(Failure([&] { big->Connect(u"protocol=70000"); }).Number(), err::Overflow);
    auto s = Ref<DbMsSqlDB>::New();
    EXPECT_EQ(s->AttributeValue(u"dbtypeid"), u"1");
    EXPECT_FALSE(s->IsFeatureSupported(u"multi_row_insert"));
    EXPECT_FALSE(s->IsFeatureSupported(u"create_index_in_create_table"));
    EXPECT_TRUE(s->DbReader() == s->DbReader()) << "one reader per session";
}

TEST(MsSqlConnectionText, TranslationForTheDriver) {
    const String tail = u"TDS_Version=auto;ClientCharset=UTF-8;";
    auto text = [](const String& oledb) { return TranslateToFreeTds(oledb).text; };
    EXPECT_EQ(text(kHead + u"Network Library=DBMSSOCN;User ID=sa;Password=pw;Initial Catalog=shop;Data Source=db1,14330;"),
              u"Driver=FreeTDS;Server=db1;Port=14330;Database=shop;UID=sa;PWD=pw;" + tail);
    EXPECT_EQ(text(kHead + u"Network Library=DBMSSOCN;User ID=sa;Password=pw;Data Source=db1,1433;"),
              u"Driver=FreeTDS;Server=db1;Port=1433;UID=sa;PWD=pw;" + tail);
    // No network library: TCP/IP on the default port, or the named
    // instance looked up; a port given wins over the instance.
    EXPECT_EQ(text(kHead + u"User ID=u;Password=p;Initial Catalog=d;Data Source=db1;"),
              u"Driver=FreeTDS;Server=db1;Port=1433;Database=d;UID=u;PWD=p;" + tail);
    FreeTdsConnection named = TranslateToFreeTds(kHead + u"User ID=u;Password=p;Data Source=db1\\SALES;");
    EXPECT_EQ(named.text, u"Driver=FreeTDS;Server=db1\\SALES;UID=u;PWD=p;" + tail);
    EXPECT_EQ(named.port, u"");
    EXPECT_EQ(named.loginTimeout, -1);
    EXPECT_EQ(text(u"Provider=SQLOLEDB.1;Data Source=db1\\SALES,2433;"),
              u"Driver=FreeTDS;Server=db1;Port=2433;UID=;PWD=;" + tail);
    // Synonyms, case of keys, quoting, the local server, the extras.
    EXPECT_EQ(text(u"provider=sqloledb;SERVER=(local);DATABASE=x;UID=me;PWD=\"a;b}c\";Application Name=zol;"
                   u"Workstation ID=ws1;Current Language=us_english;Use Encryption for Data=True;Auto Translate=True"),
              u"Driver=FreeTDS;Server=localhost;Port=1433;Database=x;UID=me;PWD={a;b}}c};" + tail +
                  u"APP=zol;WSID=ws1;Language=us_english;Encryption=require;");
    EXPECT_EQ(text(u"Provider=SQLOLEDB;Data Source=tcp:.;User ID=' x ';Integrated Security=False;TDS_Version=7.1"),
              u"Driver=FreeTDS;Server=localhost;Port=1433;UID={ x };PWD=;TDS_Version=7.1;ClientCharset=UTF-8;");
    EXPECT_EQ(TranslateToFreeTds(u"Provider=SQLOLEDB;Data Source=h;Connect Timeout=7").loginTimeout, 7);
}

TEST(MsSqlConnectionText, FormsThatCannotWorkHereAreRefusedWithAReason) {
    auto refusal = [](const String& oledb) {
        try {
            TranslateToFreeTds(oledb);
        } catch (const ProviderFailure& f) {
            EXPECT_EQ(f.Errors().size(), 1u);
            EXPECT_EQ(f.Errors().front().sqlState, u"08001");
            return f.Description();
        }
        return String(u"translated");
    };
    const String tcp = u" is not available on this system: connect over TCP/IP instead (protocol=1, with the "
                       u"server's port in port).";
    EXPECT_EQ(refusal(kHead + u"Network Library=DBNMPNTW;Data Source=h;"), u"Named pipes (Network Library=DBNMPNTW)" + tcp);
    EXPECT_EQ(refusal(kHead + u"Network Library=DBMSSPXN;Data Source=h;"), u"IPX/SPX (Network Library=DBMSSPXN)" + tcp);
    EXPECT_EQ(refusal(kHead + u"Network Library=DBMSRPCN;Data Source=h;"),
              u"Multiprotocol RPC (Network Library=DBMSRPCN)" + tcp);
    EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Network=dbmslpcn;Data Source=h"), u"Shared memory (Network Library=DBMSLPCN)" + tcp);
    EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Net=DBMSVINN;Data Source=h"), u"The network library DBMSVINN" + tcp);
    EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Data Source=np:\\\\h\\pipe\\sql\\query"),
              u"Named pipes (Data Source np:\\\\h\\pipe\\sql\\query)" + tcp);
    EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Data Source=lpc:h"), u"Shared memory (Data Source lpc:h)" + tcp);
    const String integrated = u"Integrated security (the system's own login) is not available on this system: give a "
                              u"SQL Server login in username and password, and leave auth_mode out.";
    EXPECT_EQ(refusal(kHead + u"Network Library=DBMSSOCN;Integrated Security=SSPI;Data Source=h,1433;"), integrated);
    EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Trusted_Connection=yes;Data Source=h"), integrated);
    EXPECT_EQ(refusal(kHead + u"Network Library=DBMSSOCN;Data Source=,1433;"),
              u"No server is named (the Data Source is empty): give the server's host name or address in dblocation.");
    for (const char16_t* port : {u"14x3", u"70000", u"0"})
        EXPECT_EQ(refusal(u"Provider=SQLOLEDB;Data Source=h," + String(port)),
                  u"'" + String(port) + u"' is not a port number: give the server's TCP port (1 to 65535) in port.");
}

TEST(MsSqlConnectionText, DriverRefusalsSayWhatToCheck) {
    FreeTdsConnection tcp{u"", u"db1", u"", u"1433"};
    ProviderFailure unreachable({{20009, u"08S01", u"[FreeTDS]Unable to connect"},
                                 {20009, u"08S01", u"[FreeTDS]Unable to connect"},
                                 {0, u"08001", u"[FreeTDS]Unable to connect to data source"}});
    // The repeat goes; the hint comes first, with the driver's native
    // number so that it joins the reason.
    ProviderFailure explained = ExplainConnectRefusal(unreachable, tcp);
    ASSERT_EQ(explained.Errors().size(), 3u);
    EXPECT_EQ(explained.Errors()[0].native, 20009);
    EXPECT_EQ(explained.Description(),
              u"No SQL Server answered at db1, port 1433 over TCP/IP: check the server's name (dblocation) and port, that "
              u"the server runs and accepts TCP/IP connections, and that no firewall is in the way.");
    FreeTdsConnection named{u"", u"db1", u"SALES", u""};
    EXPECT_TRUE(Contains(ExplainConnectRefusal(unreachable, named).Description(),
                         u"the instance db1\\SALES (its port looked up through the server's browser service, UDP 1434)"));
    ProviderFailure noDriver({{0, u"IM002", u"[unixODBC][Driver Manager]Data source name not found"}});
    EXPECT_TRUE(Contains(ExplainConnectRefusal(noDriver, tcp).Description(), u"The FreeTDS ODBC driver is not registered"));
    // A login the server refuses speaks for itself.
    ProviderFailure login({{18456, u"42000", u"Login failed for user 'sa'."}});
    EXPECT_EQ(ExplainConnectRefusal(login, tcp).Errors().size(), 1u);
}

TEST(MsSqlConnectionText, ParameterMarksAreCountedByTheServersQuoting) {
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
