// Results that stream from the server: a result shares its connection with
// other statements, a stopped fetch ends at once, a connection lost half-way
// is a failure and not a short table, and a login waits no longer than its
// timeout. Also how the connection text is read.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <chrono>

#include "mysql_fixture.hpp"
#include "platform/ado/mariadb/login.hpp"

namespace zolsdk::mysqltest {
namespace {

using namespace ado;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

const String kManyRows = u"SELECT a.seq * 1000 + b.seq AS n, REPEAT('r', 100) AS pad FROM seq_0_to_199 a, seq_0_to_999 b";

TEST(MySqlStreaming, AResultStillArrivingLeavesTheConnectionFree) {
    ScratchDb db("stream");
    db.Run(u"CREATE TABLE t (id INT)");
    db.Run(u"INSERT INTO t VALUES (7)");
    auto c = ServerConnection();
    // A background result reads in the database the connection is in now.
    int32_t affected = 0;
    c->Execute(u"USE `" + db.Name() + u"`", affected, adExecuteNoRecords);
    Ref<Recordset> in = c->OpenRecordset(u"SELECT id FROM t", adAsyncFetch);
    ASSERT_FALSE(in->Eof());
    EXPECT_EQ(in->Value(u"id").ToLong(), 7);
    Ref<Recordset> rs = c->OpenRecordset(kManyRows, adAsyncFetch);
    int64_t count = 0, sum = 0;
    auto take = [&](int64_t n) {
        for (; n > 0 && !rs->Eof(); --n, rs->MoveNext()) {
            sum += rs->Value(u"n").ToLong();
            ++count;
        }
    };
    take(10);
    // Other statements on the same connection while rows are still coming,
    // with and without rows of their own.
    c->Execute(u"SET @z = 1", affected, adExecuteNoRecords);
    EXPECT_EQ(c->Execute(u"SELECT @z + 1")->Fields().Item(0).Value().ToLong(), 2);
    take(100000);
    EXPECT_EQ(c->Execute(u"SELECT COUNT(*) FROM seq_1_to_5")->Fields().Item(0).Value().ToLong(), 5);
    take(INT64_MAX);
    EXPECT_EQ(count, 200000);
    EXPECT_EQ(sum, int64_t{199999} * 200000 / 2);
}

TEST(MySqlStreaming, TextRowsCarryEveryValueAlsoWhenKeptAside) {
    // Every value as text the server reads back as the same value: texts and
    // bytes as sent (NUL, a 4-byte character, megabytes), numbers, dates and
    // times written out by the client from the server's binary form, Null as
    // null; the same whether read off the wire or kept while another
    // statement used the connection.
    auto c = ServerConnection();
    const String sql =
        u"SELECT seq, IF(seq % 3 = 0, NULL, CONCAT('a', CHAR(0 USING utf8mb4), '\U0001F600', seq)), UNHEX('00FF0A'), "
        u"CAST('2020-01-02 03:04:05.25' AS DATETIME(2)), IF(seq % 1000 = 2, REPEAT('z', 3000000), 'short'), "
        u"CAST(SEC_TO_TIME(-seq) AS TIME(1)), 16777216 * (seq = 1) + seq / 4e0 FROM seq_1_to_3000";
    auto Two = [](int64_t v) { return (v < 10 ? "0" : "") + std::to_string(v); };
    auto Shortest = [](double d) {
        char buf[32];
        return std::string(buf, std::to_chars(buf, buf + sizeof buf, d).ptr);
    };
    auto expect = [&](int64_t n) {
        return std::vector<std::string>{std::to_string(n),
                                        n % 3 == 0 ? "<null>" : std::string("a\0\xF0\x9F\x98\x80", 6) + std::to_string(n),
                                        std::string("\x00\xFF\n", 3), "2020-01-02 03:04:05.25",
                                        // A value of megabytes between short ones.
                                        n % 1000 == 2 ? std::string(3000000, 'z') : "short",
                                        "-00:" + Two(n / 60) + ":" + Two(n % 60) + ".0",
                                        // A double in its shortest exact text.
                                        Shortest((n == 1 ? 16777216 : 0) + n / 4.0)};
    };
    std::unique_ptr<Connection::TextStream> text = c->OpenTextStream(sql);
    std::unique_ptr<Connection::RowStream> values;
    TextRow row;
    int64_t n = 0;
    while (text->Next(row)) {
        ++n;
        ASSERT_EQ(row.columns, 7u);
        std::vector<std::string> got;
        for (size_t i = 0; i < row.columns; ++i)
            got.push_back(row.values[i] ? std::string(row.values[i], row.lengths[i]) : "<null>");
        ASSERT_EQ(got, expect(n)) << "row " << n;
        // Half-way, a value stream opens on the same connection: the text
        // stream's rest is kept aside and read from there.
        if (n == 1000) values = c->OpenRowStream(sql);
    }
    EXPECT_EQ(n, 3000);
    std::vector<Variant> v;
    ASSERT_TRUE(values->Next(v));
    ASSERT_TRUE(values->Next(v));
    EXPECT_EQ(v[1].ToString(), String(u"a") + u'\0' + u"\U0001F600" + u"2");
    EXPECT_EQ(v[2].ToBytes(), (Bytes{0x00, 0xFF, 0x0A}));
}

TEST(MySqlStreaming, StoppingAFetchEndsTheStatementAtOnce) {
    auto c = ServerConnection();
    // Fifty million rows: reading them all to the end would take minutes.
    Ref<Recordset> rs = c->OpenRecordset(u"SELECT a.seq, b.seq FROM seq_1_to_50000 a, seq_1_to_1000 b", adAsyncFetch);
    ASSERT_FALSE(rs->Eof());
    rs->MoveNext();
    auto start = Clock::now();
    rs->Close();
    EXPECT_LT(SecondsSince(start), 10.0);
    // The connection goes on, with nothing of the stopped result left over.
    EXPECT_EQ(c->Execute(u"SELECT 40 + 2")->Fields().Item(0).Value().ToLong(), 42);
    c->Close();
}

TEST(MySqlStreaming, AConnectionLostHalfWayFailsInsteadOfEndingEarly) {
    auto c = ServerConnection();
    Ref<Recordset> rs = c->OpenRecordset(
        u"SELECT /* lost half-way */ a.seq, REPEAT('x', 200) FROM seq_1_to_3000 a, seq_1_to_1000 b", adAsyncFetch);
    int64_t read = 0;
    for (; read < 1000 && !rs->Eof(); ++read) rs->MoveNext();
    // The connection that streams the result, as the server lists it.
    auto admin = ServerConnection();
    Ref<Recordset> who = admin->Execute(u"SELECT ID FROM information_schema.PROCESSLIST WHERE INFO LIKE "
                                        u"'SELECT /* lost half-way */%'");
    ASSERT_FALSE(who->Eof());
    RunOnServer(u"KILL CONNECTION " + who->Fields().Item(0).Value().ToString());
    DbError e = Failure([&] {
        for (; !rs->Eof(); ++read) rs->MoveNext();
    });
    EXPECT_EQ(e.Number(), kProviderFailure);
    EXPECT_LT(read, 3000000);
    ASSERT_GE(c->Errors()->Count(), 1);
    EXPECT_EQ(c->Errors()->Item(0)->NativeError(), 2013) << ToUtf8(c->Errors()->Item(0)->Description());
}

TEST(MySqlStreaming, ALoginWaitsNoLongerThanItsTimeout) {
    // A port that takes the connection but never says a word.
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), len), 0);
    ASSERT_EQ(::listen(fd, 4), 0);
    ASSERT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len), 0);
    auto c = Ref<Connection>::New();
    c->ConnectionTimeout(2);
    c->ConnectionString(u"Driver=MySQL ODBC 5.1 Driver;DATABASE=x;SERVER=127.0.0.1;UID=u;PASSWORD=p;PORT=" +
                        IntText(ntohs(addr.sin_port)) + u";OPTION=18475;");
    auto start = Clock::now();
    DbError e = Failure([&] { c->Open(); });
    double waited = SecondsSince(start);
    ::close(fd);
    EXPECT_EQ(e.Number(), kProviderFailure);
    EXPECT_GE(waited, 1.5);
    EXPECT_LT(waited, 8.0);
    EXPECT_EQ(c->State(), adStateClosed);
}

