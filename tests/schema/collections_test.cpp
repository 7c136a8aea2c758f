#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "common/temp_dir.hpp"
#include "schema/shop_schema.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace {

using zoltest::Failure;
struct Shop {
    zoltest::TempDir dir;
    Ref<DbCatalog> cat = Ref<DbCatalog>::New();
    Shop() {
        dir.Write("shop.xml", kShopSchema);
        cat->Init(dir.XmlAttrs("shop.xml"));
    }
};
} // namespace

TEST(SchemaCollections, TablesAreFoundByNameCaseBlindOrByPositionFromZero) {
    Shop s;
    auto tables = s.cat->Tables();
    ASSERT_EQ(tables->Count(), 3);

    std::vector<String> names;
    for (auto t : tables) names.push_back(t->TableName());
    EXPECT_EQ(names, (std::vector<String>{u"Orders", u"Customers", u"Notes"}));

    // The table bears the name as the schema spells it.
    Ref<DbTable> orders = tables->Item(Variant(u"ORDERS"));
    ASSERT_TRUE(orders);
    EXPECT_EQ(orders->TableName(), u"Orders");
    EXPECT_EQ(orders->GetString(u","), u"Orders");
    EXPECT_EQ(tables->Item(Variant(int32_t{0}))->TableName(), u"Orders");
    EXPECT_EQ(tables->Item(Variant(int32_t{2}))->TableName(), u"Notes");
    EXPECT_FALSE(tables->Item(Variant(tables->Count())));
    EXPECT_FALSE(tables->Item(Variant(u"nosuch")));
    EXPECT_TRUE(tables->Exist(Variant(u"customers")));
    EXPECT_FALSE(tables->Exist(Variant(u"nosuch")));

    // Every field of every row, one ";" between rows and none at the end.
    EXPECT_EQ(tables->GetString(u",", u";"), u"Orders,TABLE;Customers,TABLE;Notes,TABLE");
    // Only one character is cut, whatever the delimiter: a CR stays.
    EXPECT_EQ(tables->GetString(u",", u"\r\n"), u"Orders,TABLE\r\nCustomers,TABLE\r\nNotes,TABLE\r");

    // Two calls give two collections.
    EXPECT_FALSE(s.cat->Tables() == tables);
}

TEST(SchemaCollections, ItemDuringAnEnumerationLeavesItsPlace) {
    Shop s;
    auto tables = s.cat->Tables();
    Variant v;
    ASSERT_EQ(tables->Reset(), 1);
    ASSERT_EQ(tables->GetNext(v), 0);
    EXPECT_EQ(v.As<DbTable>()->TableName(), u"Orders");
    Ref<DbTable> shared = v.As<DbTable>();
    // A look-up by name in the middle of the walk...
    EXPECT_EQ(tables->Item(Variant(u"notes"))->TableName(), u"Notes");
    // ...and the walk goes on where it was, refilling the same item object.
    ASSERT_EQ(tables->GetNext(v), 0);
    EXPECT_EQ(v.As<DbTable>()->TableName(), u"Customers");
    EXPECT_TRUE(v.As<DbTable>() == shared);
    EXPECT_EQ(shared->TableName(), u"Customers");
    ASSERT_EQ(tables->GetNext(v), 0);
    EXPECT_EQ(tables->GetNext(v), -1);
    EXPECT_EQ(v.ToLong(), 0);
}

TEST(SchemaCollections, ColumnsInOrdinalOrderWithThePrimaryKeyNotNullable) {
    Shop s;
    Ref<DbTable> orders = s.cat->Tables()->Item(Variant(u"Orders"));
    std::vector<String> rows;
    for (auto c : orders->Columns()) rows.push_back(c->GetString(u"|"));
    ASSERT_EQ(rows.size(), 4u);
    // The file calls id nullable; as a key column it is reported not nullable.
    EXPECT_EQ(rows[0], u"Orders|id|1|3|3|0||10|0|0|0");
    EXPECT_EQ(rows[1], u"Orders|customer|2|1|1|0||0|0|40|-1");
    EXPECT_EQ(rows[2], u"Orders|placed|3|7|7|-1|now|0|0|0|0");
    // Currency gets scale 4; an empty nullable flag means nullable.
    EXPECT_EQ(rows[3], u"Orders|total|4|13|13|0||19|4|0|-1");

    Ref<DbColumn> customer = orders->Columns()->Item(Variant(u"CUSTOMER"));
    ASSERT_TRUE(customer);
    EXPECT_EQ(customer->ColumnName(), u"customer");
    EXPECT_EQ(customer->IsNullable(), -1);
    EXPECT_NE(customer->IsNullable(), 1);
    EXPECT_EQ(customer->MaxCharLength(), 40);
    EXPECT_EQ(orders->Columns()->Item(Variant(int32_t{3}))->ColumnName(), u"total");
}

