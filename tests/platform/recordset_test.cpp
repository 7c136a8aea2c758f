#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "platform/ado/rowset_feed.hpp"

using namespace zolsdk;
using namespace zolsdk::ado;
using zoltest::FailureNumber;

namespace {
// A rowset of people: name (text of at most 10), age, city.
Ref<Recordset> People() {
    auto rs = NewRowset({{u"name", adType::VarWChar, 10}, {u"age", adType::Integer, 0}, {u"city", adType::VarWChar, 255}});
    struct P { const char16_t* name; int32_t age; const char16_t* city; };
    for (P p : {P{u"Ann", 31, u"Oslo"}, P{u"bob", 25, u"Rome"}, P{u"Cid", 40, nullptr}, P{u"dora", 25, u"oslo"}}) {
        rs->AddNew();
        rs->Value(u"name", Variant(p.name));
        rs->Value(u"age", Variant(p.age));
        if (p.city) rs->Value(u"city", Variant(p.city));
        rs->Update();
    }
    rs->MoveFirst();
    return rs;
}

String Names(Recordset& rs) {
    String out;
    if (rs.Eof()) return out;
    rs.MoveFirst();
    while (!rs.Eof()) {
        out += rs.Value(u"name").ToString() + u";";
        rs.MoveNext();
    }
    return out;
}
} // namespace

TEST(Recordset, EmptyRowsetIsAtBothEnds) {
    auto rs = NewRowset({{u"table_name", adType::VarWChar, 255}, {u"type", adType::VarWChar, 255}});
    EXPECT_EQ(rs->State(), adStateOpen);
    EXPECT_TRUE(rs->Eof());
    EXPECT_TRUE(rs->Bof());
    EXPECT_EQ(rs->RecordCount(), 0);
    EXPECT_EQ(FailureNumber([&] { rs->MoveFirst(); }), err::AdoNoCurrentRecord);
    EXPECT_EQ(FailureNumber([&] { rs->MoveNext(); }), err::AdoNoCurrentRecord);
    EXPECT_EQ(FailureNumber([&] { rs->Move(0, Variant(int32_t{1})); }), err::AdoNoCurrentRecord);
    EXPECT_EQ(FailureNumber([&] { rs->Value(u"type"); }), err::AdoNoCurrentRecord);
    EXPECT_EQ(FailureNumber([&] { rs->GetString(); }), err::AdoNoCurrentRecord);
    EXPECT_EQ(FailureNumber([&] { rs->Bookmark(); }), err::AdoNoCurrentRecord);
    rs->Close();
    EXPECT_EQ(rs->State(), adStateClosed);
    EXPECT_EQ(FailureNumber([&] { rs->Eof(); }), err::AdoNotAllowedClosed);
    EXPECT_EQ(FailureNumber([&] { rs->Close(); }), err::AdoNotAllowedClosed);
}

TEST(Recordset, FieldsAreFoundWithoutRegardToCase) {
    auto rs = NewRowset({{u"unique", adType::Boolean, 0}, {u"Index_Name", adType::VarWChar, 255}});
    EXPECT_EQ(&rs->Fields().Item(u"UNIQUE"), &rs->Fields().Item(u"unique"));
    EXPECT_EQ(rs->Fields().Item(u"index_name").Name(), u"Index_Name");
    EXPECT_EQ(rs->Fields().Item(Variant(int32_t{1})).Name(), u"Index_Name");
    EXPECT_EQ(rs->Fields().Item(u"Unique").Type(), adType::Boolean);
    EXPECT_EQ(rs->Fields().Item(u"index_name").DefinedSize(), 255);
    EXPECT_EQ(rs->Fields().IndexOf(u"nope"), -1);
    EXPECT_EQ(FailureNumber([&] { rs->Fields().Item(u"nope"); }), err::AdoItemNotFound);
    EXPECT_EQ(FailureNumber([&] { rs->Fields().Item(2); }), err::AdoItemNotFound);
    EXPECT_EQ(FailureNumber([&] { rs->Fields().Append(u"late", adType::Integer); }), err::AdoNotAllowedOpen);
}

