// The DOM facade and CopyToFile against real files.
#include "platform/xml/dom.hpp"
#include "sessions/xml_session.hpp"
#include "support/copy_to_file.hpp"
#include "xml_fixture.hpp"

namespace zolsdk {
namespace {

using namespace xmltest;

const std::string kCatalog =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<schema>\n"
    "  <catalog>\n"
    "    <tables><table table_name=\"alpha\" note=\"\"/><table table_name=\"b\xC3\xA9ta\"/></tables>\n"
    "    <columns><column table_name=\"alpha\">  padded text\n  </column></columns>\n"
    "  </catalog>\n"
    "</schema>\n";

Ref<xml::DOMDocument> Loaded(const std::string& file) {
    auto doc = Ref<xml::DOMDocument>::New();
    doc->async(false);
    doc->setProperty(u"SelectionLanguage", Variant(u"XPath"));
    EXPECT_TRUE(doc->load(FromUtf8(file)));
    return doc;
}

TEST(XmlDom, SelectionListsAttributesAndText) {
    TempDir dir;
    WriteFile(dir.File("c.xml"), kCatalog);
    auto doc = Loaded(dir.File("c.xml"));
    EXPECT_EQ(doc->parseError()->errorCode(), 0);

    auto tables = doc->selectNodes(u"//schema/catalog/tables/table");
    ASSERT_EQ(tables->length(), 2);
    EXPECT_EQ(tables->item(0)->attributes()->getNamedItem(u"table_name")->text(), u"alpha");
    EXPECT_EQ(tables->item(1)->attributes()->getNamedItem(u"table_name")->text(), u"b\u00E9ta");
    // Out of range on either side gives nothing, not a failure.
    EXPECT_TRUE(tables->item(2).IsNothing());
    EXPECT_TRUE(tables->item(-1).IsNothing());
    // Absent and unnamed attributes are nothing; a present empty one is "".
    auto attrs = tables->item(0)->attributes();
    EXPECT_TRUE(attrs->getNamedItem(u"type").IsNothing());
    EXPECT_TRUE(attrs->getNamedItem(u"").IsNothing());
    ASSERT_FALSE(attrs->getNamedItem(u"note").IsNothing());
    EXPECT_EQ(attrs->getNamedItem(u"note")->text(), u"");
    EXPECT_EQ(attrs->length(), 2);
    // Reading through a missing attribute is the unset-object failure.
    EXPECT_EQ(FailureOf([&] { attrs->getNamedItem(u"type")->text(); }).Number(), err::ObjectNotSet);

    // Element text loses its surrounding white space; attribute text is kept.
    EXPECT_EQ(doc->selectSingleNode(u"//column")->text(), u"padded text");
    EXPECT_EQ(doc->selectSingleNode(u"//column/@table_name")->text(), u"alpha");
    EXPECT_TRUE(doc->selectSingleNode(u"//column[@table_name=\"none\"]").IsNothing());
    EXPECT_EQ(doc->selectNodes(u"//table[@table_name=\"alpha\" and @note=\"\"]")->length(), 1);
}

TEST(XmlDom, BadExpressionsFailAndEmptyDocumentsSelectNothing) {
    TempDir dir;
    WriteFile(dir.File("c.xml"), kCatalog);
    auto doc = Loaded(dir.File("c.xml"));

    DbError e = FailureOf([&] { doc->selectNodes(u"SELECT * FROM alpha"); });
    EXPECT_EQ(e.Number(), xml::kDomFailure);
    EXPECT_EQ(e.Source(), xml::kDomSource);
    EXPECT_NE(e.Description().find(u"SELECT * FROM alpha"), String::npos);
    EXPECT_EQ(FailureOf([&] { doc->selectNodes(u"//table[@table_name=\"a\"b\"]"); }).Number(), xml::kDomFailure);
    // Valid XPath that gives no node set is no selection either.
    EXPECT_EQ(FailureOf([&] { doc->selectNodes(u"count(//table)"); }).Number(), xml::kDomFailure);

    // Only XPath is offered as selection language.
    EXPECT_EQ(FailureOf([&] { doc->setProperty(u"SelectionLanguage", Variant(u"XSLPattern")); }).Number(),
              xml::kDomFailure);
    EXPECT_EQ(FailureOf([&] { doc->setProperty(u"NewParser", Variant(true)); }).Number(), xml::kDomFailure);

    // A missing file: false, a parse error, an empty document; never a failure.
    auto empty = Ref<xml::DOMDocument>::New();
    EXPECT_FALSE(empty->load(FromUtf8(dir.File("missing.xml"))));
    EXPECT_NE(empty->parseError()->errorCode(), 0);
    EXPECT_NE(empty->parseError()->reason().find(u"missing.xml"), String::npos);
    EXPECT_TRUE(empty->IsEmpty());
    EXPECT_EQ(empty->selectNodes(u"//table")->length(), 0);
    EXPECT_TRUE(empty->selectSingleNode(u"//table").IsNothing());
    // ... but a malformed expression still fails on it.
    EXPECT_EQ(FailureOf([&] { empty->selectNodes(u"//table["); }).Number(), xml::kDomFailure);
    // and there is nothing to save.
    EXPECT_EQ(FailureOf([&] { empty->save(FromUtf8(dir.File("out.xml"))); }).Number(), xml::kDomFailure);
    EXPECT_FALSE(std::filesystem::exists(dir.File("out.xml")));
}

TEST(XmlDom, MalformedFileGivesPositionedReport) {
    TempDir dir;
    WriteFile(dir.File("bad.xml"), "<schema>\n\t<catalog><tables></catalog>\n</schema>\n");
    auto doc = Ref<xml::DOMDocument>::New();
    EXPECT_FALSE(doc->load(FromUtf8(dir.File("bad.xml"))));
    auto pe = doc->parseError();
    EXPECT_NE(pe->errorCode(), 0);
    EXPECT_EQ(pe->line(), 2);
    EXPECT_GT(pe->linepos(), 1);
    EXPECT_EQ(pe->srcText(), u"\t<catalog><tables></catalog>");
    ASSERT_GE(pe->reason().size(), 2u);
    EXPECT_EQ(pe->reason().substr(pe->reason().size() - 2), u"\r\n");
    EXPECT_TRUE(doc->IsEmpty());

    // The report: tab as blank, a caret under the column, reason on one line.
    String report = XmlParseReport(doc.get());
    String head = u"[2." + IntText(pe->linepos()) + u"][ <catalog><tables></catalog>\r\n.            ";
    ASSERT_EQ(report.substr(0, head.size()), head);
    String caret = String(static_cast<size_t>(pe->linepos() - 1), u' ') + u"^\r\n]";
    EXPECT_EQ(report.substr(head.size(), caret.size()), caret);
    String reason = report.substr(head.size() + caret.size());
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(reason.find(u"\r\n"), String::npos);
    EXPECT_EQ(reason + u"\r\n", pe->reason());

    // A document that loaded well has no report.
    WriteFile(dir.File("good.xml"), kCatalog);
    EXPECT_TRUE(doc->load(FromUtf8(dir.File("good.xml"))));
    EXPECT_EQ(XmlParseReport(doc.get()), u"");
    EXPECT_EQ(XmlParseReport(nullptr), u"");
}

TEST(XmlDom, NodesOutliveTheirDocumentAndSaveRoundTrips) {
    TempDir dir;
    WriteFile(dir.File("c.xml"), kCatalog);
    Ref<xml::DOMNodeList> kept;
    {
        auto doc = Loaded(dir.File("c.xml"));
        kept = doc->selectNodes(u"//table");
        WriteFile(dir.File("other.xml"), "<schema/>");
        EXPECT_TRUE(doc->load(FromUtf8(dir.File("other.xml"))));
        EXPECT_EQ(doc->selectNodes(u"//table")->length(), 0);
    }
    ASSERT_EQ(kept->length(), 2);
    EXPECT_EQ(kept->item(1)->attributes()->getNamedItem(u"table_name")->text(), u"b\u00E9ta");

    // Back-slashes in a path are folder separators at the file layer.
    std::filesystem::create_directories(dir.Path() / "sub");
    auto doc = Loaded(dir.File("c.xml"));
    doc->save(dir.Location() + u"\\sub\\copy.xml");
    auto again = Loaded(dir.File("sub/copy.xml"));
    EXPECT_EQ(again->selectNodes(u"//table")->length(), 2);
    EXPECT_EQ(again->selectSingleNode(u"//column")->text(), u"padded text");
    // Saving into a folder that does not exist is "path not found".
    DbError e = FailureOf([&] { doc->save(dir.Location() + u"/nowhere/x.xml"); });
    EXPECT_EQ(e.Number(), err::PathNotFound);
    EXPECT_NE(e.Description().find(u"nowhere"), String::npos);
}

TEST(CopyToFile, WritesOneByteACharacterWithoutTruncating) {
    TempDir dir;
    String path = dir.Location() + u"\\out.txt";
    EXPECT_TRUE(CopyToFile(u"ab\u00E9\u03A9\r\n", path));
    EXPECT_EQ(ReadFile(dir.File("out.txt")), std::string("ab\xE9?\r\n"));
    // Written at position 1 over what is there; the rest of the file stays.
    EXPECT_TRUE(CopyToFile(u"XY", path));
    EXPECT_EQ(ReadFile(dir.File("out.txt")), std::string("XY\xE9?\r\n"));
    EXPECT_TRUE(CopyToFile(u"", dir.Location() + u"/empty.txt"));
    EXPECT_TRUE(std::filesystem::exists(dir.File("empty.txt")));
    EXPECT_EQ(ReadFile(dir.File("empty.txt")), "");

    DbError missing = FailureOf([&] { CopyToFile(u"x", dir.Location() + u"\\no\\such\\x.txt"); });
    EXPECT_EQ(missing.Number(), err::PathNotFound);
    EXPECT_EQ(Chain(missing.Source()), (std::vector<String>{u"zolsdk", u"modGeneral:CopyToFile Ln "}));
    EXPECT_EQ(missing.Description().rfind(u"Path not found", 0), 0u);

    DbError folder = FailureOf([&] { CopyToFile(u"x", dir.Location()); });
    EXPECT_EQ(folder.Number(), err::PathFileAccess);
    EXPECT_EQ(Chain(folder.Source()), (std::vector<String>{u"zolsdk", u"modGeneral:CopyToFile Ln "}));
    EXPECT_EQ(folder.Description().rfind(u"Path/File access error", 0), 0u);
}

} // namespace
} // namespace zolsdk
