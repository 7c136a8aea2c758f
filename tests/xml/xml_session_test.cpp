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
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<schema><catalog>\n"
    "  <tables><table table_name=\"first\"/><table table_name=\"second\"/></tables>\n"
    "  <columns/><indexes/><keys/>\n"
    "</catalog></schema>\n";

// Same catalog, written without a declaration: a save always writes one,
// so its presence tells whether the session rewrote the file.
const std::string kUndeclared = "<schema><catalog><tables><table table_name=\"other\"/></tables></catalog></schema>";

const String kSecondName = u"//schema/catalog/tables/table/@table_name";
const String kNoMatch = u"//schema/catalog/columns/column";

struct Session {
    TempDir dir;
    Ref<IDBSession> s = NewDbMsXML();
    std::string file = dir.File("db.xml");
    explicit Session(const std::string* content = nullptr) {
        if (content) WriteFile(file, *content);
        s->Connect(u"dbtype=xml;dbname=db.xml;dblocation=" + dir.Location());
    }
};

TEST(XmlSession, CreateAndDropTheFile) {
    Session db;
    EXPECT_EQ(db.s->ConnectionString(), db.dir.Location() + u"\\db.xml");
    EXPECT_EQ(db.s->AttributeValue(u"dbtypeid"), u"3");

    EXPECT_TRUE(db.s->CreateDB());
    EXPECT_EQ(ReadFile(db.file), kNewFile);

    WriteFile(db.file, kTwoTables);
    DbError e = FailureOf([&] { db.s->CreateDB(); });
    EXPECT_EQ(e.Number(), static_cast<int32_t>(0x8004F000u));
    EXPECT_EQ(e.Description(), u"You do not have the privilege to create database or the database already exists.");
    EXPECT_EQ(Chain(e.Source()), (std::vector<String>{u"ZolSDK", u"DbMsXML:CreateDB Ln "}));
    EXPECT_EQ(ReadFile(db.file), kTwoTables);

    EXPECT_TRUE(db.s->DropDB());
    EXPECT_FALSE(std::filesystem::exists(db.file));
    EXPECT_TRUE(db.s->DropDB());

    // A back-slash in the location is a folder separator on disk.
    std::filesystem::create_directories(db.dir.Path() / "sub");
    auto nested = NewDbMsXML();
    nested->Connect(u"dbname=n.xml;dblocation=" + db.dir.Location() + u"\\sub");
    EXPECT_TRUE(nested->CreateDB());
    EXPECT_EQ(ReadFile(db.dir.File("sub/n.xml")), kNewFile);

    // A folder that is not there: the file layer's failure through CreateDB.
    auto lost = NewDbMsXML();
    lost->Connect(u"dbname=n.xml;dblocation=" + db.dir.Location() + u"\\nowhere");
    DbError p = FailureOf([&] { lost->CreateDB(); });
    EXPECT_EQ(p.Number(), err::PathNotFound);
    EXPECT_EQ(Chain(p.Source()),
              (std::vector<String>{u"zolsdk", u"modGeneral:CopyToFile Ln ", u"DbMsXML:CreateDB Ln "}));
}

