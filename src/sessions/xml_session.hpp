#pragma once
// The session whose database is one XML file holding a schema. Statements
// are XPath expressions for Execute and ExecuteScalar; the schema
// statements of the XML dialect only mark the document as changed, so the
// file is rewritten (as it was loaded) at the next close.
#include "platform/xml/dom.hpp"
#include "sessions/session_base.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

class DbMsXML : public SessionBase {
public:
    // What CreateDB writes: an empty catalog, without a line ending.
    static constexpr char16_t kNewDatabase[] =
        u"<?xml version=\"1.0\" encoding=\"utf-8\"?><schema><catalog><tables/><columns/><indexes/><keys/></catalog></schema>";

    DbMsXML();

    Ref<ado::Recordset> Execute(const String& psSQL) override;
    int32_t ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) override;
    int32_t ExecuteNoQuery(const String& psSQL) override;
    String ExecuteScalar(const String& psSQL, const String& psDefault) override;
    void Connect(const String& psAttributes) override;
    void Disconnect() override;
    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) override;
    bool CreateDB() override;
    bool DropDB() override;

protected:
    void OpenConnection() override;
    void CloseConnection() override;
    // dblocation, "\" and dbname; the flag makes no difference for a file.
    String GetConnectionString(bool pbServer) override;
    Ref<IDBReader> MakeReader() override;

private:
    Ref<xml::DOMDocument> moDocument;
    bool mbDirty = false;

    // The handler of the Execute family: drop (and, if due, save) the
    // document, then pass the failure on.
    [[noreturn]] void CloseAndReraise(const RoutineMark& mark, const String* statement);
};

// The failure that leaves a routine opening an XML document: the
// description becomes "ErrNo:<number>" CR LF " Details:" and either the
// parse report of the document's last load or the failure's own text; the
// routine's trace line is added to Source. Number stays.
DbError XmlOpenFailure(const DbError& failure, const xml::DOMDocument* document, StringView literal, int line);

// "[line.linepos][source line" CR LF ".            " caret "]reason", or
// the empty text when the document's last load found nothing wrong.
String XmlParseReport(const xml::DOMDocument* document);

} // namespace zolsdk
