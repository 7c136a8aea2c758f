// The XML file session against files in a private temporary folder.
#include "platform/xml/dom.hpp"
#include "sessions/session_factory.hpp"
#include "sessions/xml_session.hpp"
#include "xml_fixture.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/readers/reader.hpp"

namespace zolsdk {
namespace {

using namespace xmltest;

const std::string kNewFile =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?><schema><catalog><tables/><columns/><indexes/><keys/></catalog></schema>";
const std::string kTwoTables =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<schema><catalog><tables>"
    "<table table_name=\"first\"/><table table_name=\"second\"/></tables><columns/></catalog></schema>\n";
// Written without a declaration: a save always writes one, so its presence
// tells whether the session rewrote the file.
const std::string kBare = "<schema><catalog><tables><table table_name=\"other\"/></tables></catalog></schema>";
const String kNames = u"//schema/catalog/tables/table/@table_name";
const String kNoMatch = u"//schema/catalog/columns/column";
const String kStatement = u"<sql type=\"ddl\" sql_type=\"delete\" entity=\"table\"><table table_name=\"first\" /></sql>";

struct Db {
    TempDir dir;
    std::string file = dir.File("db.xml");
    Ref<IDBSession> s = NewDbMsXML();
    explicit Db(const std::string* content = nullptr) {
        if (content) WriteFile(file, *content);
        s->Connect(u"dbtype=xml;dbname=db.xml;dblocation=" + dir.Location());
    }
    bool Rewritten() { return ReadFile(file).rfind("<?xml", 0) == 0; }
};

TEST(XmlSession, CreateAndDropTheFile) {
    Db db;
    EXPECT_EQ(db.s->ConnectionString(), db.dir.Location() + u"\\db.xml");
    EXPECT_TRUE(db.s->CreateDB());
    EXPECT_EQ(ReadFile(db.file), kNewFile);

    WriteFile(db.file, kTwoTables);
    DbError e = Failure([&] { db.s->CreateDB(); });
    EXPECT_EQ(e.Number(), static_cast<int32_t>(0x8004F000u));
    EXPECT_EQ(e.Description(), u"You do not have the privilege to create database or the database already exists.");
    EXPECT_EQ(Chain(e.Source()), (Texts{u"ZolSDK", u"DbMsXML:CreateDB Ln "}));
    EXPECT_EQ(ReadFile(db.file), kTwoTables);

    EXPECT_TRUE(db.s->DropDB());
    EXPECT_FALSE(std::filesystem::exists(db.file));
    EXPECT_TRUE(db.s->DropDB());

    auto lost = NewDbMsXML();
    lost->Connect(u"dbname=n.xml;dblocation=" + db.dir.Location() + u"\\nowhere");
    DbError p = Failure([&] { lost->CreateDB(); });
    EXPECT_EQ(p.Number(), err::PathNotFound);
    EXPECT_EQ(Chain(p.Source()), (Texts{u"zolsdk", u"modGeneral:CopyToFile Ln ", u"DbMsXML:CreateDB Ln "}));
}

TEST(XmlSession, ScalarTakesTheSecondNodeAndExecuteOnlySelects) {
    Db db(&kTwoTables);
    EXPECT_EQ(db.s->ExecuteScalar(kNames, u"none"), u"second");
    EXPECT_EQ(db.s->ExecuteScalar(kNoMatch, u"none"), u"none");
    DbError one = Failure([&] { db.s->ExecuteScalar(u"//table[@table_name=\"first\"]/@table_name", u"none"); });
    EXPECT_EQ(one.Number(), err::ObjectNotSet);
    EXPECT_EQ(one.Description(), u"Object variable or With block variable not set");
    EXPECT_EQ(Chain(one.Source()), (Texts{u"zolsdk", u"DbMsXML:ExecuteScalar Ln "}));

    EXPECT_TRUE(db.s->Execute(u"//table").IsNothing());
    DbError sql = Failure([&] { db.s->Execute(u"SELECT * FROM first"); });
    EXPECT_EQ(sql.Number(), xml::kDomFailure);
    EXPECT_EQ(Chain(sql.Source()), (Texts{String(xml::kDomSource), u"DbMsXML:Execute Ln "}));
    EXPECT_NE(sql.Description().find(u"SELECT * FROM first"), String::npos);

    // A file that is not there reads as an empty document.
    Db none;
    none.s->BeginTransaction();
    EXPECT_EQ(none.s->ExecuteScalar(kNames, u"fallback"), u"fallback");
    none.s->EndTransaction();
    EXPECT_FALSE(std::filesystem::exists(none.file));
}

TEST(XmlSession, StatementsOnlyMarkTheDocumentForTheNextClose) {
    Db db(&kTwoTables);
    EXPECT_EQ(db.s->ExecuteNoQuery(kStatement), 0);
    EXPECT_EQ(ReadFile(db.file), kTwoTables);  // nothing written at once
    WriteFile(db.file, kBare);
    db.s->ExecuteScalar(kNoMatch, u"d");       // this close saves ...
    EXPECT_TRUE(db.Rewritten());
    WriteFile(db.file, kBare);
    db.s->ExecuteScalar(kNoMatch, u"d");       // ... and clears the mark
    EXPECT_FALSE(db.Rewritten());

    // In nested brackets the last EndTransaction saves what the first
    // BeginTransaction loaded, unchanged by the statement.
    WriteFile(db.file, kTwoTables);
    db.s->BeginTransaction();
    db.s->BeginTransaction();
    db.s->ExecuteNoQuery(kStatement);
    WriteFile(db.file, kBare);
    EXPECT_EQ(db.s->ExecuteScalar(kNames, u"d"), u"second");  // the loaded document, kept open
    db.s->EndTransaction();
    EXPECT_FALSE(db.Rewritten());
    db.s->EndTransaction();
    auto saved = Ref<xml::DOMDocument>::New();
    ASSERT_TRUE(saved->load(FromUtf8(db.file)));
    EXPECT_EQ(saved->selectNodes(u"//table")->length(), 2);
    db.s->EndTransaction();  // surplus: harmless

    WriteFile(db.file, kBare);
    db.s->BeginTransaction();
    db.s->ExecuteNoQuery(kStatement);
    db.s->RollbackTransaction();  // closes, so it saves
    EXPECT_TRUE(db.Rewritten());

    // ExecuteNoQueryEx leaves the mark alone; Connect and Disconnect drop it.
    WriteFile(db.file, kBare);
    EXPECT_EQ(db.s->ExecuteNoQueryEx(kStatement, nullptr), 0);
    db.s->ExecuteScalar(kNoMatch, u"d");
    db.s->ExecuteNoQuery(kStatement);
    db.s->Connect(u"");
    db.s->ExecuteScalar(kNoMatch, u"d");
    db.s->ExecuteNoQuery(kStatement);
    db.s->Disconnect();
    db.s->Connect(u"dbname=db.xml;dblocation=" + db.dir.Location());
    db.s->ExecuteScalar(kNoMatch, u"d");
    EXPECT_FALSE(db.Rewritten());
}

TEST(XmlSession, UnconnectedSessionRefusesToOpen) {
    Db db(&kTwoTables);
    db.s->Disconnect();
    const String described = u"ErrNo:-2147209216\r\n Details:Database object not initialized.";
    DbError e = Failure([&] { db.s->Execute(u"//table"); });
    EXPECT_EQ(e.Number(), errnum::DbNotInitialized);
    EXPECT_EQ(e.Description(), described);
    EXPECT_EQ(Chain(e.Source()), (Texts{u"ZolSDK", u"DbMsXML:OpenConnection Ln ", u"DbMsXML:Execute Ln "}));
    DbError s = Failure([&] { db.s->ExecuteScalar(kNames, u"d"); });
    EXPECT_EQ(s.Description(), described);
    EXPECT_EQ(Chain(s.Source()), (Texts{u"ZolSDK", u"DbMsXML:OpenConnection Ln ", u"DbMsXML:ExecuteScalar Ln "}));
    // The bracket does not trap: no line of its own.
    EXPECT_EQ(Chain(Failure([&] { db.s->BeginTransaction(); }).Source()),
              (Texts{u"ZolSDK", u"DbMsXML:OpenConnection Ln "}));
    EXPECT_EQ(db.s->ExecuteNoQuery(u"anything"), 0);
}

TEST(XmlSession, FeaturesAndFullTextAnswers) {
    Db db;
    EXPECT_EQ(db.s->AttributeValue(u"dbtypeid"), u"3");
    for (const char16_t* f : {u"full_text_search", u"FTS", u"connection_pooling", u"multi_row_insert"})
        EXPECT_FALSE(db.s->IsFeatureSupported(f));
    EXPECT_FALSE(db.s->IsFTSEnabled(u"c", u"t", u"col"));
    EXPECT_FALSE(db.s->EnableFTS(u"c", u"t", u"col"));
    EXPECT_TRUE(db.s->DisableFTS(u"c", u"t", u"col"));
    EXPECT_TRUE(db.s->DbReader() == db.s->DbReader());
}

} // namespace
} // namespace zolsdk
