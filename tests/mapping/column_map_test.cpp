#include <gtest/gtest.h>

#include "mapping/mapping_fixture.hpp"
#include "zolsdk/data/blob.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

TEST(ColumnMap, OneMapPerTargetColumnWithPositionsInOrder) {
    auto map = Ref<DbColumnMap>::New();
    auto name = Column(u"name", dtVarChar);
    map->AddColumnMap(name, Column(u"full_name", dtVarChar));
    auto dup = Failure([&] { map->AddColumnMap(name, Column(u"other", dtVarChar)); });
    EXPECT_EQ(dup.Number(), err::DuplicateKey);
    EXPECT_TRUE(HasTrace(dup, u"DbColumnMap:AddColumnMap Ln "));
    EXPECT_EQ(map->Count(), 1);

    map->AddConstantMap(Column(u"origin", dtVarChar), Variant(u"import"));
    map->AddExpressionMap(Column(u"total", dtInteger), Ref<DbMapExpression>::New());
    auto own = Ref<DbMap>::New();
    own->MapType(mtConstant);
    own->MapFrom(Column(u"note", dtVarChar));
    own->Position(7);
    map->AddMap(own);

    std::vector<int32_t> positions;
    for (const Ref<DbMap>& m : map) positions.push_back(m->Position());
    EXPECT_EQ(positions, (std::vector<int32_t>{1, 2, 3, 7}));

    // Without its target column a map has no key to go under.
    auto bare = Failure([&] { map->AddMap(Ref<DbMap>::New()); });
    EXPECT_EQ(bare.Number(), err::ObjectNotSet);
    EXPECT_TRUE(HasTrace(bare, u"DbColumnMap:AddMap Ln "));
    EXPECT_EQ(map->Count(), 4);
}

TEST(ColumnMap, LookupByPositionOrNameAndExist) {
    auto map = Ref<DbColumnMap>::New();
    map->AddColumnMap(Column(u"id", dtInteger), Column(u"code", dtInteger));
    map->AddColumnMap(Column(u"name", dtVarChar), Column(u"title", dtVarChar));

    EXPECT_EQ(map->Item(Variant(int32_t{1})).get(), map->Item(Variant(u"id")).get());
    EXPECT_EQ(map->Item(Variant(int32_t{2}))->MapFrom()->ColumnName(), u"name");
    EXPECT_TRUE(map->Exist(Variant(u"name")));
    EXPECT_FALSE(map->Exist(Variant(u"missing")));
    EXPECT_FALSE(map->Exist(Variant(int32_t{3})));

    auto unknown = Failure([&] { map->Item(Variant(u"missing")); });
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    // This one literal has no blank before the number.
    EXPECT_TRUE(HasTrace(unknown, u"DbColumnMap:Item Ln"));
    EXPECT_FALSE(HasTrace(unknown, u"DbColumnMap:Item Ln "));
    EXPECT_EQ(Failure([&] { map->Item(Variant(int32_t{0})); }).Number(), err::SubscriptOutOfRange);

    // Only "no such item" is an answer; a key that is no key at all fails.
    auto bad = Failure([&] { map->Exist(Variant::Null()); });
    EXPECT_EQ(bad.Number(), err::InvalidUseOfNull);
    EXPECT_TRUE(HasTrace(bad, u"DbColumnMap:Exist Ln "));
}

TEST(ColumnMap, MapTypeGroupAndTargetsByReference) {
    auto m = Ref<DbMap>::New();
    EXPECT_EQ(m->DataTypeGroup(), dtUnknown);
    m->MapFrom(Column(u"born", dtDateTime));
    EXPECT_EQ(m->DataTypeGroup(), dtDateTime);
    // A source of another group does not change how the map renders.
    m->MapTo(Variant(Column(u"born_text", dtVarChar)));
    EXPECT_EQ(m->DataTypeGroup(), dtDateTime);

    m->MapType(mtFunction);
    EXPECT_EQ(m->MapFamily(), 256);
    m->MapType(mtConstant);
    EXPECT_EQ(m->MapFamily(), 0);

    auto map = Ref<DbColumnMap>::New();
    auto blob = Ref<DbBlob>::New();
    blob->text(u"first");
    map->AddConstantMap(Column(u"notes", dtCharBLOB), Variant(blob));
    auto held = map->Item(Variant(u"notes"))->MapTo().As<DbBlob>();
    EXPECT_EQ(held.get(), blob.get());
    blob->text(u"changed later");
    EXPECT_EQ(held->text(), u"changed later");
}
