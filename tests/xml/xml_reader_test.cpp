// The XML schema reader over hand-written catalog files.
#include "platform/xml/dom.hpp"
#include "readers/xml_reader.hpp"
#include "sessions/session_factory.hpp"
#include "xml_fixture.hpp"
#include "zolsdk/readers/reader.hpp"

namespace zolsdk {
namespace {

using namespace xmltest;

const std::string kShop = R"(<?xml version="1.0" encoding="utf-8"?>
<schema><catalog>
  <tables>
    <table table_name="customers" type="TABLE"/>
    <table table_name="orders" type="VIEW"/>
  </tables>
  <columns>
    <column table_name="orders" column_name="total" ordinal_position="3" data_type="13" column_hasdefault="0"
            column_default="" numeric_precision="19" numeric_scale="2" character_maximum_length="" is_nullable="1"/>
    <column table_name="orders" column_name="id" ordinal_position="1" data_type="3" column_hasdefault="0"
            column_default="" numeric_precision="10" numeric_scale="" character_maximum_length="" is_nullable="1"/>
    <column table_name="orders" column_name="note" ordinal_position="2" data_type="202" column_hasdefault="1"
            column_default="n/a" numeric_precision="" numeric_scale="" character_maximum_length="50" is_nullable=""/>
    <column table_name="customers" column_name="name" ordinal_position="1" data_type="202" column_hasdefault="0"
            column_default="" numeric_precision="" numeric_scale="" character_maximum_length="80" is_nullable="0"/>
    <column table_name="broken" column_name="a" ordinal_position="1" data_type="3" column_hasdefault="0"
            numeric_precision="10" numeric_scale="0" character_maximum_length="" is_nullable="1"/>
    <column table_name="sizeless" column_name="a" ordinal_position="1" data_type="3" column_hasdefault="0"
            column_default="" numeric_precision="ten" numeric_scale="0" character_maximum_length="" is_nullable="1"/>
  </columns>
  <indexes>
    <index table_name="orders" index_name="pk_orders" primary_key="1" unique="1">
      <index_name>pk_orders</index_name>
      <idx_column column_name="note" ordinal_position="2" collation="2"/>
      <idx_column column_name="id" ordinal_position="1" collation="1"/>
    </index>
    <index table_name="orders" index_name="ix_total" primary_key="0" unique="0">
      <idx_column column_name="total" ordinal_position="1" collation="1"/>
    </index>
  </indexes>
  <keys>
    <key table_name="orders" pk_table_name="customers" fk_table_name="orders" fk_column_name="cust"
         ordinal="1" update_rule="CASCADE" delete_rule="NO ACTION" pk_name="pk_c" fk_name="fk_o"/>
    <key table_name="legacy" pk_table_name="customers" fk_table_name="legacy" fk_column_name="cust"
         update_rule="" delete_rule="" pk_name="pk_c" fk_name="fk_l"><ordinal>1</ordinal></key>
  </keys>
</catalog></schema>
)";

struct Shop {
    TempDir dir;
    std::string file = dir.File("shop.xml");
    Ref<IDBSession> session = NewDbMsXML();
    Ref<IDBReader> reader;
    Shop() {
        WriteFile(file, kShop);
        session->Connect(u"dbname=shop.xml;dblocation=" + dir.Location());
        reader = session->DbReader();
    }
};

std::vector<String> Column(ado::Recordset& rs, StringView field) {
    std::vector<String> out;
    if (rs.RecordCount() == 0) return out;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) out.push_back(rs.Value(field).ToString());
    return out;
}