TEST(Recordset, WritesAreCoercedToTheFieldType) {
    auto rs = People();
    rs->Value(u"AGE", Variant(u"42"));
    EXPECT_EQ(rs->Value(u"age").Type(), VarType::Long);
    EXPECT_EQ(rs->Value(u"age").ToLong(), 42);
    rs->Value(u"name", Variant(u"0123456789")); // exactly the defined size
    EXPECT_EQ(rs->Value(u"name").ToString(), u"0123456789");
    EXPECT_EQ(FailureNumber([&] { rs->Value(u"name", Variant(u"01234567890")); }), err::AdoMultipleStep);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"0123456789"); // the failed write changed nothing
    EXPECT_EQ(FailureNumber([&] { rs->Value(u"age", Variant(u"old")); }), err::TypeMismatch);
    rs->Value(u"city", Variant());
    EXPECT_TRUE(rs->Value(u"city").IsNull());

    auto shapes = NewRowset({{u"is_nullable", adType::Boolean, 0}, {u"column_default", adType::VarWChar, 255}});
    shapes->AddNew();
    shapes->Value(u"is_nullable", Variant(int32_t{-1}));
    EXPECT_EQ(shapes->Value(u"is_nullable").Type(), VarType::Boolean);
    EXPECT_TRUE(shapes->Value(u"is_nullable").ToBoolean());
    EXPECT_EQ(FailureNumber([&] { shapes->Value(u"column_default", Variant(String(256, u'x'))); }), err::AdoMultipleStep);
    shapes->Value(u"column_default", Variant(String(255, u'x')));
    shapes->Update();
    EXPECT_EQ(shapes->RecordCount(), 1);
}

TEST(Recordset, MovingAroundAndTheEnds) {
    auto rs = People();
    EXPECT_FALSE(rs->Bof());
    EXPECT_EQ(rs->RecordCount(), 4);
    rs->MoveLast();
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    rs->MoveNext();
    EXPECT_TRUE(rs->Eof());
    EXPECT_FALSE(rs->Bof());
    EXPECT_EQ(FailureNumber([&] { rs->MoveNext(); }), err::AdoNoCurrentRecord);
    rs->MovePrevious();
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    rs->MoveFirst();
    rs->MovePrevious();
    EXPECT_TRUE(rs->Bof());
    EXPECT_EQ(FailureNumber([&] { rs->MovePrevious(); }), err::AdoNoCurrentRecord);

    // Move with start 1 counts from the first row: 0 is the first row.
    rs->Move(0, Variant(int32_t{1}));
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Ann");
    rs->Move(2, Variant(int32_t{1}));
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Cid");
    rs->Move(1);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    rs->Move(-3);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Ann");
    rs->Move(4, Variant(int32_t{1}));
    EXPECT_TRUE(rs->Eof());
    rs->Move(-5, Variant(int32_t{1}));
    EXPECT_TRUE(rs->Bof());
}

