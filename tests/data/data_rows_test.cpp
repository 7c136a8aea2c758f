// The rows of a data set in each fill mode against the real server: counts,
// positions, the reused enumeration row, the record text, empty tables,
// rows re-read by key in mode 1, large values in rows, and the background
// fetch of mode 3.
#include "data/data_fixture.hpp"

namespace zolsdk::datatest {
namespace {

class DataRows : public ::testing::Test {
protected:
    void SetUp() override {
        db_ = std::make_unique<ScratchDb>("rows");
        db_->Run(u"CREATE TABLE items (id INT PRIMARY KEY, name VARCHAR(40), note LONGTEXT, pic LONGBLOB)");
        db_->Run(u"INSERT INTO items VALUES (1, 'ann', REPEAT('n', 100000), UNHEX('0102030405')),"
                 u" (2, 'bo', '', NULL), (3, 'cy', NULL, UNHEX('FF'))");
        db_->Run(u"CREATE TABLE loose (id INT, name VARCHAR(40), note LONGTEXT)");
        db_->Run(u"INSERT INTO loose VALUES (1, 'ann', 'a'), (2, 'bo', 'b')");
        db_->Run(u"CREATE TABLE nothing (id INT PRIMARY KEY, name VARCHAR(40))");
        cat_ = Catalog(*db_);
    }

    Ref<DbDataSet> Set(const String& table, const String& columns, int32_t mode, const String& filter = u"") {
        auto ds = Ref<DbDataSet>::New();
        ds->Init(cat_, table, columns, filter, mode);
        return ds;
    }

    std::unique_ptr<ScratchDb> db_;
    Ref<DbCatalog> cat_;
};

TEST_F(DataRows, SynchronousRowsCountPositionAndWalkWithOneObject) {
    Ref<DbDataRows> rows = Set(u"items", u"id,name", 0)->Rows();
    EXPECT_EQ(rows->Mode(), 0);
    EXPECT_EQ(rows->Count(), 3);
    Ref<DbDataRow> second = rows->Item(1);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->Item(Variant(u"name")).ToString(), u"bo");
    EXPECT_FALSE(rows->Item(1) == second) << "Item makes a new row each time";
    EXPECT_FALSE(rows->Item(3));
    EXPECT_TRUE(rows->Exist(2));
    EXPECT_FALSE(rows->Exist(3));
    EXPECT_EQ(rows->GetString(u",", u";", u"="), u"1,ann;2,bo;3,cy");

    std::vector<String> names;
    std::vector<const DbDataRow*> objects;
    for (auto row : rows) {
        names.push_back(row->Item(Variant(u"name")).ToString());
        objects.push_back(row.get());
    }
    EXPECT_EQ(names, (std::vector<String>{u"ann", u"bo", u"cy"}));
    EXPECT_TRUE(objects[0] == objects[1] && objects[1] == objects[2]) << "the walk refills one row";
    EXPECT_FALSE(objects[0] == second.get());

