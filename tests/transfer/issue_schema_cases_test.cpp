// The schema half of the failures users met: GUIDs, keys and defaults,
// XML targets, large tables; each through zol migrate on the lossless road.
#include <filesystem>

#include "transfer/transfer_fixture.hpp"
#include "zolsdk/transfer/transfer.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;
using namespace zolsdk::transfertest;

namespace {

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Statements run on an Access file through the library's own catalog.
void OnAccess(const zoltest::TempDir& dir, const std::string& file, std::initializer_list<const char16_t*> sql) {
    auto cat = Ref<DbCatalog>::New();
    cat->Init(FromUtf8(AccessAttrs(dir, file)));
    for (const char16_t* s : sql) cat->PassThroughQuery(s);
}

std::string Definition(const String& db, const std::string& table) {
    std::string text = Client("SHOW CREATE TABLE `" + table + "`", db);
    auto at = text.find(" AUTO_INCREMENT=");
    if (at != std::string::npos) text.erase(at, text.find(' ', at + 1) - at);
    return text;
}

} // namespace

// 5: a GUID column has a type on every target: Access keeps a Replication
// ID, MariaDB a 38-character text in braces; the plan says so.
TEST(IssueCases, GuidColumnsHaveATypeEverywhere) {
    zoltest::TempDir dir;
    NewAccessFile(dir, "g.mdb");
    OnAccess(dir, "g.mdb", {u"CREATE TABLE rep (id LONG PRIMARY KEY, rid GUID)", u"INSERT INTO rep (id) VALUES (1)",
                            u"INSERT INTO rep (id) VALUES (2)"});
    ScratchDb dst("tr_guid");
    Ran r = Zol({"migrate", "--from", AccessAttrs(dir, "g.mdb"), "--to", MyAttrs(dst.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "rid: type 72 -> CHAR(38)")) << r.output;
    // The file's own GUIDs, as mdbtools reads them, arrive in braces
    // (mdbtools leaves out the last dash: compared without dashes).
    auto bare = [](std::string s) {
        std::erase(s, '-');
        return s;
    };
    std::string source = bare(MdbExport(dir, "g.mdb", "rep", "-Q -d '\t' -H"));
    std::string arrived = bare(Client("SELECT id, rid FROM rep ORDER BY id", dst.Name()));
    EXPECT_EQ(arrived, source);
    EXPECT_EQ(arrived.size(), 2 * (2 + 34 + 1)) << arrived;
    EXPECT_EQ(Client("SELECT COLUMN_TYPE FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_SCHEMA = DATABASE() "
                     "AND COLUMN_NAME = 'rid'", dst.Name()),
              "char(38)\n");

    NewAccessFile(dir, "g2.mdb");
    r = Zol({"migrate", "--schema-only", "--from", AccessAttrs(dir, "g.mdb"), "--to", AccessAttrs(dir, "g2.mdb")});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(MdbSchema(dir, "g2.mdb"), "Replication ID")) << MdbSchema(dir, "g2.mdb");
}

