// The failures users met with zol migrate, each through zol migrate on the
// lossless road, the target judged by the mariadb client or by mdbtools.
#include <chrono>
#include <fstream>
#include <unistd.h>

#include "transfer/transfer_fixture.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// A text of `n` characters made of quotes, backslashes and letters.
std::string Awkward(size_t n) {
    static const std::string pieces = "'\\\"a\\'b''\\\\c";
    std::string s;
    while (s.size() < n) s += pieces[s.size() % pieces.size()];
    return s;
}

// The value of a column as mdb-export prints it, one line a row (no quotes,
// "|" between columns), the header line left out.
std::vector<std::string> AccessColumn(const zoltest::TempDir& dir, const std::string& file, const std::string& table,
                                      size_t column, const std::string& options = "") {
    std::string out = MdbExport(dir, file, table, "-Q -d '|' " + options);
    std::vector<std::string> values;
    size_t at = out.find('\n') + 1;
    while (at < out.size()) {
        size_t end = out.find('\n', at);
        std::string line = out.substr(at, end - at);
        size_t from = 0;
        for (size_t i = 0; i < column; ++i) from = line.find('|', from) + 1;
        values.push_back(line.substr(from, line.find('|', from) - from));
        at = end == std::string::npos ? out.size() : end + 1;
    }
    return values;
}

} // namespace

// 1, 2: VARCHAR(256) and longer arrive; a text that fills its column with
// quotes and backslashes keeps every character, on MariaDB and on Access.
TEST(IssueCases, LongAndAwkwardTextArrivesWhole) {
    ScratchDb src("tr_text"), dst("tr_text_to");
    src.Run(u"CREATE TABLE texts (id INT PRIMARY KEY, full255 VARCHAR(255), v256 VARCHAR(256), v1000 VARCHAR(1000))");
    std::string f = Awkward(255), m = Awkward(256), l = Awkward(1000);
    auto lit = [](const std::string& s) {
        std::string out = "'";
        for (char c : s) out += c == '\'' ? "''" : c == '\\' ? "\\\\" : std::string(1, c);
        return out + "'";
    };
    Client("INSERT INTO texts VALUES (1, " + lit(f) + ", " + lit(m) + ", " + lit(l) + "), (2, 'plain', NULL, '')",
           src.Name());
    zoltest::TempDir dir;
    NewAccessFile(dir, "t.mdb");
    for (const std::string& to : {MyAttrs(dst.Name()), AccessAttrs(dir, "t.mdb")}) {
        Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", to});
        EXPECT_EQ(r.code, 0) << r.output;
        EXPECT_TRUE(Has(r.output, "1 of 1 tables copied and verified")) << r.output;
    }
    std::string sum = "SELECT id, CHAR_LENGTH(full255), MD5(full255), MD5(v256), MD5(v1000) FROM texts ORDER BY id";
    EXPECT_EQ(Client(sum, src.Name()), Client(sum, dst.Name()));
    EXPECT_EQ(Client("SELECT full255 FROM texts WHERE id = 1", dst.Name()), Client("SELECT full255 FROM texts WHERE id = 1", src.Name()));

    // Access holds 255 characters of text: the longer columns became memos, said in the plan.
    auto longOnes = AccessColumn(dir, "t.mdb", "texts", 3);
    ASSERT_EQ(longOnes.size(), 2u);
    EXPECT_EQ(longOnes[0], l);
    EXPECT_EQ(AccessColumn(dir, "t.mdb", "texts", 1)[0], f);
    EXPECT_EQ(AccessColumn(dir, "t.mdb", "texts", 2)[0], m);
}

