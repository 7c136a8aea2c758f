// The XML schema reader over a hand-written catalog file.
#include "platform/xml/dom.hpp"
#include "readers/xml_reader.hpp"
#include "sessions/session_factory.hpp"
#include "xml_fixture.hpp"
#include "zolsdk/readers/reader.hpp"

namespace zolsdk {
namespace {

using namespace xmltest;

// Attributes in order: table, column, ordinal, data_type, hasdefault,
// default, precision, scale, max length, nullable.
std::string Col(const char* t, const char* c, const char* ord, const char* type, const char* def, const char* prec,
                const char* scale, const char* len, const char* nullable) {
    return std::string("<column table_name=\"") + t + "\" column_name=\"" + c + "\" ordinal_position=\"" + ord +
           "\" data_type=\"" + type + "\" column_hasdefault=\"" + (*def ? "1" : "0") + "\" column_default=\"" + def +
           "\" numeric_precision=\"" + prec + "\" numeric_scale=\"" + scale + "\" character_maximum_length=\"" + len +
           "\" is_nullable=\"" + nullable + "\"/>";
}

const std::string kShop =
    "<schema><catalog><tables><table table_name=\"customers\"/><table table_name=\"orders\" type=\"VIEW\"/></tables>"
    "<columns>" + Col("orders", "total", "3", "13", "", "19", "2", "", "1") + Col("orders", "id", "1", "3", "", "10", "", "", "1") +
    Col("orders", "note", "2", "202", "n/a", "", "", "50", "") + Col("customers", "name", "1", "202", "", "", "", "80", "0") +
    Col("sizeless", "a", "1", "3", "", "ten", "0", "", "1") +
    "<column table_name=\"broken\" column_name=\"a\" ordinal_position=\"1\" data_type=\"3\" column_hasdefault=\"0\""
    " numeric_precision=\"1\" numeric_scale=\"0\" character_maximum_length=\"\" is_nullable=\"1\"/></columns>"
    "<indexes><index table_name=\"orders\" index_name=\"pk_orders\" primary_key=\"1\" unique=\"1\">"
    "<index_name>pk_orders</index_name><idx_column column_name=\"note\" ordinal_position=\"2\" collation=\"2\"/>"
    "<idx_column column_name=\"id\" ordinal_position=\"1\" collation=\"1\"/></index>"
    "<index table_name=\"orders\" index_name=\"ix_total\" primary_key=\"0\" unique=\"0\">"
    "<idx_column column_name=\"total\" ordinal_position=\"1\" collation=\"1\"/></index></indexes>"
    "<keys><key table_name=\"orders\" ordinal=\"1\" pk_table_name=\"customers\"/>"
    "<key table_name=\"legacy\" pk_table_name=\"customers\"><ordinal>1</ordinal></key></keys></catalog></schema>";

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

Texts Column(const Ref<ado::Recordset>& rs, StringView field) {
    Texts out;
    if (rs->RecordCount() > 0)
        for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) out.push_back(rs->Value(field).ToString());
    return out;
}

TEST(XmlReader, TablesAreKeptUntilRefresh) {
    Shop shop;
    EXPECT_EQ(Column(shop.reader->Tables(), u"table_name"), (Texts{u"customers", u"orders"}));
    EXPECT_EQ(Column(shop.reader->Tables(), u"type"), (Texts{u"TABLE", u"TABLE"}));  // the file's type is not read
    WriteFile(shop.file, "<schema><catalog><tables><table table_name=\"x\"/></tables></catalog></schema>");
    EXPECT_EQ(Column(shop.reader->Tables(), u"table_name"), (Texts{u"customers", u"orders"}));
    EXPECT_TRUE(shop.reader->Refresh().IsEmpty());
    EXPECT_EQ(Column(shop.reader->Tables(), u"table_name"), (Texts{u"x"}));

    std::filesystem::remove(shop.file);
    ASSERT_TRUE(shop.session->CreateDB());
    shop.reader->Refresh();
    EXPECT_EQ(shop.reader->Tables()->RecordCount(), 0);
}

TEST(XmlReader, ColumnsTakeDefaultsAndThePrimaryKeyRule) {
    Shop shop;
    auto c = shop.reader->TableColumns(u"orders");
    EXPECT_EQ(Column(c, u"column_name"), (Texts{u"id", u"note", u"total"}));
    EXPECT_EQ(Column(c, u"data_type_group"), (Texts{u"3", u"202", u"13"}));
    EXPECT_EQ(Column(c, u"numeric_precision"), (Texts{u"10", u"0", u"19"}));
    EXPECT_EQ(Column(c, u"numeric_scale"), (Texts{u"0", u"0", u"4"}));
    EXPECT_EQ(Column(c, u"character_maximum_length"), (Texts{u"0", u"50", u"0"}));
    EXPECT_EQ(Column(c, u"column_default"), (Texts{u"", u"n/a", u""}));
    EXPECT_EQ(Column(c, u"has_default"), (Texts{u"False", u"True", u"False"}));
    // id and note make the primary key: not nullable whatever the file says.
    EXPECT_EQ(Column(c, u"is_nullable"), (Texts{u"False", u"False", u"True"}));
    EXPECT_EQ(Column(shop.reader->TableColumns(u"customers"), u"is_nullable"), (Texts{u"False"}));

    DbError missing = Failure([&] { shop.reader->TableColumns(u"broken"); });
    EXPECT_EQ(missing.Number(), err::ObjectNotSet);
    EXPECT_EQ(Chain(missing.Source()), (Texts{u"zolsdk", u" DbMsXMLReader:IDBReader_TableColumns Ln "}));
    EXPECT_EQ(Failure([&] { shop.reader->TableColumns(u"sizeless"); }).Number(), err::TypeMismatch);
    // A name with one kind of quote is written between the other kind; one
    // with both cannot stand in an XPath literal and is refused.
    EXPECT_EQ(shop.reader->TableColumns(u"or\"ders")->RecordCount(), 0);
    EXPECT_EQ(shop.reader->TableColumns(u"x\" or \"1\"=\"1")->RecordCount(), 0);
    DbError quote = Failure([&] { shop.reader->TableColumns(u"o'r\"ders"); });
    EXPECT_EQ(quote.Number(), err::InvalidCall);
    EXPECT_EQ(Chain(quote.Source()), (Texts{u"zolsdk", u" DbMsXMLReader:IDBReader_TableColumns Ln "}));
}

TEST(XmlReader, IndexesIndexColumnsAndKeys) {
    Shop shop;
    auto ix = shop.reader->Indexes(u"orders");
    EXPECT_EQ(Column(ix, u"index_name"), (Texts{u"pk_orders", u"ix_total"}));
    EXPECT_EQ(Column(ix, u"primary_key"), (Texts{u"True", u"False"}));
    EXPECT_EQ(Column(ix, u"unique"), (Texts{u"True", u"False"}));
    auto pk = shop.reader->IndexColumns(u"pk_orders", u"orders");
    EXPECT_EQ(Column(pk, u"column_name"), (Texts{u"id", u"note"}));
    EXPECT_EQ(Column(pk, u"sort_order"), (Texts{u"1", u"2"}));
    // The index name is matched as a child element, not as the attribute.
    EXPECT_EQ(shop.reader->IndexColumns(u"ix_total", u"orders")->RecordCount(), 0);
    // So is the key's ordinal; a key that matches fails on its nameless column.
    EXPECT_EQ(shop.reader->Keys(u"orders")->RecordCount(), 0);
    DbError legacy = Failure([&] { shop.reader->Keys(u"legacy"); });
    EXPECT_EQ(legacy.Number(), err::ObjectNotSet);
    EXPECT_EQ(Chain(legacy.Source()), (Texts{u"zolsdk", u"DbMsXMLReader:IDBReader_Keys Ln "}));
}

TEST(XmlReader, ReaderWithoutSessionNamesWhatIsMissing) {
    auto orphan = Ref<DbMsXMLReader>::New();
    DbError e = Failure([&] { orphan->Tables(); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Description(), u"ErrNo:91\r\n Details:Object variable or With block variable not set (DBSession).");
    EXPECT_EQ(Chain(e.Source()),
              (Texts{u"zolsdk", u"DbMsXMLReader:OpenConection Ln ", u"DbMsXMLReader:IDBReader_Tables Ln "}));

    Shop shop;
    Ref<IDBReader> kept = shop.reader;
    shop.reader.Release();
    shop.session.Release();
    String d = Failure([&] { kept->Indexes(u"orders"); }).Description();
    EXPECT_EQ(d.substr(d.size() - 13), u" (DBSession).");
}

} // namespace
} // namespace zolsdk
