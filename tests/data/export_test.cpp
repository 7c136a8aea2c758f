// Data out of a catalog: the fill mode ExportData chooses by the row count,
// emptying a table or the cached schema, and statements passed through.
#include "data/data_fixture.hpp"

namespace zolsdk::datatest {
namespace {

TEST(Export, ModeFollowsTheRowCountAtTheThreshold) {
    ScratchDb db("export");
    db.Run(u"CREATE TABLE n (id INT PRIMARY KEY, body LONGTEXT)");
    db.Run(u"CREATE TABLE e (id INT PRIMARY KEY)");
    db.Run(u"INSERT INTO n SELECT seq, 'b' FROM seq_1_to_100000");
    Ref<DbCatalog> cat = Catalog(db);

    Ref<DbDataSet> at = cat->ExportData(u"n");
    EXPECT_EQ(at->Rows()->Mode(), 0) << "up to 100000 rows: read at once, large columns or not";
    EXPECT_EQ(at->Columns()->Count(), 2);
    db.Run(u"INSERT INTO n VALUES (100001, 'b')");
    Ref<DbDataSet> above = cat->ExportData(u"n");
    EXPECT_EQ(above->Rows()->Mode(), 3);
    EXPECT_EQ(at->Rows()->Count(), 100001) << "the count is taken when the rows are first read";

    Ref<DbDataSet> empty = cat->ExportData(u"e");
    EXPECT_EQ(empty->Rows()->Mode(), 0);
    EXPECT_EQ(empty->Rows()->Count(), 0);

    DbError missing = Failure([&] { cat->ExportData(u"nosuch"); });
    EXPECT_EQ(missing.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(missing.Description(), u"SELECT COUNT(*) FROM `nosuch`"));
    EXPECT_TRUE(HasTrace(missing, u"DbCatalog:ExportData Ln "));
}

TEST(Export, ClearingATableOrTheSchemaCache) {
    ScratchDb db("clear");
    db.Run(u"CREATE TABLE t (id INT PRIMARY KEY)");
    db.Run(u"INSERT INTO t VALUES (1), (2)");
    Ref<DbCatalog> cat = Catalog(db);
    EXPECT_EQ(cat->Tables()->Count(), 1);

    // No name: no statement, only the reader forgets what it read.
    db.Run(u"CREATE TABLE later (id INT)");
    EXPECT_EQ(cat->Tables()->Count(), 1) << "the reader's schema is cached";
    Variant cleared = cat->ClearData(u"");
    EXPECT_EQ(cleared.Type(), VarType::Boolean);
    EXPECT_TRUE(cleared.ToBoolean());
    EXPECT_EQ(RowCount(db, u"t"), 2);
    EXPECT_EQ(cat->Tables()->Count(), 2);

    EXPECT_TRUE(cat->ClearData(u"t").ToBoolean());
    EXPECT_EQ(RowCount(db, u"t"), 0);
    EXPECT_TRUE(cat->ClearData(u"t").ToBoolean()) << "an empty table clears as well";
    DbError e = Failure([&] { cat->ClearData(u"nosuch"); });
    EXPECT_TRUE(HasTrace(e, u"DbCatalog:ClearData Ln "));
}

TEST(Export, PassThroughTellsWhetherRowsWereTouched) {
    ScratchDb db("pass");
    db.Run(u"CREATE TABLE t (id INT PRIMARY KEY, v INT)");
    Ref<DbCatalog> cat = Catalog(db);
    EXPECT_FALSE(cat->PassThroughQuery(u"INSERT INTO t SELECT 1, 1 FROM DUAL WHERE 1 = 0"));
    EXPECT_TRUE(cat->PassThroughQuery(u"INSERT INTO t VALUES (1, 1), (2, 2)"));
    EXPECT_FALSE(cat->PassThroughQuery(u"UPDATE t SET v = 9 WHERE id = 99")) << "nothing changed is no failure";
    // The connection's options count the rows found, not the rows changed.
    EXPECT_TRUE(cat->PassThroughQuery(u"UPDATE t SET v = 1 WHERE id = 1"));
    EXPECT_TRUE(cat->PassThroughQuery(u"UPDATE t SET v = 5"));
    EXPECT_FALSE(cat->PassThroughQuery(u"CREATE TABLE u (id INT)"));
    EXPECT_EQ(Scalar(db, u"SELECT SUM(v) FROM t"), "10");
    DbError e = Failure([&] { cat->PassThroughQuery(u"UPDATE nosuch SET v = 1"); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(HasTrace(e, u"DbCatalog:PassThroughQuery Ln "));
}

} // namespace
} // namespace zolsdk::datatest