TEST(XmlReader, TablesAreKeptUntilRefresh) {
    Shop shop;
    Ref<ado::Recordset> t = shop.reader->Tables();
    EXPECT_EQ(Column(*t, u"table_name"), (std::vector<String>{u"customers", u"orders"}));
    // The file's own type is not read.
    EXPECT_EQ(Column(*t, u"type"), (std::vector<String>{u"TABLE", u"TABLE"}));

    WriteFile(shop.file, "<schema><catalog><tables><table table_name=\"x\"/></tables></catalog></schema>");
    EXPECT_EQ(Column(*shop.reader->Tables(), u"table_name"), (std::vector<String>{u"customers", u"orders"}));
    EXPECT_TRUE(shop.reader->Refresh().IsEmpty());
    EXPECT_EQ(Column(*shop.reader->Tables(), u"table_name"), (std::vector<String>{u"x"}));

    // A new database has no tables, and that is no failure.
    Shop fresh;
    std::filesystem::remove(fresh.file);
    ASSERT_TRUE(fresh.session->CreateDB());
    Ref<ado::Recordset> none = fresh.reader->Tables();
    EXPECT_EQ(none->RecordCount(), 0);
    EXPECT_TRUE(none->Eof() && none->Bof());
    EXPECT_EQ(none->Fields().Count(), 2);
}

TEST(XmlReader, ColumnsWithDefaultsAndThePrimaryKeyRule) {
    Shop shop;
    Ref<ado::Recordset> c = shop.reader->TableColumns(u"orders");
    ASSERT_EQ(c->RecordCount(), 3);
    EXPECT_EQ(Column(*c, u"column_name"), (std::vector<String>{u"id", u"note", u"total"}));
    EXPECT_EQ(Column(*c, u"table_name"), (std::vector<String>{u"orders", u"orders", u"orders"}));
    // The file's data_type stands for the group as well.
    EXPECT_EQ(Column(*c, u"data_type"), (std::vector<String>{u"3", u"202", u"13"}));
    EXPECT_EQ(Column(*c, u"data_type_group"), (std::vector<String>{u"3", u"202", u"13"}));
    EXPECT_EQ(Column(*c, u"numeric_precision"), (std::vector<String>{u"10", u"0", u"19"}));
    // Group 13 always has scale 4, whatever the file says.
    EXPECT_EQ(Column(*c, u"numeric_scale"), (std::vector<String>{u"0", u"0", u"4"}));
    EXPECT_EQ(Column(*c, u"character_maximum_length"), (std::vector<String>{u"0", u"50", u"0"}));
    EXPECT_EQ(Column(*c, u"column_default"), (std::vector<String>{u"", u"n/a", u""}));
    EXPECT_EQ(Column(*c, u"has_default"), (std::vector<String>{u"False", u"True", u"False"}));
    // id and note form the primary key: never nullable, whatever the file
    // says; total keeps the file's answer.
    EXPECT_EQ(Column(*c, u"is_nullable"), (std::vector<String>{u"False", u"False", u"True"}));
    c->MoveFirst();
    EXPECT_EQ(c->Value(u"ordinal_position").Type(), VarType::Long);

    Ref<ado::Recordset> cust = shop.reader->TableColumns(u"customers");
    EXPECT_EQ(Column(*cust, u"is_nullable"), (std::vector<String>{u"False"}));
    EXPECT_EQ(shop.reader->TableColumns(u"nothing")->RecordCount(), 0);

    // A missing attribute is the unset object, under this routine's literal
    // with its leading blank; an empty one would have taken the default.
    DbError missing = FailureOf([&] { shop.reader->TableColumns(u"broken"); });
    EXPECT_EQ(missing.Number(), err::ObjectNotSet);
    EXPECT_EQ(missing.Description(), u"Object variable or With block variable not set");
    EXPECT_EQ(Chain(missing.Source()),
              (std::vector<String>{u"zolsdk", u" DbMsXMLReader:IDBReader_TableColumns Ln "}));
    // The size must be a number even though nothing keeps it.
    EXPECT_EQ(FailureOf([&] { shop.reader->TableColumns(u"sizeless"); }).Number(), err::TypeMismatch);
    // A name that breaks the expression fails in the selection.
    DbError quote = FailureOf([&] { shop.reader->TableColumns(u"or\"ders"); });
    EXPECT_EQ(quote.Number(), xml::kDomFailure);
    EXPECT_EQ(Chain(quote.Source()),
              (std::vector<String>{String(xml::kDomSource), u" DbMsXMLReader:IDBReader_TableColumns Ln "}));
}