TEST(Recordset, FilterByTextIsCaseBlindAndByNumberNumeric) {
    auto rs = People();
    rs->MoveLast();
    rs->Filter(Variant(u"city = 'OSLO'"));
    EXPECT_EQ(rs->RecordCount(), 2);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Ann"); // the cursor goes to the first row in view
    EXPECT_EQ(Names(*rs), u"Ann;dora;");

    rs->Filter(Variant(u"age = 25"));
    EXPECT_EQ(Names(*rs), u"bob;dora;");
    rs->Filter(Variant(u"AGE = 25.0 AND name = 'BOB'"));
    EXPECT_EQ(Names(*rs), u"bob;");
    rs->Filter(Variant(u"age = 25 OR city = 'rome'"));
    EXPECT_EQ(Names(*rs), u"bob;dora;");
    rs->Filter(Variant(u"age > 30 AND city <> 'x'"));
    EXPECT_EQ(Names(*rs), u"Ann;"); // a null city meets no comparison
    rs->Filter(Variant(u"city = NULL"));
    EXPECT_EQ(Names(*rs), u"Cid;");
    rs->Filter(Variant(u"name LIKE 'd*'"));
    EXPECT_EQ(Names(*rs), u"dora;");
    rs->Filter(Variant(u"[name] = 'it''s'"));
    EXPECT_TRUE(rs->Eof());
    EXPECT_TRUE(rs->Bof());
    EXPECT_EQ(rs->RecordCount(), 0);

    rs->Filter(Variant(int32_t{0}));
    EXPECT_EQ(rs->RecordCount(), 4);
    rs->Filter(Variant(u"name = 'cid'"));
    rs->Filter(Variant(u""));
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(rs->Filter().ToLong(), 0);
}

TEST(Recordset, MalformedFiltersFailAndKeepTheView) {
    auto rs = People();
    rs->Filter(Variant(u"age = 25"));
    // A key with an apostrophe, put in without escaping, breaks the filter.
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"name = 'O'Brien'")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"name = 'open")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"nosuch = 1")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"age 25")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"age = x")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(u"age = 1 AND")); }), err::AdoFilterInvalid);
    EXPECT_EQ(FailureNumber([&] { rs->Filter(Variant(int32_t{7})); }), err::AdoArguments);
    EXPECT_EQ(rs->RecordCount(), 2);
    EXPECT_EQ(rs->Filter().ToString(), u"age = 25");
}

TEST(Recordset, BookmarkSurvivesAFilterChange) {
    auto rs = People();
    rs->Move(2, Variant(int32_t{1}));
    Variant mark = rs->Bookmark();
    rs->Filter(Variant(u"name = 'dora'"));
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    // The marked row is out of view under this filter.
    EXPECT_EQ(FailureNumber([&] { rs->Bookmark(mark); }), err::AdoArguments);
    rs->Filter(Variant(int32_t{0}));
    rs->Bookmark(mark);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Cid");

    rs->Sort(u"name DESC");
    rs->Bookmark(mark);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Cid");
    EXPECT_EQ(FailureNumber([&] { rs->Bookmark(Variant(99.0)); }), err::AdoArguments);
}

TEST(Recordset, SortAscendingDescendingAndOnSeveralFields) {
    auto rs = People();
    rs->Sort(u"name");
    EXPECT_EQ(Names(*rs), u"Ann;bob;Cid;dora;"); // text sorts without regard to case
    rs->Sort(u"name DESC");
    EXPECT_EQ(Names(*rs), u"dora;Cid;bob;Ann;");
    rs->Sort(u"age ASC, name DESC");
    EXPECT_EQ(Names(*rs), u"dora;bob;Ann;Cid;");
    rs->Sort(u"city");
    EXPECT_EQ(Names(*rs).substr(0, 4), u"Cid;"); // null first
    rs->Filter(Variant(u"age = 25"));
    rs->Sort(u"[name] desc");
    EXPECT_EQ(Names(*rs), u"dora;bob;");
    EXPECT_EQ(FailureNumber([&] { rs->Sort(u"nosuch"); }), err::AdoArguments);
    EXPECT_EQ(rs->Sort(), u"[name] desc");
    EXPECT_EQ(Names(*rs), u"dora;bob;");
    rs->Sort(u"");
    rs->Filter(Variant(int32_t{0}));
    EXPECT_EQ(Names(*rs), u"Ann;bob;Cid;dora;");
}

