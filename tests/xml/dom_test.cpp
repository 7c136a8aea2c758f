// The DOM facade and CopyToFile against real files.
#include "platform/xml/dom.hpp"
#include "sessions/xml_session.hpp"
#include "support/copy_to_file.hpp"
#include "xml_fixture.hpp"

namespace zolsdk {
namespace {

using namespace xmltest;

const std::string kCatalog =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<schema><catalog>\n"
    "<tables><table table_name=\"alpha\" note=\"\"/><table table_name=\"b\xC3\xA9ta\"/></tables>\n"
    "<columns><column>  padded text\n  </column></columns></catalog></schema>\n";

Ref<xml::DOMDocument> Loaded(const std::string& file) {
    auto doc = Ref<xml::DOMDocument>::New();
    EXPECT_TRUE(doc->load(FromUtf8(file)));
    return doc;
}

TEST(XmlDom, SelectionAttributesAndText) {
    TempDir dir;
    WriteFile(dir.File("c.xml"), kCatalog);
    Ref<xml::DOMNodeList> tables;
    {
        auto doc = Loaded(dir.File("c.xml"));
        tables = doc->selectNodes(u"//schema/catalog/tables/table");
        EXPECT_EQ(doc->selectSingleNode(u"//column")->text(), u"padded text");  // trimmed element text
        EXPECT_TRUE(doc->selectSingleNode(u"//table[@table_name=\"none\"]").IsNothing());
        EXPECT_EQ(Failure([&] { doc->selectNodes(u"count(//table)"); }).Number(), xml::kDomFailure);
        EXPECT_EQ(Failure([&] { doc->setProperty(u"SelectionLanguage", Variant(u"XSLPattern")); }).Number(),
                  xml::kDomFailure);
    }
    // The list keeps its document alive after the DOMDocument is gone.
    ASSERT_EQ(tables->length(), 2);
    EXPECT_EQ(tables->item(1)->attributes()->getNamedItem(u"table_name")->text(), u"b\u00E9ta");
    EXPECT_TRUE(tables->item(2).IsNothing());
    EXPECT_TRUE(tables->item(-1).IsNothing());
    auto attrs = tables->item(0)->attributes();
    EXPECT_EQ(attrs->getNamedItem(u"note")->text(), u"");
    EXPECT_TRUE(attrs->getNamedItem(u"type").IsNothing());
    EXPECT_TRUE(attrs->getNamedItem(u"").IsNothing());
}

TEST(XmlDom, MissingAndMalformedFilesLoadAsEmptyWithAReport) {
    TempDir dir;
    auto doc = Ref<xml::DOMDocument>::New();
    EXPECT_FALSE(doc->load(FromUtf8(dir.File("missing.xml"))));
    EXPECT_NE(doc->parseError()->errorCode(), 0);
    EXPECT_EQ(Failure([&] { doc->selectNodes(u"//table["); }).Number(), xml::kDomFailure);
    EXPECT_EQ(Failure([&] { doc->save(FromUtf8(dir.File("out.xml"))); }).Number(), xml::kDomFailure);
    EXPECT_FALSE(std::filesystem::exists(dir.File("out.xml")));

    WriteFile(dir.File("bad.xml"), "<schema>\n\t<catalog><tables></catalog>\n</schema>\n");
    EXPECT_FALSE(doc->load(FromUtf8(dir.File("bad.xml"))));
    auto pe = doc->parseError();
    EXPECT_EQ(pe->line(), 2);
    ASSERT_GT(pe->linepos(), 1);
    EXPECT_EQ(pe->srcText(), u"\t<catalog><tables></catalog>");
    // Tab as blank, a caret under the column, the reason without CR LF.
    String report = XmlParseReport(doc.get());
    String head = u"[2." + IntText(pe->linepos()) + u"][ <catalog><tables></catalog>\r\n.            " +
                  String(static_cast<size_t>(pe->linepos() - 1), u' ') + u"^\r\n]";
    ASSERT_EQ(report.substr(0, head.size()), head);
    EXPECT_FALSE(report.substr(head.size()).empty());
    EXPECT_EQ(report.substr(head.size()) + u"\r\n", pe->reason());

    // A failure that meets this document carries the report instead of its text.
    DbError later(err::ObjectNotSet, u"zolsdk", u"Object variable or With block variable not set");
    DbError e = XmlOpenFailure(later, doc.get(), u"DbMsXML:OpenConnection Ln ", 42);
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(e.Source(), u"zolsdk => \r\nDbMsXML:OpenConnection Ln 42");
    EXPECT_EQ(e.Description(), u"ErrNo:91\r\n Details:" + report);

    WriteFile(dir.File("good.xml"), kCatalog);
    EXPECT_TRUE(doc->load(FromUtf8(dir.File("good.xml"))));
    EXPECT_EQ(XmlParseReport(doc.get()), u"");
    EXPECT_EQ(XmlOpenFailure(later, doc.get(), u"X Ln ", 7).Description(),
              u"ErrNo:91\r\n Details:Object variable or With block variable not set");
}

TEST(CopyToFile, WritesOneByteACharacterWithoutTruncating) {
    TempDir dir;
    String path = dir.Location() + u"\\out.txt";
    EXPECT_TRUE(CopyToFile(u"ab\u00E9\u03A9\r\n", path));
    EXPECT_EQ(ReadFile(dir.File("out.txt")), std::string("ab\xE9?\r\n"));
    EXPECT_TRUE(CopyToFile(u"XY", path));  // written at the start; the rest stays
    EXPECT_EQ(ReadFile(dir.File("out.txt")), std::string("XY\xE9?\r\n"));

    DbError missing = Failure([&] { CopyToFile(u"x", dir.Location() + u"\\no\\x.txt"); });
    EXPECT_EQ(missing.Number(), err::PathNotFound);
    EXPECT_EQ(Chain(missing.Source()), (Texts{u"zolsdk", u"modGeneral:CopyToFile Ln "}));
    EXPECT_EQ(missing.Description().rfind(u"Path not found (", 0), 0u);
    DbError folder = Failure([&] { CopyToFile(u"x", dir.Location()); });
    EXPECT_EQ(folder.Number(), err::PathFileAccess);
    EXPECT_EQ(Chain(folder.Source()), (Texts{u"zolsdk", u"modGeneral:CopyToFile Ln "}));
}

} // namespace
} // namespace zolsdk
