// MariaDB tables into Access files through zol migrate: what the file keeps
// (AutoNumber values, key directions) and what the report must say (dates
// Access cannot hold), judged by mdbtools and by the file's own reader.
#include "transfer/transfer_fixture.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(AccessCases, AutoNumbersKeysAndZeroDatesArriveAsTheReportSays) {
    ScratchDb db("tr_acc");
    // Strict mode off for the session: the server then keeps the zero dates.
    Client("SET SESSION sql_mode = '';"
           "CREATE TABLE counted (id INT AUTO_INCREMENT PRIMARY KEY, v VARCHAR(10));"
           "INSERT INTO counted VALUES (3, 'a'), (7, 'b'), (100, 'c');"
           "CREATE TABLE down (a INT NOT NULL, b VARCHAR(5) NOT NULL, v INT, PRIMARY KEY (a DESC, b));"
           "INSERT INTO down VALUES (1, 'x', 10), (2, 'y', 20);"
           "CREATE TABLE dated (id INT PRIMARY KEY, d DATE NOT NULL, t DATETIME);"
           "INSERT INTO dated VALUES (1, '0000-00-00', '0000-00-00 00:00:00'), (2, '2021-05-06', '2020-00-10 01:02:03'),"
           " (3, '1999-12-31', '2001-02-03 04:05:06');",
           db.Name());
    zoltest::TempDir dir;
    NewAccessFile(dir, "t.mdb");
    Ran r = Zol({"migrate", "--from", MyAttrs(db.Name()), "--to", AccessAttrs(dir, "t.mdb")});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "3 of 3 tables copied and verified")) << r.output;

    // AutoNumber values as given, and the next one after the highest.
    {
        auto cat = Ref<DbCatalog>::New();
        cat->Init(FromUtf8(AccessAttrs(dir, "t.mdb")));
        cat->Session()->ExecuteNoQuery(u"INSERT INTO [counted] ([v]) VALUES ('d')");
    }
    EXPECT_EQ(MdbExport(dir, "t.mdb", "counted", "-Q -d '|'"), "id|v\n3|a\n7|b\n100|c\n101|d\n");

    // A descending key stays the table's primary key with its direction.
    Ran schema = Shell("mdb-schema --indexes -T down " + Q((dir.Path() / "t.mdb").string()) + " mysql");
    EXPECT_TRUE(Has(schema.output, "ALTER TABLE `down` ADD PRIMARY KEY (`a`, `b`);")) << schema.output;
    Ran own = Zol({"schema", AccessAttrs(dir, "t.mdb")});
    EXPECT_TRUE(Has(own.output, "primary key unique (a desc, b)")) << own.output;

    // Dates no Access file holds are named with their count, and arrive as
    // Null in a column that now takes Null.
    EXPECT_TRUE(Has(r.output, "d: 1 zero date arrives as Null")) << r.output;
    EXPECT_TRUE(Has(r.output, "t: 2 zero dates arrive as Null")) << r.output;
    EXPECT_TRUE(Has(r.output, "the column takes Null")) << r.output;
    EXPECT_EQ(MdbExport(dir, "t.mdb", "dated", "-Q -d '|' -T '%Y-%m-%d %H:%M:%S'"),
              "id|d|t\n1||\n2|2021-05-06 00:00:00|\n3|1999-12-31 00:00:00|2001-02-03 04:05:06\n");
}

// The 89-column table of a sample file passes InnoDB's widest-row check
// for a table: it is made all the same, and said so.
TEST(AccessCases, AWideSampleTableArrivesInMariaDb) {
    zoltest::TempDir dir;
    std::filesystem::copy_file(std::string(ZOLSDK_SHARED_DIR) + "/data/access/testV2000.mdb", dir.File("v.mdb"));
    ScratchDb db("tr_wide");
    Ran r = Zol({"migrate", "--from", AccessAttrs(dir, "v.mdb"), "--to", MyAttrs(db.Name()), "--table", "Table2"});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "Table2: verified")) << r.output;
    EXPECT_TRUE(Has(r.output, "without InnoDB's strict row-size check")) << r.output;
    EXPECT_EQ(Client("SELECT COUNT(*) FROM information_schema.columns WHERE table_schema = DATABASE() AND "
                     "table_name = 'Table2' AND column_type = 'varchar(50)'",
                     db.Name()),
              "89\n");
}
