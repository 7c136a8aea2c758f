#include <gtest/gtest.h>

#include "mapping/mapped_value_string.hpp"
#include "mapping/mapping_fixture.hpp"
#include "zolsdk/data/blob.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

namespace {
Ref<DbDataRow> SourceRow() {
    auto row = Ref<DbDataRow>::New();
    row->Init(u"03id,01name,05born,02notes,10photo");
    row->LetItem(Variant(u"name"), Variant(u"Smith, J."));
    // id stays null: its cell reads as 0.
    auto notes = Ref<DbBlob>::New();
    notes->text(u"x,y");
    row->SetItem(Variant(u"notes"), Variant(notes));
    return row;
}

Ref<DbMap> MapOfType(int32_t type, const Ref<DbColumn>& target) {
    auto m = Ref<DbMap>::New();
    m->MapType(static_cast<MapTypeEnum>(type));
    m->MapFrom(target);
    return m;
}
} // namespace

TEST(MappedValueString, ConstantsAndExpressionsRenderByTheTargetGroup) {
    auto map = Ref<DbColumnMap>::New();
    map->AddConstantMap(Column(u"label", dtVarChar), Variant(u"a,b"));
    map->AddConstantMap(Column(u"empty", dtVarChar), Variant());
    map->AddConstantMap(Column(u"nothing", dtInteger), Variant::Null());
    map->AddExpressionMap(Column(u"total", dtInteger),
                          Expression(oAdd, {Constant(Variant(int32_t{2})), Constant(Variant(int32_t{3}))}));
    map->AddExpressionMap(Column(u"stamp", dtDateTime),
                          Expression(oAdd, {Constant(Variant::FromDate(DateSerial(2026, 11, 15))),
                                            Constant(Variant(0.75))}));
    // A constant is coerced to the target's group.
    map->AddConstantMap(Column(u"amount", dtDouble), Variant(u"12"));
    EXPECT_EQ(MappedValueString(SourceRow(), map, u",", u"?"), u"a%2Cb,NULL,NULL,5,20261115T000000,12");
    EXPECT_EQ(MappedValueString(SourceRow(), map, u"|", u"?"), u"a,b|NULL|NULL|5|20261115T000000|12");
}

TEST(MappedValueString, ColumnMapsReadTheRowAndBlobsTakeTheSubstitute) {
    auto map = Ref<DbColumnMap>::New();
    map->AddColumnMap(Column(u"who", dtVarChar), Column(u"name", dtVarChar));
    map->AddColumnMap(Column(u"code", dtInteger), Column(u"id", dtInteger));
    map->AddColumnMap(Column(u"memo", dtCharBLOB), Column(u"notes", dtCharBLOB));
    map->AddColumnMap(Column(u"picture", dtBinaryBLOB), Column(u"photo", dtBinaryBLOB));
    EXPECT_EQ(MappedValueString(SourceRow(), map, u",", u"?"), u"Smith%2C J.,0,?,?");
    // "=" puts text blobs inline; a binary blob writes the mark itself.
    EXPECT_EQ(MappedValueString(SourceRow(), map, u",", u"="), u"Smith%2C J.,0,x%2Cy,=");

    // An empty text blob cell is still an object: inline it is empty text.
    auto bare = Ref<DbDataRow>::New();
    bare->Init(u"03id,01name,05born,02notes,10photo");
    EXPECT_EQ(MappedValueString(bare, map, u",", u"="), u",0,,=");

    auto missing = Ref<DbColumnMap>::New();
    missing->AddColumnMap(Column(u"who", dtVarChar), Column(u"surname", dtVarChar));
    auto failure = Failure([&] { MappedValueString(SourceRow(), missing, u",", u"?"); });
    EXPECT_EQ(failure.Number(), err::InvalidCall);
    EXPECT_TRUE(HasTrace(failure, u"basUtility:MappedValueString Ln "));
}

TEST(MappedValueString, MapsOfNoKnownKindRepeatThePreviousValue) {
    auto first = Ref<DbColumnMap>::New();
    first->AddMap(MapOfType(mtFunction, Column(u"f", dtVarChar)));
    EXPECT_EQ(MappedValueString(SourceRow(), first, u",", u"?"), u"NULL");

    auto onBlob = Ref<DbColumnMap>::New();
    onBlob->AddMap(MapOfType(mtFunction, Column(u"f", dtCharBLOB)));
    EXPECT_EQ(MappedValueString(SourceRow(), onBlob, u",", u"?"), u"?");
    EXPECT_EQ(MappedValueString(SourceRow(), onBlob, u",", u"="), u"NULL");

    auto after = Ref<DbColumnMap>::New();
    after->AddConstantMap(Column(u"c", dtVarChar), Variant(u"k,v"));
    after->AddMap(MapOfType(mtFunction, Column(u"f", dtVarChar)));
    after->AddMap(MapOfType(0x102, Column(u"g", dtVarChar)));
    after->AddMap(MapOfType(2, Column(u"h", dtVarChar)));
    // The value keeps the constant's group too: 0.5 read as text by a
    // target of group 1, then repeated under a date target.
    after->AddConstantMap(Column(u"half", dtVarChar), Variant(0.5));
    after->AddMap(MapOfType(mtFunction, Column(u"when", dtDateTime)));
    EXPECT_EQ(MappedValueString(SourceRow(), after, u",", u"?"), u"k%2Cv,k%2Cv,k%2Cv,k%2Cv,0.5,0.5");
}

TEST(MappedValueString, EmptyMapFailsInTheTextBuffer) {
    auto failure = Failure([] { MappedValueString(SourceRow(), Ref<DbColumnMap>::New(), u",", u"?"); });
    EXPECT_EQ(failure.Description(), u"Argument(s) out of range.");
    EXPECT_TRUE(HasTrace(failure, u"basUtility:MappedValueString Ln "));
}