TEST(Recordset, FindMovesToTheNextMatch) {
    auto rs = People();
    rs->Find(u"age = 25");
    EXPECT_EQ(rs->Value(u"name").ToString(), u"bob");
    rs->Find(u"age = 25"); // the current row counts
    EXPECT_EQ(rs->Value(u"name").ToString(), u"bob");
    rs->Find(u"age = 25", 1);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    rs->Find(u"name = 'ANN'", 0, -1);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Ann");
    rs->Find(u"name LIKE 'c*'");
    EXPECT_EQ(rs->Value(u"name").ToString(), u"Cid");
    rs->Find(u"age > 100");
    EXPECT_TRUE(rs->Eof());
    EXPECT_EQ(FailureNumber([&] { rs->Find(u"age = 25"); }), err::AdoNoCurrentRecord);
    rs->MoveLast();
    rs->Find(u"age > 100", 0, -1);
    EXPECT_TRUE(rs->Bof());
    rs->MoveFirst();
    EXPECT_EQ(FailureNumber([&] { rs->Find(u"age = 25 AND name = 'bob'"); }), err::AdoArguments);
}

TEST(Recordset, GetStringDumpsTheRowsInView) {
    auto rs = People();
    EXPECT_EQ(rs->GetString(adClipString, -1, u",", u";", u""),
              u"Ann,31,Oslo;bob,25,Rome;Cid,40,;dora,25,oslo;");
    EXPECT_TRUE(rs->Eof());
    rs->MoveFirst();
    rs->MoveNext();
    EXPECT_EQ(rs->GetString(adClipString, 2, u"|", u"\r\n", u"(null)"), u"bob|25|Rome\r\nCid|40|(null)\r\n");
    EXPECT_EQ(rs->Value(u"name").ToString(), u"dora");
    rs->Filter(Variant(u"city = 'oslo'"));
    EXPECT_EQ(rs->GetString(adClipString, -1, u",", u";", u""), u"Ann,31,Oslo;dora,25,oslo;");
    EXPECT_EQ(FailureNumber([&] { rs->GetString(); }), err::AdoNoCurrentRecord);
}

TEST(Recordset, AddNewUpdateAndCancel) {
    auto rs = People();
    rs->Move(1, Variant(int32_t{1}));
    rs->AddNew();
    EXPECT_TRUE(rs->Value(u"name").IsNull()); // the cursor is on the new row
    rs->Value(u"name", Variant(u"eve"));
    rs->Cancel();
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(rs->Value(u"name").ToString(), u"bob"); // back where it stood before AddNew
    rs->Cancel(); // nothing pending: nothing happens
    EXPECT_EQ(rs->RecordCount(), 4);

    rs->AddNew();
    rs->Value(u"name", Variant(u"eve"));
    rs->AddNew(); // the pending row is made final first
    rs->Value(u"name", Variant(u"fay"));
    rs->Update();
    rs->Cancel(); // after Update there is nothing to drop
    EXPECT_EQ(rs->RecordCount(), 6);
    EXPECT_EQ(Names(*rs), u"Ann;bob;Cid;dora;eve;fay;");

    // A row added under a filter stays in view until the filter is set again.
    rs->Filter(Variant(u"age = 25"));
    rs->AddNew();
    rs->Value(u"name", Variant(u"gus"));
    rs->Update();
    EXPECT_EQ(Names(*rs), u"bob;dora;gus;");
    rs->Filter(Variant(u"age = 25"));
    EXPECT_EQ(Names(*rs), u"bob;dora;");
}

TEST(Recordset, RowFeedFillsOnDemand) {
    auto rs = NewRowset({{u"n", adType::Integer, 0}});
    int32_t next = 0;
    RowsetFeed::SetRowFeed(*rs,
        [&](size_t) {
            if (next == 5) return false;
            RowsetFeed::AppendRow(*rs, {Variant(next++)});
            return true;
        },
        adStateFetching);
    EXPECT_EQ(rs->State(), adStateOpen | adStateFetching);
    EXPECT_FALSE(rs->Eof());
    EXPECT_EQ(rs->Value(u"n").ToLong(), 0);
    EXPECT_LT(next, 5); // only what was asked for has been fetched
    EXPECT_EQ(rs->RecordCount(), 5);
    EXPECT_EQ(rs->State(), adStateOpen);
}
