// The column set of a data set over a real table: which columns, in what
// order and at which positions, computed COUNT/MAX items and what their rows
// hold, the cached column list text, look-ups, and the fill mode chosen.
#include "data/data_fixture.hpp"

namespace zolsdk::datatest {
namespace {

class DataColumns : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        db_ = new ScratchDb("columns");
        db_->Run(u"CREATE TABLE t (a INT PRIMARY KEY, b VARCHAR(20), name VARCHAR(30), note LONGTEXT)");
        db_->Run(u"INSERT INTO t VALUES (1, 'x', 'ann', 'n1'), (2, 'y', 'cy', NULL), (3, 'z', 'bo', 'n3')");
        db_->Run(u"CREATE TABLE plain (a INT PRIMARY KEY, b VARCHAR(20))");
    }
    static void TearDownTestSuite() { delete db_; }

    Ref<DbDataSet> Set(const String& columnSet, int32_t mode = -1, const String& table = u"t") {
        auto ds = Ref<DbDataSet>::New();
        ds->Init(Catalog(*db_), table, columnSet, u"", mode);
        return ds;
    }
    static ScratchDb* db_;
};
ScratchDb* DataColumns::db_ = nullptr;

// "name,group,position;..." of every column, read through enumeration.
std::string Listing(const Ref<DbDataColumns>& cols) {
    std::string out;
    for (auto c : cols) out += (out.empty() ? "" : ";") + ToUtf8(c->GetString(u","));
    return out;
}

TEST_F(DataColumns, ColumnSetsChooseOrderAndPositionTheColumns) {
    EXPECT_EQ(Listing(Set(u"")->Columns()), "a,3,1;b,1,2;name,1,3;note,2,4") << "empty set: all, schema order";
    EXPECT_EQ(Listing(Set(u"b,a")->Columns()), "b,1,1;a,3,2") << "the client's order, not the table's";
    EXPECT_EQ(Listing(Set(u"a,nosuch,b")->Columns()), "a,3,1;b,1,3") << "an unknown name leaves its gap";
    EXPECT_EQ(Listing(Set(u"a, b")->Columns()), "a,3,1") << "the blank belongs to the name";
    // The schema's spelling wins over the item's.
    EXPECT_EQ(Listing(Set(u"NAME")->Columns()), "name,1,1");

    // The rows carry exactly the chosen columns, in that order.
    Ref<DbDataSet> ds = Set(u"name,a");
    EXPECT_EQ(ds->Rows()->Count(), 3);
    EXPECT_EQ(ToUtf8(ds->Rows()->Item(0)->GetString(u",", u"=")), "ann,1");
    EXPECT_EQ(ds->Rows()->RowColumnSet(), u"01name,03a");
}

TEST_F(DataColumns, CountAndMaxItemsBecomeComputedColumns) {
    Ref<DbDataSet> count = Set(u"a,COUNT(*)");
    EXPECT_EQ(count->Columns()->GetString(u",", u";"), u"a,3,1,0,;Column2,3,2,1,COUNT(*)");
    Ref<DbDataSet> alias = Set(u"count(*) AS Total");
    EXPECT_EQ(alias->Columns()->GetString(u",", u";"), u"Total,3,1,1,count(*)") << "the input's case survives";
    Ref<DbDataSet> max = Set(u"MAX(name)");
    EXPECT_EQ(max->Columns()->GetString(u",", u";"), u"Column1,1,1,1,MAX(name)");
    Ref<DbDataSet> maxAlias = Set(u"MAX(a) AS top,b");
    EXPECT_EQ(maxAlias->Columns()->GetString(u",", u";"), u"top,1,1,1,MAX(a);b,1,2,0,")
        << "MAX is text whatever it measures";

    // The server computes them under their aliases.
    Ref<DbDataRow> total = alias->Rows()->Item(0);
    ASSERT_TRUE(total);
    EXPECT_EQ(total->Item(Variant(u"Total")).ToLong(), 3);
    EXPECT_EQ(max->Rows()->Item(0)->Item(Variant(u"Column1")).ToString(), u"cy");
    EXPECT_EQ(maxAlias->Rows()->Item(0)->Item(Variant(u"top")).ToString(), u"3");
    // The row count is a separate COUNT(*) over the table, not over the
    // aggregate: an aggregate set of one row still counts the table's rows.
    EXPECT_EQ(alias->Rows()->Count(), 3);
    int walked = 0;
    for (auto row : alias->Rows()) walked += row ? 1 : 0;
    EXPECT_EQ(walked, 1);
}