// 6: foreign keys, auto-increment, defaults and NOT NULL arrive; the
// Yes/No of Access stays NOT NULL; descending key columns stay descending.
TEST(IssueCases, KeysDefaultsAndCountersArrive) {
    ScratchDb src("tr_keys"), back("tr_keys_back");
    src.Run(u"CREATE TABLE parent (id INT NOT NULL AUTO_INCREMENT PRIMARY KEY, name VARCHAR(20) NOT NULL DEFAULT 'none', "
            u"qty INT DEFAULT 3, made DATETIME DEFAULT CURRENT_TIMESTAMP, KEY ix_made (made DESC))");
    src.Run(u"CREATE TABLE child (id INT PRIMARY KEY, parent_id INT NOT NULL, KEY ix_p (parent_id), "
            u"CONSTRAINT fk_child_parent FOREIGN KEY (parent_id) REFERENCES parent (id) ON DELETE CASCADE)");
    src.Run(u"CREATE TABLE ranked (score INT NOT NULL, PRIMARY KEY (score DESC))");
    Client("INSERT INTO parent (name) VALUES ('a'), ('b'); INSERT INTO child VALUES (10, 1), (11, 2);"
           "INSERT INTO ranked VALUES (5), (9)",
           src.Name());
    zoltest::TempDir dir;
    NewAccessFile(dir, "k.mdb");
    Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", AccessAttrs(dir, "k.mdb")});
    EXPECT_EQ(r.code, 0) << r.output;
    std::string schema = Shell("mdb-schema --default-values --relations " + Q(dir.File("k.mdb").string()) +
                               " access").output;
    EXPECT_TRUE(Has(schema, "[name]\t\t\tText (20) NOT NULL DEFAULT")) << schema;
    EXPECT_TRUE(Has(schema, "[qty]\t\t\tLong Integer DEFAULT 3")) << schema;
    Ran indexes = Zol({"schema", AccessAttrs(dir, "k.mdb")});
    EXPECT_TRUE(Has(indexes.output, "index ix_made (made desc)")) << indexes.output;
    EXPECT_TRUE(Has(indexes.output, "index PrimaryKey primary key unique (score desc)")) << indexes.output;

    // Back into MariaDB: counter, defaults and the foreign key come with it.
    r = Zol({"migrate", "--from", AccessAttrs(dir, "k.mdb"), "--to", MyAttrs(back.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    std::string parent = Definition(back.Name(), "parent");
    EXPECT_TRUE(Has(parent, "`id` int(11) NOT NULL AUTO_INCREMENT")) << parent;
    EXPECT_TRUE(Has(parent, "`name` varchar(20) NOT NULL DEFAULT 'none'")) << parent;
    EXPECT_TRUE(Has(parent, "`made` datetime DEFAULT current_timestamp()")) << parent;
    EXPECT_TRUE(Has(parent, "KEY `ix_made` (`made` DESC)")) << parent;
    EXPECT_TRUE(Has(Definition(back.Name(), "child"), "REFERENCES `parent` (`id`) ON DELETE CASCADE"))
        << Definition(back.Name(), "child");

    // A Yes/No column of a real Access file stays NOT NULL.
    zoltest::TempDir sample;
    std::filesystem::copy_file(std::string(ZOLSDK_SHARED_DIR) + "/data/access/testV2000.mdb", sample.File("v.mdb"));
    ScratchDb yn("tr_yesno");
    r = Zol({"migrate", "--table", "Table1", "--from", AccessAttrs(sample, "v.mdb"), "--to", MyAttrs(yn.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_EQ(Client("SELECT IS_NULLABLE FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_SCHEMA = DATABASE() "
                     "AND TABLE_NAME = 'Table1' AND COLUMN_NAME = 'I'", yn.Name()),
              "NO\n");
}

// 7: an XML catalog as the target holds the schema the XML reader reads;
// MariaDB -> XML -> MariaDB gives the same tables back.
TEST(IssueCases, XmlTargetHoldsTheSchemaAndBringsItBack) {
    ScratchDb src("tr_xml"), back("tr_xml_back");
    src.Run(u"CREATE TABLE a (id INT NOT NULL AUTO_INCREMENT, t VARCHAR(40) NOT NULL DEFAULT 'x', "
            u"n DECIMAL(10,2), b LONGBLOB, PRIMARY KEY (id), KEY ix_t (t DESC, n)) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4");
    src.Run(u"CREATE TABLE b (id INT PRIMARY KEY, a_id INT, CONSTRAINT fk_b_a FOREIGN KEY (a_id) REFERENCES a (id))");
    Client("INSERT INTO a (t) VALUES ('row')", src.Name());
    zoltest::TempDir dir;
    String xml = dir.XmlAttrs("s.xml");
    Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", ToUtf8(xml)});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "2 of 2 tables created")) << r.output;

    // The library's XML catalog reads what was written.
    auto cat = Ref<DbCatalog>::New();
    cat->Init(xml);
    ASSERT_EQ(cat->Tables()->Count(), 2);
    auto table = cat->Tables()->Item(Variant(u"a"));
    EXPECT_EQ(table->Columns()->Count(), 4);
    EXPECT_EQ(table->Indexes()->Count(), 2);

    r = Zol({"migrate", "--from", ToUtf8(xml), "--to", MyAttrs(back.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    for (const char* t : {"a", "b"}) EXPECT_EQ(Definition(src.Name(), t), Definition(back.Name(), t)) << t;

    // zol schema --save writes the same file.
    r = Zol({"schema", MyAttrs(src.Name()), "--save", dir.File("saved.xml").string()});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_EQ(dir.Read("saved.xml"), dir.Read("s.xml"));
}

// 8: a table of more than 100,000 rows streams through and is verified;
// the same table copied by key ranges, each verified on its own.
TEST(IssueCases, LargeTablesStreamAndKeyRangesCopyAlone) {
    ScratchDb src("tr_big"), dst("tr_big_to"), ranged("tr_big_ranges");
    src.Run(u"CREATE TABLE big (id INT PRIMARY KEY, t VARCHAR(40), d DECIMAL(12,3), w DATETIME)");
    Client("INSERT INTO big SELECT seq, CONCAT('row ', seq), seq / 7, '2020-01-01' + INTERVAL seq SECOND "
           "FROM seq_1_to_120000",
           src.Name());
    Ran r = Zol({"migrate", "--from", MyAttrs(src.Name()), "--to", MyAttrs(dst.Name())});
    EXPECT_EQ(r.code, 0) << r.output;
    EXPECT_TRUE(Has(r.output, "big: verified, rows read 120000, rows written 120000")) << r.output;
    std::string check = "CHECKSUM TABLE big";
    std::string a = Client(check, src.Name()), b = Client(check, dst.Name());
    EXPECT_EQ(a.substr(a.find('\t')), b.substr(b.find('\t')));

    using namespace zolsdk::transfer;
    Plan plan = MakePlan(FromUtf8(MyAttrs(src.Name())), FromUtf8(MyAttrs(ranged.Name())));
    const TablePlan& t = *plan.Find(u"BIG");
    Options o;
    ASSERT_EQ(CreateTable(plan, t, o).outcome, Outcome::Created);
    int64_t rows = 0;
    for (KeyRange k : {KeyRange{Variant(), Variant(int32_t{50000})}, KeyRange{Variant(int32_t{50000}), Variant()}}) {
        TableResult part = CopyRows(plan, t, o, k);
        EXPECT_EQ(part.outcome, Outcome::Verified) << ToUtf8(part.failure);
        rows += part.rowsWritten;
    }
    EXPECT_EQ(rows, 120000);
    EXPECT_TRUE(Verify(plan, t, o).equal);

    // A changed value is found, with its row and column.
    Client("UPDATE big SET t = 'changed' WHERE id = 777", ranged.Name());
    Verification v = Verify(plan, t, o);
    EXPECT_FALSE(v.equal);
    EXPECT_EQ(ToUtf8(v.firstDifference).rfind("row (id=777), column t", 0), 0u) << ToUtf8(v.firstDifference);
    r = Zol({"verify", "--from", MyAttrs(src.Name()), "--to", MyAttrs(ranged.Name())});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Has(r.output, "big: MISMATCH")) << r.output;
}