    // A filter narrows both the rows and the count.
    Ref<DbDataRows> some = Set(u"items", u"name", 0, u"id >= 2")->Rows();
    EXPECT_EQ(some->Count(), 2);
    EXPECT_EQ(some->GetString(u"|", u"#", u"="), u"bo#cy");
}

TEST_F(DataRows, EmptyTablesGiveNothingInEveryMode) {
    for (int32_t mode : {0, 1, 2, 3}) {
        SCOPED_TRACE(mode);
        cat_->BeginTransaction(); // the background fetch needs the bracket
        Ref<DbDataRows> rows = Set(u"nothing", u"", mode)->Rows();
        EXPECT_EQ(rows->Count(), 0);
        EXPECT_FALSE(rows->Item(0));
        EXPECT_EQ(rows->GetString(u",", u";", u"="), u"");
        EXPECT_EQ(rows->Reset(), -1);
        int walked = 0;
        for (auto row : rows) walked += row ? 1 : 2;
        EXPECT_EQ(walked, 0);
        cat_->EndTransaction();
    }
}

TEST_F(DataRows, LargeValuesArriveAsBlobsAndEmptyOnesAsNull) {
    for (int32_t mode : {0, 1}) {
        SCOPED_TRACE(mode);
        Ref<DbDataRows> rows = Set(u"items", u"", mode)->Rows();
        Ref<DbDataRow> first = rows->Item(0);
        ASSERT_TRUE(first);
        Ref<DbBlob> note = first->Item(Variant(u"note")).As<DbBlob>();
        ASSERT_TRUE(note);
        EXPECT_FALSE(note->IsBinary());
        EXPECT_EQ(note->text(), String(100000, u'n'));
        Ref<DbBlob> pic = first->Item(Variant(u"pic")).As<DbBlob>();
        ASSERT_TRUE(pic);
        EXPECT_TRUE(pic->IsBinary());
        // A blob keeps one byte less than it was given and zeroes the last
        // place: the last byte of every binary value is lost by design.
        EXPECT_EQ(pic->size(), 4);
        EXPECT_EQ(Hex(pic->DataBytes()), "0x0102030400");

        Ref<DbDataRow> second = rows->Item(1);
        EXPECT_TRUE(second->IsNullValue(Variant(u"note"))) << "an empty long text is a null";
        EXPECT_TRUE(second->IsNullValue(Variant(u"pic")));
        Ref<DbDataRow> third = rows->Item(2);
        EXPECT_TRUE(third->IsNullValue(Variant(u"note")));
        EXPECT_TRUE(third->IsNullValue(Variant(u"pic"))) << "a one-byte value keeps no byte: null";
        EXPECT_EQ(third->GetString(u",", u"?"), u"3,cy,?,?");
        EXPECT_EQ(second->GetString(u",", u"="), u"2,bo,NULL,NULL");
    }
}

TEST_F(DataRows, KeyedRowsAreReadAgainByTheirKey) {
    // Mode 1 with a key selects each row again as it is handed out; modes 0
    // and 2 read the first select.
    auto walk = [&](int32_t mode) {
        Ref<DbDataRows> rows = Set(u"items", u"id,name,note", mode)->Rows();
        EXPECT_EQ(rows->Count(), 3);
        std::vector<std::string> seen;
        for (auto row : rows) {
            if (!row) {
                seen.push_back("(gone)");
                continue;
            }
            seen.push_back(ToUtf8(row->Item(Variant(u"name")).ToString()));
            if (seen.size() == 1) {
                db_->Run(u"UPDATE items SET name = 'BO' WHERE id = 2");
                db_->Run(u"DELETE FROM items WHERE id = 3");
            }
        }
        db_->Run(u"UPDATE items SET name = 'bo' WHERE id = 2");
        db_->Run(u"INSERT INTO items (id, name) VALUES (3, 'cy')");
        return seen;
    };
    EXPECT_EQ(walk(1), (std::vector<std::string>{"ann", "BO", "(gone)"})) << "a vanished row is handed out as nothing";
    EXPECT_EQ(walk(0), (std::vector<std::string>{"ann", "bo", "cy"}));
    EXPECT_EQ(walk(2), (std::vector<std::string>{"ann", "bo", "cy"}));

    // Item takes the same road.
    Ref<DbDataRows> keyed = Set(u"items", u"", 1)->Rows();
    EXPECT_EQ(keyed->Count(), 3);
    db_->Run(u"UPDATE items SET name = 'later' WHERE id = 1");
    EXPECT_EQ(keyed->Item(0)->Item(Variant(u"name")).ToString(), u"later");

    // Without a key, mode 1 reads the first select and does not fail.
    Ref<DbDataRows> loose = Set(u"loose", u"", 1)->Rows();
    EXPECT_EQ(loose->Mode(), 1);
    EXPECT_EQ(loose->Count(), 2);
    db_->Run(u"UPDATE loose SET name = 'changed'");
    EXPECT_EQ(loose->GetString(u",", u";", u"="), u"1,ann,a;2,bo,b");
}

TEST_F(DataRows, CompositeKeysWithDelimitersAndQuotesFindTheirRows) {
    db_->Run(u"CREATE TABLE pairs (k1 VARCHAR(10), k2 INT, body LONGTEXT, PRIMARY KEY (k1, k2))");
    db_->Run(u"INSERT INTO pairs VALUES ('a,b', 1, 'first'), ('o''k', 2, 'second'), ('back\\\\slash', 3, 'third'),"
             u" ('a,b', 4, 'fourth')");
    std::vector<String> bodies;
    for (auto row : Set(u"pairs", u"", -1)->Rows()) {
        ASSERT_TRUE(row) << "a key text that does not find its row hands out nothing";
        bodies.push_back(row->Item(Variant(u"body")).As<DbBlob>()->text());
    }
    std::sort(bodies.begin(), bodies.end());
    EXPECT_EQ(bodies, (std::vector<String>{u"first", u"fourth", u"second", u"third"}));
}

TEST_F(DataRows, NewRowsAreDetachedBuffersOfTheSetsColumns) {
    Ref<DbDataSet> ds = Set(u"items", u"name,id,pic", 0);
    Ref<DbDataRow> row = ds->NewRow();
    EXPECT_EQ(row->CellCount(), 3);
    EXPECT_TRUE(row->HasBlob());
    EXPECT_EQ(row->GetString(u",", u"?"), u"NULL,NULL,?");
    row->LetItem(Variant(u"id"), Variant(int32_t{9}));
    EXPECT_FALSE(ds->NewRow() == row);
    EXPECT_TRUE(ds->NewRow()->IsNullValue(Variant(u"id"))) << "each new row starts null";
    EXPECT_EQ(ds->Rows()->Count(), 3) << "a new row is not one of the set's rows";
}

class BackgroundFetch : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        db_ = new ScratchDb("fetch");
        db_->Run(u"CREATE TABLE big (id INT PRIMARY KEY, label VARCHAR(30), body TEXT)");
        db_->Run(u"INSERT INTO big SELECT seq, CONCAT('row ', seq), REPEAT('b', seq % 50) FROM seq_1_to_150000");
    }
    static void TearDownTestSuite() { delete db_; }
    static ScratchDb* db_;
};
ScratchDb* BackgroundFetch::db_ = nullptr;

