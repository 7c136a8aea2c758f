#pragma once
// The schema reader of the XML file engine. It loads a document of its own
// at each read, so it sees the file as last saved, never the session's
// unsaved document. Only the table list is kept, until Refresh.
#include "platform/xml/dom.hpp"
#include "readers/reader_base.hpp"

namespace zolsdk {

class DbMsXMLReader : public ReaderBase {
public:
    Ref<ado::Recordset> Tables() override;
    Ref<ado::Recordset> TableColumns(const String& psTableName) override;
    Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) override;
    Ref<ado::Recordset> Indexes(const String& psTableName) override;
    Ref<ado::Recordset> Keys(const String& psTableName) override;
    Variant Refresh() override;

private:
    Ref<xml::DOMNodeList> moTableNodes;

    // Loads the session's file into the document; the result of the load
    // is not looked at, so a missing or broken file reads as empty.
    bool OpenConection(const Ref<xml::DOMDocument>& poDocument);
    // A new document over the session's file.
    Ref<xml::DOMDocument> Load();
    // The name of the table's primary key index, or "".
    String PrimaryKeyIndex(const String& psTableName);
};

} // namespace zolsdk