TEST(XmlSession, ScalarTakesTheSecondNode) {
    Session db(&kTwoTables);
    EXPECT_EQ(db.s->ExecuteScalar(kSecondName, u"none"), u"second");
    EXPECT_EQ(db.s->ExecuteScalar(u"//table[@table_name=\"zzz\"]/@table_name", u"none"), u"none");

    DbError e = FailureOf([&] { db.s->ExecuteScalar(u"//table[@table_name=\"first\"]/@table_name", u"none"); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Description(), u"Object variable or With block variable not set");
    EXPECT_EQ(Chain(e.Source()), (std::vector<String>{u"zolsdk", u"DbMsXML:ExecuteScalar Ln "}));

    // Execute proves the expression and hands back nothing.
    EXPECT_TRUE(db.s->Execute(u"//table").IsNothing());
    DbError sql = FailureOf([&] { db.s->Execute(u"SELECT * FROM first"); });
    EXPECT_EQ(sql.Number(), xml::kDomFailure);
    EXPECT_EQ(Chain(sql.Source()), (std::vector<String>{String(xml::kDomSource), u"DbMsXML:Execute Ln "}));
    EXPECT_EQ(sql.Description().find(u"\r\nSELECT"), String::npos);

    // A file that is not there reads as an empty document.
    Session none;
    none.s->BeginTransaction();
    EXPECT_EQ(none.s->ExecuteScalar(kSecondName, u"fallback"), u"fallback");
    EXPECT_TRUE(none.s->Execute(u"//table").IsNothing());
    none.s->EndTransaction();
    EXPECT_FALSE(std::filesystem::exists(none.file));
}

TEST(XmlSession, StatementsMarkTheDocumentForTheNextClose) {
    Session db(&kTwoTables);
    const String stmt = u"<sql type=\"ddl\" sql_type=\"delete\" entity=\"table\"><table table_name=\"first\" /></sql>";
    EXPECT_EQ(db.s->ExecuteNoQuery(stmt), 0);
    EXPECT_EQ(ReadFile(db.file), kTwoTables);  // nothing is written at once

    // The next statement that opens and closes saves the document it loaded.
    WriteFile(db.file, kUndeclared);
    EXPECT_EQ(db.s->ExecuteScalar(kNoMatch, u"d"), u"d");
    std::string saved = ReadFile(db.file);
    EXPECT_EQ(saved.rfind("<?xml", 0), 0u);
    EXPECT_NE(saved.find("table_name=\"other\""), std::string::npos);
    // ... and clears the mark.
    WriteFile(db.file, kUndeclared);
    db.s->ExecuteScalar(kNoMatch, u"d");
    EXPECT_EQ(ReadFile(db.file), kUndeclared);

    // Inside a bracket the save waits for the last EndTransaction, and it
    // writes what was loaded at the first BeginTransaction, unchanged.
    WriteFile(db.file, kTwoTables);
    db.s->BeginTransaction();
    db.s->BeginTransaction();
    EXPECT_EQ(db.s->ExecuteNoQuery(stmt), 0);
    WriteFile(db.file, kUndeclared);
    EXPECT_EQ(db.s->ExecuteScalar(kSecondName, u"d"), u"second");
    db.s->EndTransaction();
    EXPECT_EQ(ReadFile(db.file), kUndeclared);
    db.s->EndTransaction();
    auto reread = Ref<xml::DOMDocument>::New();
    ASSERT_TRUE(reread->load(FromUtf8(db.file)));
    EXPECT_EQ(reread->selectNodes(u"//table")->length(), 2);
    EXPECT_EQ(reread->selectSingleNode(u"//table[@table_name=\"first\"]").IsNothing(), false);
    db.s->EndTransaction();  // a surplus one does nothing

    // RollbackTransaction closes, and so saves too.
    WriteFile(db.file, kUndeclared);
    db.s->BeginTransaction();
    db.s->ExecuteNoQuery(stmt);
    db.s->RollbackTransaction();
    EXPECT_EQ(ReadFile(db.file).rfind("<?xml", 0), 0u);

    // ExecuteNoQueryEx leaves the mark alone; Connect and Disconnect drop it.
    WriteFile(db.file, kUndeclared);
    EXPECT_EQ(db.s->ExecuteNoQueryEx(stmt, nullptr), 0);
    db.s->ExecuteScalar(kNoMatch, u"d");
    EXPECT_EQ(ReadFile(db.file), kUndeclared);
    db.s->ExecuteNoQuery(stmt);
    db.s->Connect(u"");
    db.s->ExecuteScalar(kNoMatch, u"d");
    EXPECT_EQ(ReadFile(db.file), kUndeclared);
    db.s->ExecuteNoQuery(stmt);
    db.s->Disconnect();
    db.s->Connect(u"dbname=db.xml;dblocation=" + db.dir.Location());
    db.s->ExecuteScalar(kNoMatch, u"d");
    EXPECT_EQ(ReadFile(db.file), kUndeclared);
}

TEST(XmlSession, UnconnectedSessionRefusesToOpen) {
    Session db(&kTwoTables);
    db.s->Disconnect();
    const String described = u"ErrNo:-2147209216\r\n Details:Database object not initialized.";

    DbError e = FailureOf([&] { db.s->Execute(u"//table"); });
    EXPECT_EQ(e.Number(), errnum::DbNotInitialized);
    EXPECT_EQ(e.Description(), described);
    EXPECT_EQ(Chain(e.Source()),
              (std::vector<String>{u"ZolSDK", u"DbMsXML:OpenConnection Ln ", u"DbMsXML:Execute Ln "}));

    DbError s = FailureOf([&] { db.s->ExecuteScalar(kSecondName, u"d"); });
    EXPECT_EQ(s.Number(), errnum::DbNotInitialized);
    EXPECT_EQ(s.Description(), described);
    EXPECT_EQ(Chain(s.Source()),
              (std::vector<String>{u"ZolSDK", u"DbMsXML:OpenConnection Ln ", u"DbMsXML:ExecuteScalar Ln "}));

    // BeginTransaction does not trap: the failure reaches the caller as
    // OpenConnection left it.
    DbError b = FailureOf([&] { db.s->BeginTransaction(); });
    EXPECT_EQ(Chain(b.Source()), (std::vector<String>{u"ZolSDK", u"DbMsXML:OpenConnection Ln "}));

    EXPECT_EQ(db.s->ExecuteNoQuery(u"anything"), 0);
    EXPECT_EQ(FailureOf([&] { NewDbMsXML()->Execute(u"//x"); }).Number(), errnum::DbNotInitialized);
}

TEST(XmlSession, OpenFailureCarriesTheParseReport) {
    TempDir dir;
    WriteFile(dir.File("bad.xml"), "<schema><catalog>\n<tables>\t<table table_name=\"a\"></tables>\n");
    auto doc = Ref<xml::DOMDocument>::New();
    EXPECT_FALSE(doc->load(FromUtf8(dir.File("bad.xml"))));
    DbError later(err::ObjectNotSet, u"zolsdk", u"Object variable or With block variable not set");

    DbError e = XmlOpenFailure(later, doc.get(), u"DbMsXML:OpenConnection Ln ", 42);
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Source(), u"zolsdk => \r\nDbMsXML:OpenConnection Ln 42");
    const String head = u"ErrNo:91\r\n Details:[2.";
    ASSERT_EQ(e.Description().substr(0, head.size()), head);
    EXPECT_NE(e.Description().find(u"][<tables> <table table_name=\"a\"></tables>\r\n.            "), String::npos);
    EXPECT_EQ(e.Description(), u"ErrNo:91\r\n Details:" + XmlParseReport(doc.get()));

    // Without a report the failure's own text is kept behind "Details:".
    WriteFile(dir.File("ok.xml"), kNewFile);
    ASSERT_TRUE(doc->load(FromUtf8(dir.File("ok.xml"))));
    DbError plain = XmlOpenFailure(later, doc.get(), u"DbMsXMLReader:OpenConection Ln ", 7);
    EXPECT_EQ(plain.Description(), u"ErrNo:91\r\n Details:Object variable or With block variable not set");
    EXPECT_EQ(Chain(plain.Source()), (std::vector<String>{u"zolsdk", u"DbMsXMLReader:OpenConection Ln "}));
}

TEST(XmlSession, FeaturesAndFullTextAnswers) {
    Session db;
    for (const char16_t* f : {u"full_text_search", u"FTS", u"connection_pooling", u"create_index_in_create_table",
                              u"multi_row_insert", u"anything"})
        EXPECT_FALSE(db.s->IsFeatureSupported(f)) << ToUtf8(f);
    EXPECT_FALSE(db.s->IsFTSEnabled(u"c", u"t", u"col"));
    EXPECT_FALSE(db.s->EnableFTS(u"c", u"t", u"col"));
    EXPECT_TRUE(db.s->DisableFTS(u"c", u"t", u"col"));
    // One reader per session.
    Ref<IDBReader> r = db.s->DbReader();
    EXPECT_FALSE(r.IsNothing());
    EXPECT_TRUE(r == db.s->DbReader());
}

} // namespace
} // namespace zolsdk
