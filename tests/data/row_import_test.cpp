// ImportDataRow and UpdateDataByAttribute against the real server: the
// text and bound ways by the data set's mode, the connection scope, the
// matching columns, and their failures.
#include "data/data_fixture.hpp"

namespace zolsdk::datatest {
namespace {

class RowImport : public ::testing::Test {
protected:
    void SetUp() override {
        db_ = std::make_unique<ScratchDb>("rowimp");
        db_->Run(u"CREATE TABLE acct (region VARCHAR(10), num INT, name VARCHAR(20), bal DECIMAL(10,2), memo LONGTEXT,"
                 u" pic LONGBLOB, PRIMARY KEY (region, num))");
        db_->Run(u"INSERT INTO acct VALUES ('north', 1, 'n1', 1.50, 'm', NULL), ('north', 2, 'n2', 2.50, NULL, NULL),"
                 u" ('a,b', 1, 'ab', 0, NULL, NULL)");
        cat_ = Catalog(*db_);
    }

    Ref<DbDataSet> Set(int32_t mode) {
        auto ds = Ref<DbDataSet>::New();
        ds->Init(cat_, u"acct", u"", u"", mode);
        return ds;
    }

    Ref<DbDataRow> Filled(const Ref<DbDataSet>& ds, const String& region, int32_t num, const String& name) {
        Ref<DbDataRow> row = ds->NewRow();
        row->LetItem(Variant(u"region"), Variant(region));
        row->LetItem(Variant(u"num"), Variant(num));
        row->LetItem(Variant(u"name"), Variant(name));
        row->LetItem(Variant(u"bal"), Variant(u"-7.25"));
        row->SetItem(Variant(u"memo"), Variant(TextBlob(u"memo, with comma")));
        row->SetItem(Variant(u"pic"), Variant(ByteBlob(Bytes{0xDE, 0xAD, 0xBE})));
        return row;
    }

    std::string Line(const String& where) {
        return Scalar(*db_, u"SELECT CONCAT_WS('|', region, num, name, bal, COALESCE(memo, 'null'),"
                            u" COALESCE(HEX(pic), 'null')) FROM acct WHERE " + where);
    }

    std::unique_ptr<ScratchDb> db_;
    Ref<DbCatalog> cat_;
};

TEST_F(RowImport, TheModeChoosesTextOrBoundRowsAndNoBracketIsOpened) {
    // Mode 0: everything in the text, where binary values are NULL by design.
    EXPECT_TRUE(cat_->ImportDataRow(u"acct", Set(0), Filled(Set(0), u"east", 1, u"text")));
    EXPECT_EQ(Line(u"region = 'east'"), "east|1|text|-7.25|memo, with comma|null");
    // Mode 1: large values bound; the bytes less the last one.
    EXPECT_TRUE(cat_->ImportDataRow(u"acct", Set(1), Filled(Set(1), u"west", 1, u"bound")));
    EXPECT_EQ(Line(u"region = 'west'"), "west|1|bound|-7.25|memo, with comma|DEAD00");
    // A null large cell binds a null.
    Ref<DbDataSet> ds = Set(1);
    Ref<DbDataRow> nulls = Filled(ds, u"west", 2, u"nulls");
    nulls->SetItem(Variant(u"memo"), Variant::Null());
    nulls->SetItem(Variant(u"pic"), Variant::Null());
    EXPECT_TRUE(cat_->ImportDataRow(u"acct", ds, nulls));
    EXPECT_EQ(Line(u"region = 'west' AND num = 2"), "west|2|nulls|-7.25|null|null");
    EXPECT_FALSE(BracketOpen(cat_));

    // A client brackets many rows itself; the bracket stays its own.
    cat_->BeginTransaction();
    for (int32_t n = 10; n < 13; ++n) EXPECT_TRUE(cat_->ImportDataRow(u"acct", ds, Filled(ds, u"south", n, u"s")));
    EXPECT_TRUE(BracketOpen(cat_));
    cat_->EndTransaction();
    EXPECT_EQ(Scalar(*db_, u"SELECT COUNT(*) FROM acct WHERE region = 'south'"), "3");

    // A clash is the engine's failure, and there is no bracket to end.
    DbError e = Failure([&] { cat_->ImportDataRow(u"acct", ds, Filled(ds, u"south", 10, u"again")); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Description(), u"Duplicate entry"));
    EXPECT_TRUE(HasTrace(e, u"DbCatalog:ImportDataRow Ln "));
}

TEST_F(RowImport, UpdatesMatchOnTheGivenColumnsInTheirOrder) {
    Ref<DbDataSet> text = Set(0);
    // The written columns include the matching ones: here they keep their
    // values, so only the others change.
    EXPECT_TRUE(cat_->UpdateDataByAttribute(u"acct", text, Filled(text, u"north", 2, u"renamed"), u"region,num",
                                            u"north,2"));
    EXPECT_EQ(Line(u"num = 2"), "north|2|renamed|-7.25|memo, with comma|null");
    EXPECT_EQ(Line(u"region = 'north' AND num = 1"), "north|1|n1|1.50|m|null") << "the other row is untouched";
    // The order of the names is the order of the values.
    EXPECT_TRUE(cat_->UpdateDataByAttribute(u"acct", text, Filled(text, u"north", 1, u"swapped"), u"num,region",
                                            u"1,north"));
    EXPECT_EQ(Line(u"region = 'north' AND num = 1"), "north|1|swapped|-7.25|memo, with comma|null");
    // An escaped delimiter in a matching value.
    EXPECT_TRUE(cat_->UpdateDataByAttribute(u"acct", text, Filled(text, u"a,b", 1, u"commas"), u"region", u"a%2Cb"));
    EXPECT_EQ(Line(u"region = 'a,b'"), "a,b|1|commas|-7.25|memo, with comma|null");

    // Bound: the large values go as parameters.
    Ref<DbDataSet> bound = Set(1);
    EXPECT_TRUE(cat_->UpdateDataByAttribute(u"acct", bound, Filled(bound, u"north", 2, u"bound"), u"region,num",
                                            u"north,2"));
    EXPECT_EQ(Line(u"num = 2"), "north|2|bound|-7.25|memo, with comma|DEAD00");

    // Nothing matched is no failure.
    EXPECT_TRUE(cat_->UpdateDataByAttribute(u"acct", text, Filled(text, u"none", 9, u"x"), u"region", u"none"));
    EXPECT_EQ(RowCount(*db_, u"acct"), 3);
    EXPECT_FALSE(BracketOpen(cat_));
}

TEST_F(RowImport, AnUnknownMatchingColumnFailsAndEndsTheBracket) {
    Ref<DbDataSet> ds = Set(0);
    cat_->BeginTransaction();
    DbError e = Failure([&] {
        cat_->UpdateDataByAttribute(u"acct", ds, Filled(ds, u"north", 1, u"never"), u"region,nosuch", u"north,1");
    });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_TRUE(HasTrace(e, u"DbCatalog:UpdateDataByAttribute Ln "));
    EXPECT_FALSE(BracketOpen(cat_)) << "the client's bracket ends with the failure";
    EXPECT_EQ(Line(u"region = 'north' AND num = 1"), "north|1|n1|1.50|m|null");

    // An engine failure takes the same road.
    DbError clash = Failure([&] {
        cat_->UpdateDataByAttribute(u"acct", ds, Filled(ds, u"north", 1, u"clash"), u"region,num", u"north,2");
    });
    EXPECT_TRUE(Contains(clash.Description(), u"Duplicate entry 'north-1'"));
    EXPECT_FALSE(BracketOpen(cat_));
}

} // namespace
} // namespace zolsdk::datatest
