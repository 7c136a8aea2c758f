#include "readers/xml_reader.hpp"

#include "dialects/name_quoting.hpp"
#include "schema/rowset_shapes.hpp"
#include "sessions/xml_session.hpp"
#include "zolsdk/schema/enums.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

// The attribute's text; an attribute that is not there fails with 91
// (only a present but empty attribute can take a default).
String Attr(const Ref<xml::DOMNode>& node, StringView name) {
    return node->attributes()->getNamedItem(name)->text();
}

// Empty text reads as `fallback`; any other text must be a number.
int32_t LongOr(const String& text, int32_t fallback) {
    return text.empty() ? fallback : Variant(text).ToLong();
}

// A name as an XPath literal: in double quotes, in single quotes when it
// holds a double one, refused when it holds both (XPath has no escape).
String Quoted(const String& name) { return XPathLiteral(name, u"The name"); }

void Commit(ado::Recordset& rs) {
    rs.UpdateBatch(ado::adAffectAllChapters);
}

} // namespace

bool DbMsXMLReader::OpenConection(const Ref<xml::DOMDocument>& poDocument) {
    ZOL_ROUTINE(u"DbMsXMLReader:OpenConection Ln ");
    try {
        ZOL_LN; poDocument->async(false);
        ZOL_LN; poDocument->setProperty(u"SelectionLanguage", Variant(u"XPath"));
        ZOL_LN; poDocument->load(Session()->ConnectionString());
        return true;
    } catch (...) {
        throw XmlOpenFailure(CurrentFailure(), poDocument.get(), zol_mark_.literal, zol_mark_.line);
    }
}

Ref<xml::DOMDocument> DbMsXMLReader::Load() {
    auto doc = Ref<xml::DOMDocument>::New();
    OpenConection(doc);
    return doc;
}