TEST(XmlReader, IndexesIndexColumnsAndKeys) {
    Shop shop;
    Ref<ado::Recordset> ix = shop.reader->Indexes(u"orders");
    EXPECT_EQ(Column(*ix, u"index_name"), (std::vector<String>{u"pk_orders", u"ix_total"}));
    EXPECT_EQ(Column(*ix, u"table_name"), (std::vector<String>{u"orders", u"orders"}));
    EXPECT_EQ(Column(*ix, u"primary_key"), (std::vector<String>{u"True", u"False"}));
    EXPECT_EQ(Column(*ix, u"Unique"), (std::vector<String>{u"True", u"False"}));
    EXPECT_EQ(shop.reader->Indexes(u"customers")->RecordCount(), 0);

    Ref<ado::Recordset> pk = shop.reader->IndexColumns(u"pk_orders", u"orders");
    EXPECT_EQ(Column(*pk, u"column_name"), (std::vector<String>{u"id", u"note"}));
    EXPECT_EQ(Column(*pk, u"sort_order"), (std::vector<String>{u"1", u"2"}));
    EXPECT_EQ(Column(*pk, u"index_name"), (std::vector<String>{u"pk_orders", u"pk_orders"}));
    // The index name is matched as a child element: one that carries it only
    // as an attribute has no columns to report.
    EXPECT_EQ(shop.reader->IndexColumns(u"ix_total", u"orders")->RecordCount(), 0);

    // ordinal is a child test too: the ordinary key gives no rows, and one
    // that matches fails on its nameless pk_column_name.
    Ref<ado::Recordset> keys = shop.reader->Keys(u"orders");
    EXPECT_EQ(keys->RecordCount(), 0);
    EXPECT_EQ(keys->Fields().Count(), 9);
    DbError legacy = FailureOf([&] { shop.reader->Keys(u"legacy"); });
    EXPECT_EQ(legacy.Number(), err::ObjectNotSet);
    EXPECT_EQ(Chain(legacy.Source()), (std::vector<String>{u"zolsdk", u"DbMsXMLReader:IDBReader_Keys Ln "}));
}

TEST(XmlReader, ReadsTheSavedFileAndNeedsItsSession) {
    Shop shop;
    // The session's pending mark does not reach the reader: it loads the file.
    shop.session->BeginTransaction();
    shop.session->ExecuteNoQuery(u"<sql />");
    WriteFile(shop.file, "<schema><catalog><tables><table table_name=\"t\"/></tables></catalog></schema>");
    EXPECT_EQ(Column(*shop.reader->Tables(), u"table_name"), (std::vector<String>{u"t"}));
    shop.session->RollbackTransaction();

    // A missing file reads as empty.
    std::filesystem::remove(shop.file);
    EXPECT_EQ(shop.reader->Indexes(u"orders")->RecordCount(), 0);

    auto orphan = Ref<DbMsXMLReader>::New();
    DbError e = FailureOf([&] { orphan->Tables(); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Description(), u"ErrNo:91\r\n Details:Object variable or With block variable not set (DBSession).");
    EXPECT_EQ(Chain(e.Source()), (std::vector<String>{u"zolsdk", u"DbMsXMLReader:OpenConection Ln ",
                                                       u"DbMsXMLReader:IDBReader_Tables Ln "}));
    DbError c = FailureOf([&] { orphan->TableColumns(u"orders"); });
    EXPECT_EQ(c.Number(), err::ObjectNotSet);
    const String tail = u" (DBSession).";
    ASSERT_GE(c.Description().size(), tail.size());
    EXPECT_EQ(c.Description().substr(c.Description().size() - tail.size()), tail);

    // When the session ends, the reader it handed out is an orphan too.
    Ref<IDBReader> kept = shop.reader;
    shop.reader.Release();
    shop.session.Release();
    EXPECT_EQ(FailureOf([&] { kept->Indexes(u"orders"); }).Number(), err::ObjectNotSet);
}

} // namespace
} // namespace zolsdk