TEST_F(DataColumns, ColumnListTextIsCachedWithTheFirstDelimiters) {
    Ref<DbDataSet> ds = Set(u"b,a", 0);
    // Init asked first, with "," and ";": that text stays.
    EXPECT_EQ(ds->Columns()->GetString(u"|", u"#"), u"b,1,1,0,;a,3,2,0,");

    auto cols = Ref<DbDataColumns>::New();
    cols->Init(Catalog(*db_)->Tables()->Item(Variant(u"t"))->Columns(), u"b,a");
    EXPECT_EQ(cols->GetString(u"|", u"#"), u"b|1|1|0|#a|3|2|0|");
    EXPECT_EQ(cols->GetString(u",", u";"), u"b|1|1|0|#a|3|2|0|");
    // Only one character is cut, whatever the row delimiter's length.
    auto wide = Ref<DbDataColumns>::New();
    wide->Init(Catalog(*db_)->Tables()->Item(Variant(u"t"))->Columns(), u"a");
    EXPECT_EQ(wide->GetString(u",", u"\r\n"), u"a,3,1,0,\r");
    auto none = Ref<DbDataColumns>::New();
    none->Init(Catalog(*db_)->Tables()->Item(Variant(u"t"))->Columns(), u"nosuch");
    EXPECT_EQ(none->GetString(u",", u";"), u"");
    EXPECT_EQ(ToRowColumnSet(u"b,1,1,0,;Total,3,2,1,COUNT(*)"), u"01b,03Total");
}

TEST_F(DataColumns, ItemAndExistFindByNameOrZeroBasedPosition) {
    Ref<DbDataColumns> cols = Set(u"b,a,note")->Columns();
    EXPECT_EQ(cols->Count(), 3);
    Ref<DbDataColumn> byName = cols->Item(Variant(u"A"));
    ASSERT_TRUE(byName);
    EXPECT_EQ(ToUtf8(byName->GetString(u",")), "a,3,2");
    Ref<DbDataColumn> byNumber = cols->Item(Variant(int32_t{2}));
    ASSERT_TRUE(byNumber);
    EXPECT_EQ(byNumber->ColumnName(), u"note");
    EXPECT_EQ(byNumber->DataTypeGroup(), dtCharBLOB);
    EXPECT_FALSE(cols->Item(Variant(u"nosuch")));
    EXPECT_FALSE(cols->Item(Variant(int32_t{99})));
    EXPECT_TRUE(cols->Exist(Variant(u"note")));
    EXPECT_FALSE(cols->Exist(Variant(u"nosuch")));
    EXPECT_FALSE(cols->Exist(Variant(int32_t{3})));
    EXPECT_FALSE(cols->Item(Variant(u"b")) == cols->Item(Variant(u"b"))) << "Item makes a new object each time";

    // A look-up in the middle of a walk leaves the walk where it was. (Not
    // after its last step: a cursor at the end is moved to the first row, and
    // the walk would start again.)
    std::vector<String> names;
    std::vector<const DbDataColumn*> objects;
    for (auto c : cols) {
        names.push_back(c->ColumnName());
        objects.push_back(c.get());
        if (names.size() < 3) {
            EXPECT_TRUE(cols->Item(Variant(u"note")));
        }
    }
    EXPECT_EQ(names, (std::vector<String>{u"b", u"a", u"note"}));
    EXPECT_EQ(objects[0], objects[2]) << "the walk hands out one shared object";
}

TEST_F(DataColumns, FillModeFollowsLargeColumnsUnlessGiven) {
    EXPECT_EQ(Set(u"")->Rows()->Mode(), 1) << "a long text column re-reads rows by key";
    EXPECT_EQ(Set(u"a,b")->Rows()->Mode(), 0) << "the chosen columns decide, not the table";
    EXPECT_EQ(Set(u"", 3)->Rows()->Mode(), 3);
    EXPECT_EQ(Set(u"", 2)->Rows()->Mode(), 2);
    EXPECT_EQ(Set(u"", -1, u"plain")->Rows()->Mode(), 0);

    // A set whose items all fell away has no columns, and its new row none.
    Ref<DbDataSet> empty = Set(u"nosuch");
    EXPECT_EQ(empty->Columns()->Count(), 0);
    Ref<DbDataRow> row = empty->NewRow();
    EXPECT_EQ(row->CellCount(), 0);
    DbError e = Failure([&] { row->GetString(u",", u"="); });
    EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
    EXPECT_TRUE(HasTrace(e, u"DbDataRow:GetString Ln "));

    // A table that is not there fails in the schema, before any row.
    DbError missing = Failure([&] { Set(u"", -1, u"nosuch_table"); });
    EXPECT_EQ(missing.Number(), err::ObjectNotSet);
}

} // namespace
} // namespace zolsdk::datatest