Ref<ado::Recordset> DbMsXMLReader::Tables() {
    ZOL_ROUTINE(u"DbMsXMLReader:IDBReader_Tables Ln ");
    try {
        if (moTableNodes.IsNothing()) {
            ZOL_LN; Ref<xml::DOMDocument> doc = Load();
            ZOL_LN; moTableNodes = doc->selectNodes(u"//schema/catalog/tables/table");
        }
        ZOL_LN; Ref<ado::Recordset> rs = TableRS();
        for (int32_t i = 0; i < moTableNodes->length(); ++i) {
            Ref<xml::DOMNode> node = moTableNodes->item(i);
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"table_name", Variant(Attr(node, u"table_name")));
            // The file's own type attribute is not read: every entry is a table.
            ZOL_LN; rs->Value(u"type", Variant(u"TABLE"));
        }
        ZOL_LN; Commit(*rs);
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMsXMLReader::TableColumns(const String& psTableName) {
    ZOL_ROUTINE(u" DbMsXMLReader:IDBReader_TableColumns Ln ");
    try {
        ZOL_LN; Ref<xml::DOMDocument> doc = Load();
        ZOL_LN; Ref<xml::DOMNodeList> nodes =
            doc->selectNodes(u"//schema/catalog/columns/column[@table_name=" + Quoted(psTableName) + u"]");
        ZOL_LN; Ref<ado::Recordset> rs = ColumnRS();
        String pkIndex;
        if (nodes->length() > 0) {
            ZOL_LN; pkIndex = PrimaryKeyIndex(psTableName);
        }
        for (int32_t i = 0; i < nodes->length(); ++i) {
            Ref<xml::DOMNode> node = nodes->item(i);
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"table_name", Variant(Attr(node, u"table_name")));
            ZOL_LN; rs->Value(u"column_name", Variant(Attr(node, u"column_name")));
            ZOL_LN; rs->Value(u"ordinal_position", Variant(Attr(node, u"ordinal_position")));
            // The size must be a number even though it is read again below.
            ZOL_LN; String size = Attr(node, u"numeric_precision");
            if (size.empty()) {
                ZOL_LN; size = Attr(node, u"character_maximum_length");
            }
            ZOL_LN; (void)Variant(size).ToLong();
            // The file's data_type stands for both the native type and the group.
            ZOL_LN; rs->Value(u"data_type", Variant(Attr(node, u"data_type")));
            ZOL_LN; rs->Value(u"data_type_group", Variant(Attr(node, u"data_type")));
            ZOL_LN; rs->Value(u"has_default", Variant(Attr(node, u"column_hasdefault")));
            ZOL_LN; rs->Value(u"column_default", Variant(Attr(node, u"column_default")));
            ZOL_LN; rs->Value(u"numeric_precision", Variant(LongOr(Attr(node, u"numeric_precision"), 0)));
            if (rs->Value(u"data_type_group").ToLong() == dtCurrency) {
                ZOL_LN; rs->Value(u"numeric_scale", Variant(int32_t{4}));
            } else {
                ZOL_LN; rs->Value(u"numeric_scale", Variant(LongOr(Attr(node, u"numeric_scale"), 0)));
            }
            ZOL_LN; rs->Value(u"character_maximum_length",
                              Variant(LongOr(Attr(node, u"character_maximum_length"), 0)));
            ZOL_LN; String nullable = Attr(node, u"is_nullable");
            ZOL_LN; rs->Value(u"is_nullable", Variant(nullable.empty() ? true : Variant(nullable).ToBoolean()));
        }
        ZOL_LN; ApplyPrimaryKeyRule(*rs, psTableName, pkIndex);
        ZOL_LN; Commit(*rs);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMsXMLReader::Indexes(const String& psTableName) {
    ZOL_ROUTINE(u"DbMsXMLReader:IDBReader_Indexes Ln ");
    try {
        ZOL_LN; Ref<xml::DOMDocument> doc = Load();
        ZOL_LN; Ref<xml::DOMNodeList> nodes =
            doc->selectNodes(u"//schema/catalog/indexes/index[@table_name=" + Quoted(psTableName) + u"]");
        ZOL_LN; Ref<ado::Recordset> rs = IndexRS();
        for (int32_t i = 0; i < nodes->length(); ++i) {
            Ref<xml::DOMNode> node = nodes->item(i);
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
            ZOL_LN; rs->Value(u"index_name", Variant(Attr(node, u"index_name")));
            ZOL_LN; rs->Value(u"primary_key", Variant(Attr(node, u"primary_key")));
            ZOL_LN; rs->Value(u"unique", Variant(Attr(node, u"unique")));
        }
        ZOL_LN; Commit(*rs);
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMsXMLReader::IndexColumns(const String& psIndexName, const String& psTableName) {
    ZOL_ROUTINE(u"DbMsXMLReader:IDBReader_IndexColumns Ln ");
    try {
        ZOL_LN; Ref<xml::DOMDocument> doc = Load();
        // index_name without "@" tests a child element, not the attribute:
        // the expression is kept exactly as files and callers have known it.
        ZOL_LN; Ref<xml::DOMNodeList> nodes =
            doc->selectNodes(u"//schema/catalog/indexes/index[@table_name=" + Quoted(psTableName) +
                             u" and index_name=" + Quoted(psIndexName) + u"]/idx_column");
        ZOL_LN; Ref<ado::Recordset> rs = IdxColumnRS();
        for (int32_t i = 0; i < nodes->length(); ++i) {
            Ref<xml::DOMNode> node = nodes->item(i);
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
            ZOL_LN; rs->Value(u"index_name", Variant(psIndexName));
            ZOL_LN; rs->Value(u"column_name", Variant(Attr(node, u"column_name")));
            ZOL_LN; rs->Value(u"ordinal_position", Variant(Attr(node, u"ordinal_position")));
            ZOL_LN; rs->Value(u"sort_order", Variant(Attr(node, u"collation")));
        }
        ZOL_LN; Commit(*rs);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMsXMLReader::Keys(const String& psTableName) {
    ZOL_ROUTINE(u"DbMsXMLReader:IDBReader_Keys Ln ");
    try {
        ZOL_LN; Ref<xml::DOMDocument> doc = Load();
        // ordinal is a child test as well; files keep it as an attribute, so
        // the usual answer is no rows.
        ZOL_LN; Ref<xml::DOMNodeList> nodes =
            doc->selectNodes(u"//schema/catalog/keys/key[@table_name=" + Quoted(psTableName) + u" and ordinal=1]");
        ZOL_LN; Ref<ado::Recordset> rs = KeyRS();
        for (int32_t i = 0; i < nodes->length(); ++i) {
            Ref<xml::DOMNode> node = nodes->item(i);
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"pk_table_name", Variant(Attr(node, u"pk_table_name")));
            // Asks for the attribute without a name, which no node has: a
            // matching key fails here with 91, as it always has.
            ZOL_LN; rs->Value(u"pk_column_name", Variant(Attr(node, u"")));
            ZOL_LN; rs->Value(u"fk_table_name", Variant(Attr(node, u"fk_table_name")));
            ZOL_LN; rs->Value(u"fk_column_name", Variant(Attr(node, u"fk_column_name")));
            ZOL_LN; rs->Value(u"ordinal", Variant(Variant(Attr(node, u"ordinal")).ToLong()));
            ZOL_LN; rs->Value(u"update_rule", Variant(Attr(node, u"update_rule")));
            ZOL_LN; rs->Value(u"delete_rule", Variant(Attr(node, u"delete_rule")));
            ZOL_LN; rs->Value(u"pk_name", Variant(Attr(node, u"pk_name")));
            ZOL_LN; rs->Value(u"fk_name", Variant(Attr(node, u"fk_name")));
        }
        ZOL_LN; Commit(*rs);
        return rs;
    } ZOL_READER_RERAISE
}

String DbMsXMLReader::PrimaryKeyIndex(const String& psTableName) {
    ZOL_ROUTINE(u"DbMsXMLReader:PrimaryKeyIndex Ln ");
    try {
        ZOL_LN; Ref<xml::DOMDocument> doc = Load();
        ZOL_LN; Ref<xml::DOMNode> node = doc->selectSingleNode(u"//schema/catalog/indexes/index[@table_name=" +
                                                               Quoted(psTableName) + u" and @primary_key=1]");
        if (node.IsNothing()) return {};
        ZOL_LN; return Attr(node, u"index_name");
    } ZOL_READER_RERAISE
}

Variant DbMsXMLReader::Refresh() {
    moTableNodes.Release();
    return Variant();
}

} // namespace zolsdk