TEST(MySqlStreaming, TheConnectionTextIsReadAsTheDriverReadsIt) {
    using detail::ReadMariaDbLogin;
    auto a = ReadMariaDbLogin(u"Driver=MySQL ODBC 5.1 Driver;DATABASE=shop;SERVER=db.example;UID=u1;PASSWORD=p;w;"
                              u"PORT=3307;OPTION=18475;");
    EXPECT_EQ(a.database, "shop");
    EXPECT_EQ(a.host, "db.example");
    EXPECT_EQ(a.user, "u1");
    EXPECT_EQ(a.password, "p") << "a password holding ';' cannot be written in this text";
    EXPECT_EQ(a.port, 3307u);
    EXPECT_TRUE(a.Compress()) << "the fixed option asks for compression, and the server is elsewhere";
    // What Connection::Open appends wins; braces are taken off; an empty
    // port is the default one.
    auto b = ReadMariaDbLogin(u"Driver={MySQL ODBC 5.1 Driver};DATABASE={a b};SERVER=127.0.0.1;UID=x;PORT=;"
                              u"OPTION=18475;UID=y;PWD=z");
    EXPECT_EQ(b.database, "a b");
    EXPECT_EQ(b.user, "y");
    EXPECT_EQ(b.password, "z");
    EXPECT_EQ(b.port, 3306u);
    for (const char16_t* local : {u"SERVER=127.0.0.1", u"SERVER=localhost", u"SERVER=", u"SERVER=::1"})
        EXPECT_FALSE(ReadMariaDbLogin(String(local) + u";OPTION=18475").Compress()) << ToUtf8(local);
    EXPECT_FALSE(ReadMariaDbLogin(u"SERVER=db.example;OPTION=3").Compress()) << "no compression bit";
}

} // namespace
} // namespace zolsdk::mysqltest