TEST_F(BackgroundFetch, RowsArriveInOrderWhileTheFetchRuns) {
    Ref<DbCatalog> cat = Catalog(*db_);
    cat->BeginTransaction();
    auto ds = Ref<DbDataSet>::New();
    ds->Init(cat, u"big", u"id,label", u"", 3);
    Ref<DbDataRows> rows = ds->Rows();
    EXPECT_EQ(rows->Count(), 150000);
    int64_t n = 0;
    bool inOrder = true;
    const DbDataRow* object = nullptr;
    for (auto row : rows) {
        ++n;
        inOrder = inOrder && row->Item(Variant(u"id")).ToLong() == n;
        if (!object) object = row.get();
        inOrder = inOrder && row.get() == object;
    }
    EXPECT_EQ(n, 150000);
    EXPECT_TRUE(inOrder) << "every row in key order, through the one enumeration row";

    // A second walk reads the table again from its first row.
    int64_t again = 0, sum = 0;
    for (auto row : rows) {
        ++again;
        sum += row->Item(Variant(u"id")).ToLong();
    }
    EXPECT_EQ(again, 150000);
    EXPECT_EQ(sum, int64_t{150000} * 150001 / 2);
    // The walk lets go of the rows it has passed, so that a large set is not
    // held whole: a position behind it cannot be reached any more.
    DbError behind = Failure([&] { rows->Item(0); });
    EXPECT_EQ(behind.Number(), err::AdoNoCurrentRecord);
    EXPECT_TRUE(HasTrace(behind, u"DbDataRows:Item Ln"));
    cat->EndTransaction();
}

TEST_F(BackgroundFetch, EndingTheBracketMidWalkStopsTheFetch) {
    // Rows are handed out while later ones are still being fetched: ending
    // the bracket closes the connection under the fetch, and the walk ends
    // with the rows that had arrived. The caller is to finish first.
    Ref<DbCatalog> cat = Catalog(*db_);
    cat->BeginTransaction();
    auto ds = Ref<DbDataSet>::New();
    ds->Init(cat, u"big", u"", u"", 3);
    int64_t n = 0;
    for (auto row : ds->Rows()) {
        if (++n == 10) cat->EndTransaction();
    }
    EXPECT_GE(n, 10);
    EXPECT_LT(n, 150000);
    EXPECT_FALSE(BracketOpen(cat));
}

TEST_F(BackgroundFetch, OutsideABracketTheMarkedStatementReachesTheServer) {
    // The "!" turns into a background fetch only on a bracket's connection;
    // alone it goes to the server as it is, which refuses it.
    Ref<DbCatalog> cat = Catalog(*db_);
    auto ds = Ref<DbDataSet>::New();
    ds->Init(cat, u"big", u"id", u"", 3);
    DbError e = Failure([&] { ds->Rows()->Count(); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Description(), u"ErrSQL: \r\n!SELECT `id` FROM `big`"));
    EXPECT_TRUE(HasTrace(e, u"DbDataRows:Load Ln "));
    // A failed load is tried again at the next use.
    cat->BeginTransaction();
    EXPECT_EQ(ds->Rows()->Count(), 150000);
    cat->EndTransaction();
}

} // namespace
} // namespace zolsdk::datatest