TEST(SchemaCollections, IndexesAndTheirColumns) {
    Shop s;
    Ref<DbTable> orders = s.cat->Tables()->Item(Variant(u"Orders"));
    auto indexes = orders->Indexes();
    ASSERT_EQ(indexes->Count(), 2);
    Ref<DbIndex> pk = indexes->Item(Variant(u"pk_orders"));
    ASSERT_TRUE(pk);
    EXPECT_TRUE(pk->PrimaryKey());
    EXPECT_EQ(pk->GetString(u","), u"Orders,PK_Orders,-1,-1");
    EXPECT_EQ(indexes->Item(Variant(u"ix_customer"))->GetString(u","), u"Orders,ix_customer,0,0");

    // Index columns come sorted by their place in the index.
    std::vector<String> cols;
    for (auto c : indexes->Item(Variant(u"ix_customer"))->Columns()) cols.push_back(c->GetString(u","));
    EXPECT_EQ(cols, (std::vector<String>{u"Orders,ix_customer,customer,1,1", u"Orders,ix_customer,placed,2,2"}));

    // A table without indexes.
    auto none = s.cat->Tables()->Item(Variant(u"Customers"))->Indexes();
    EXPECT_EQ(none->Count(), 0);
    EXPECT_FALSE(none->Exist(Variant(u"PK_Orders")));
    EXPECT_EQ(none->GetString(u",", u";"), u"");
    EXPECT_EQ(none->Reset(), -1);
    int walked = 0;
    for (auto i : none) { (void)i; ++walked; }
    EXPECT_EQ(walked, 0);
}

TEST(SchemaCollections, MalformedKeysAndOverlongSkipsFailThroughTheChain) {
    Shop s;
    auto tables = s.cat->Tables();
    // An apostrophe breaks the filter: not "no such item" but a failure, so
    // Exist passes it on as well.
    DbError e = Failure([&] { tables->Item(Variant(u"O'Brien")); });
    EXPECT_NE(e.Source().find(u"DbTables:Item Ln"), String::npos);
    e = Failure([&] { tables->Exist(Variant(u"O'Brien")); });
    EXPECT_NE(e.Source().find(u" => \r\nDbTables:Exist Ln "), String::npos);

    // Skip runs to the end; a count beyond the rows fails at the end.
    tables->Reset();
    EXPECT_EQ(tables->Skip(0), -1);
    tables->Reset();
    e = Failure([&] { tables->Skip(5); });
    EXPECT_NE(e.Source().find(u"DbTables:IVBEnumerable_Skip Ln "), String::npos);
}

TEST(SchemaCollections, EmptySchemaAndMissingFile) {
    zoltest::TempDir dir;
    auto cat = Ref<DbCatalog>::New();
    cat->Init(dir.XmlAttrs("new.xml"));
    ASSERT_TRUE(cat->Create());
    auto tables = cat->Tables();
    EXPECT_EQ(tables->Count(), 0);
    EXPECT_FALSE(tables->Item(Variant(u"x")));
    EXPECT_FALSE(tables->Exist(Variant(int32_t{0})));
    EXPECT_EQ(tables->GetString(u",", u";"), u"");
    EXPECT_EQ(tables->Reset(), -1);
    Variant v;
    EXPECT_EQ(tables->GetNext(v), -1);
    EXPECT_EQ(v.ToLong(), 0);

    // A second Create fails, with the chain of both routines.
    DbError e = Failure([&] { cat->Create(); });
    EXPECT_EQ(e.Number(), static_cast<int32_t>(0x8004F000));
    EXPECT_EQ(e.Description(),
              u"You do not have the privilege to create database or the database already exists.");
    EXPECT_EQ(e.Source().find(u"ZolSDK => \r\nDbMsXML:CreateDB Ln "), 0u);
    EXPECT_NE(e.Source().find(u" => \r\nDbCatalog:Create Ln "), String::npos);
    EXPECT_TRUE(cat->Drop());
    EXPECT_TRUE(cat->Drop());
}