// 3: every byte of a binary value arrives, the last one too; the
// compatible road keeps the library's documented loss of the last byte.
TEST(IssueCases, BinaryValuesKeepEveryByteAndCompatKeepsTheLibrarysWay) {
    ScratchDb src("tr_bin"), dst("tr_bin_to"), old("tr_bin_compat");
    src.Run(u"CREATE TABLE blobs (id INT PRIMARY KEY, small VARBINARY(16), big LONGBLOB)");
    Client("INSERT INTO blobs VALUES (1, X'00FF10', REPEAT(X'DEADBEEF7F', 30000)), (2, X'41', X'FF'), (3, NULL, '')",
           src.Name());
    zoltest::TempDir dir;
    NewAccessFile(dir, "b.mdb");
    for (const std::string& to : {MyAttrs(dst.Name()), AccessAttrs(dir, "b.mdb")}) {
        Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", to});
        EXPECT_EQ(r.code, 0) << r.output;
    }
    std::string sum = "SELECT id, HEX(small), MD5(big), LENGTH(big) FROM blobs ORDER BY id";
    EXPECT_EQ(Client(sum, src.Name()), Client(sum, dst.Name()));
    // mdbtools prints the long binary column (fixed binary it leaves out).
    auto hex = AccessColumn(dir, "b.mdb", "blobs", 2, "-b hex");
    ASSERT_EQ(hex.size(), 3u);
    std::string big;
    for (int i = 0; i < 30000; ++i) big += "DEADBEEF7F";
    EXPECT_EQ(hex[0], big);
    EXPECT_EQ(hex[1], "FF");

    Ran r = Zol({"migrate", "--compat", "--from", MyAttrs(src.Name()), "--to", MyAttrs(old.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "1 of 1 tables copied")) << r.output;
    EXPECT_EQ(Client("SELECT HEX(small) FROM blobs WHERE id = 1", old.Name()), "00FF00\n");
}

// 4: names that are reserved words or hold blanks and digits work on
// Access; a rerun refuses to touch the tables; --replace makes them again;
// a table that fails is dropped again, or kept half-made when asked.
TEST(IssueCases, AwkwardNamesAndFailedTables) {
    ScratchDb src("tr_names");
    src.Run(u"CREATE TABLE `Table` (`Select` INT PRIMARY KEY, `From` VARCHAR(20), KEY `Order` (`From`))");
    src.Run(u"CREATE TABLE `19 MB 01 BEZAHLT ???` (`1 id` INT, `a b` VARCHAR(10), PRIMARY KEY (`1 id`), "
            u"UNIQUE KEY `ix ab` (`a b`))");
    Client("INSERT INTO `Table` VALUES (1, 'x'), (2, 'y'); INSERT INTO `19 MB 01 BEZAHLT ???` VALUES (7, 'q')",
           src.Name());
    zoltest::TempDir dir;
    NewAccessFile(dir, "n.mdb");
    std::string to = AccessAttrs(dir, "n.mdb");
    Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", to});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_EQ(AccessColumn(dir, "n.mdb", "19 MB 01 BEZAHLT ???", 1), std::vector<std::string>{"q"});
    EXPECT_EQ(AccessColumn(dir, "n.mdb", "Table", 1), (std::vector<std::string>{"x", "y"}));
    // mdbtools prints no indexes of these files: the file's own index list, read by zol.
    Ran schema = Zol({"schema", to});
    EXPECT_TRUE(Has(schema.output, "index Order (From)")) << schema.output;
    EXPECT_TRUE(Has(schema.output, "index ix ab unique (a b)")) << schema.output;
    EXPECT_TRUE(Has(schema.output, "primary key unique (1 id)")) << schema.output;

    r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", to});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Has(r.output, "exists on the target already")) << r.output;
    EXPECT_EQ(AccessColumn(dir, "n.mdb", "Table", 1).size(), 2u);
    r = Zol({"migrate", "--replace", "--from", MyAttrs(src.Name()), "--to", to});
    EXPECT_EQ(r.code, 0) << r.output;

    // A date the source took in a lenient mode (February 30th) is refused
    // by the target, which fails the table with the server's text: the
    // table is dropped again, or left and named half-made.
    ScratchDb mine("tr_failed");
    src.Run(u"CREATE TABLE stamps (id INT PRIMARY KEY, d DATETIME NOT NULL)");
    Client("SET SESSION sql_mode = 'ALLOW_INVALID_DATES'; INSERT INTO stamps VALUES (1, '2001-01-01'), (2, '2001-02-30')",
           src.Name());
    for (bool keep : {false, true}) {
        r = keep ? Zol({"migrate", "--keep-failed", "--table", "stamps", "--from", MyAttrs(src.Name()), "--to",
                        MyAttrs(mine.Name())})
                 : Zol({"migrate", "--table", "stamps", "--from", MyAttrs(src.Name()), "--to", MyAttrs(mine.Name())});
        EXPECT_EQ(r.code, 1);
        EXPECT_TRUE(Has(r.output, "stamps: FAILED")) << r.output;
        EXPECT_EQ(Has(r.output, "left half-made"), keep) << r.output;
        EXPECT_TRUE(Has(r.output, "Incorrect datetime value: '2001-02-30 00:00:00' for column")) << r.output;
        EXPECT_EQ(Client("SHOW TABLES LIKE 'stamps'", mine.Name()), keep ? "stamps\n" : "");
    }
}

// A lock held on the target ends the table's wait in the time given,
// with the engine's words, instead of a wait without end.
TEST(IssueCases, LockWaitsAreBounded) {
    ScratchDb src("tr_lock"), dst("tr_lock_to");
    src.Run(u"CREATE TABLE t (id INT PRIMARY KEY)");
    dst.Run(u"CREATE TABLE t (id INT PRIMARY KEY)");
    std::string port = ToUtf8(Attr(u"port"));
    std::string holder = "mariadb --protocol=tcp -h" + Q(ToUtf8(Attr(u"dblocation"))) + " -P" +
                         (port.empty() ? std::string("3306") : port) + " -u" + Q(ToUtf8(Attr(u"username"))) + " -p" +
                         Q(ToUtf8(Attr(u"password"))) + " " + Q(ToUtf8(dst.Name())) +
                         " -e 'LOCK TABLES t WRITE; SELECT SLEEP(12)' >/dev/null 2>&1 &";
    Shell(holder);
    ::sleep(1);
    auto start = std::chrono::steady_clock::now();
    Ran r = Zol({"migrate", "--replace", "--lock-timeout", "2", "--from", MyAttrs(src.Name()), "--to",
                 MyAttrs(dst.Name())});
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(r.code, 1) << r.output;
    EXPECT_TRUE(Has(r.output, "Lock wait timeout exceeded")) << r.output;
    EXPECT_LT(seconds, 10.0);
    ::sleep(12); // the holder lets go before the database is dropped
}
