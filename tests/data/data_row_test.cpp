// One row as a typed buffer: null marks, values of every type group in and
// out, blob cells, the record text with both substitute marks, positions,
// and rows without columns.
#include "data/data_fixture.hpp"
#include "zolsdk/platform/datetime.hpp"

namespace zolsdk::datatest {
namespace {

const String kEveryGroup =
    u"01s,02memo,03i,04u,05d,06tm,07dt,08b,09dbl,10pic,11sng,12dec,13cur";

Ref<DbDataRow> Row(const String& columnSet) {
    auto r = Ref<DbDataRow>::New();
    r->Init(columnSet);
    return r;
}

TEST(DataRow, NewRowsAreNullAndReadAsResetValues) {
    Ref<DbDataRow> r = Row(kEveryGroup);
    EXPECT_EQ(r->CellCount(), 13);
    EXPECT_TRUE(r->HasBlob());
    EXPECT_FALSE(Row(u"03i,01s")->HasBlob());
    for (const char16_t* name : {u"s", u"memo", u"i", u"u", u"d", u"tm", u"dt", u"b", u"dbl", u"pic", u"sng", u"dec", u"cur"})
        EXPECT_TRUE(r->IsNullValue(Variant(name))) << ToUtf8(name);
    // A null cell reads as its slot's reset value, typed.
    EXPECT_EQ(r->Item(Variant(u"s")).Type(), VarType::String);
    EXPECT_EQ(r->Item(Variant(u"s")).ToString(), u"");
    EXPECT_EQ(r->Item(Variant(u"i")).Type(), VarType::Long);
    EXPECT_EQ(r->Item(Variant(u"dt")).Type(), VarType::Date);
    EXPECT_FALSE(r->Item(Variant(u"b")).ToBoolean());
    EXPECT_TRUE(r->Item(Variant(u"memo")).IsObject()) << "a blob cell gives its (empty) reference";
    EXPECT_FALSE(r->Item(Variant(u"memo")).As<DbBlob>());
    // All null: "NULL" everywhere, the substitute for the blob cells.
    EXPECT_EQ(r->GetString(u",", u"="), u"NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL");
    EXPECT_EQ(r->GetString(u",", u"?"), u"NULL,?,NULL,NULL,NULL,NULL,NULL,NULL,NULL,?,NULL,NULL,NULL");
}

TEST(DataRow, EveryTypeGroupIsConvertedOnLetAndEncodedInTheRecord) {
    Ref<DbDataRow> r = Row(kEveryGroup);
    r->LetItem(Variant(u"s"), Variant(u"a,b%2Cc"));
    r->LetItem(Variant(u"i"), Variant(u"42"));
    r->LetItem(Variant(u"u"), Variant(4000000000.0 / 2));
    r->LetItem(Variant(u"d"), Variant::FromDate(DateSerial(2026, 11, 15)));
    r->LetItem(Variant(u"tm"), Variant::FromDate(TimeSerial(13, 5, 9)));
    r->LetItem(Variant(u"dt"), Variant(u"2024-02-29 23:59:58"));
    r->LetItem(Variant(u"b"), Variant(true));
    r->LetItem(Variant(u"dbl"), Variant(-0.5));
    r->LetItem(Variant(u"sng"), Variant(1.25f));
    Decimal dec;
    ASSERT_TRUE(Decimal::TryParse(u"12345678901234.5678", u'.', dec));
    r->LetItem(Variant(u"dec"), Variant(dec));
    r->LetItem(Variant(u"cur"), Variant(Currency::FromRaw(-123456)));
    EXPECT_EQ(r->Item(Variant(u"i")).Type(), VarType::Long);
    EXPECT_EQ(r->Item(Variant(u"i")).ToLong(), 42);
    EXPECT_EQ(r->Item(Variant(u"u")).ToLong(), 2000000000);
    EXPECT_DOUBLE_EQ(r->Item(Variant(u"dt")).ToDate(), DateSerial(2024, 2, 29) + TimeSerial(23, 59, 58));
    EXPECT_EQ(r->Item(Variant(u"sng")).Type(), VarType::Single);
    EXPECT_EQ(r->Item(Variant(u"dec")).Type(), VarType::Decimal);
    EXPECT_EQ(r->Item(Variant(u"cur")).Type(), VarType::Currency);
    EXPECT_FALSE(r->IsNullValue(Variant(u"cur")));
    // The delimiter and the escape inside text are both escaped.
    EXPECT_EQ(r->GetString(u",", u"="),
              u"a%2Cb%2C%2Cc,NULL,42,2000000000,20261115T000000,18991230T130509,20240229T235958,-1,-0.5,NULL,1.25,"
              u"12345678901234.5678,-12.3456");
    EXPECT_EQ(r->GetString(u";", u"?"),
              u"a,b%2C%2Cc;?;42;2000000000;20261115T000000;18991230T130509;20240229T235958;-1;-0.5;?;1.25;"
              u"12345678901234.5678;-12.3456")
        << "only the delimiter in use is escaped";

    // Null or empty resets the slot and marks the cell null again.
    r->LetItem(Variant(u"d"), Variant());
    EXPECT_TRUE(r->IsNullValue(Variant(u"d")));
    EXPECT_DOUBLE_EQ(r->Item(Variant(u"d")).ToDate(), 0.0);
    r->LetItem(Variant(u"s"), Variant::Null());
    EXPECT_EQ(r->Item(Variant(u"s")).ToString(), u"");
    EXPECT_TRUE(r->IsNullValue(Variant(u"s")));

    // A value that does not convert fails, and leaves the cell as it was.
    EXPECT_EQ(Failure([&] { r->LetItem(Variant(u"i"), Variant(u"forty")); }).Number(), err::TypeMismatch);
    EXPECT_EQ(Failure([&] { r->LetItem(Variant(u"i"), Variant(3e10)); }).Number(), err::Overflow);
    EXPECT_EQ(r->Item(Variant(u"i")).ToLong(), 42);
}

TEST(DataRow, BlobCellsTakeReferencesOnlyThroughSet) {
    Ref<DbDataRow> r = Row(u"03id,02memo,10pic");
    // Let on a blob cell stores nothing, yet marks the cell as holding a value:
    // its record text then fails on the missing blob.
    r->LetItem(Variant(u"memo"), Variant(u"text"));
    EXPECT_FALSE(r->IsNullValue(Variant(u"memo")));
    EXPECT_FALSE(r->Item(Variant(u"memo")).As<DbBlob>());
    DbError missing = Failure([&] { r->GetString(u",", u"="); });
    EXPECT_EQ(missing.Number(), err::ObjectNotSet);
    EXPECT_TRUE(HasTrace(missing, u"DbDataRow:GetString Ln "));

    r->SetItem(Variant(u"memo"), Variant(TextBlob(u"long, text")));
    r->SetItem(Variant(u"pic"), Variant(ByteBlob(Pattern(10, 1))));
    r->LetItem(Variant(u"id"), Variant(int32_t{7}));
    EXPECT_EQ(r->Item(Variant(u"memo")).As<DbBlob>()->text(), u"long, text");
    EXPECT_EQ(r->GetString(u",", u"="), u"7,long%2C text,NULL") << "binary values never stand in the text";
    EXPECT_EQ(r->GetString(u",", u"?"), u"7,?,?");
    EXPECT_EQ(r->GetString(u",", u"<blob>"), u"7,<blob>,<blob>");

    // A null object reference empties a blob cell; on any other cell it does
    // not convert.
    r->SetItem(Variant(u"memo"), Variant(Ref<DbBlob>()));
    EXPECT_TRUE(r->IsNullValue(Variant(u"memo")));
    EXPECT_EQ(r->GetString(u",", u"="), u"7,NULL,NULL");
    DbError notText = Failure([&] { r->SetItem(Variant(u"id"), Variant(Ref<DbBlob>())); });
    EXPECT_TRUE(HasTrace(notText, u"DbDataRow:Item Ln "));
    r->SetItem(Variant(u"pic"), Variant::Null());
    EXPECT_TRUE(r->IsNullValue(Variant(u"pic")));
    EXPECT_FALSE(r->Item(Variant(u"pic")).As<DbBlob>());
}

TEST(DataRow, KeysThatReadAsNumbersArePositions) {
    Ref<DbDataRow> r = Row(u"012,01a,017");
    r->LetItem(Variant(u"2"), Variant(u"by position two"));
    r->LetItem(Variant(int32_t{0}), Variant(u"first"));
    r->LetItem(Variant(u"1e0"), Variant(u"by 1e0"));
    EXPECT_EQ(r->Item(Variant(u"a")).ToString(), u"by 1e0");
    EXPECT_EQ(r->GetString(u",", u"="), u"first,by 1e0,by position two")
        << "the column named 2 stands first; the key 2 reached the third cell";
    // A column named as a number is reached by position alone.
    EXPECT_EQ(Failure([&] { r->Item(Variant(u"7")); }).Number(), err::SubscriptOutOfRange);
    EXPECT_EQ(Failure([&] { r->Item(Variant(int32_t{3})); }).Number(), err::SubscriptOutOfRange);
    EXPECT_EQ(Failure([&] { r->Item(Variant(int32_t{-1})); }).Number(), err::SubscriptOutOfRange);
    DbError unknown = Failure([&] { r->IsNullValue(Variant(u"nosuch")); });
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    EXPECT_TRUE(HasTrace(unknown, u"DbDataRow:GetIndex Ln "));
    EXPECT_EQ(Failure([&] { Row(u"01a,03a"); }).Number(), err::DuplicateKey);
}

TEST(DataRow, RowsWithoutColumnsFailOnEveryUse) {
    Ref<DbDataRow> r = Row(u"");
    EXPECT_EQ(r->CellCount(), 0);
    EXPECT_FALSE(r->HasBlob());
    EXPECT_EQ(Failure([&] { r->Item(Variant(u"a")); }).Number(), err::ObjectNotSet) << "no index to look in";
    EXPECT_EQ(Failure([&] { r->LetItem(Variant(int32_t{0}), Variant(int32_t{1})); }).Number(), err::SubscriptOutOfRange);
    DbError e = Failure([&] { r->GetString(u",", u"="); });
    EXPECT_EQ(e.Number(), err::SubscriptOutOfRange) << "the loop's first pass meets no cell";
    EXPECT_TRUE(HasTrace(e, u"DbDataRow:GetString Ln "));
}

} // namespace
} // namespace zolsdk::datatest
