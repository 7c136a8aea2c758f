#pragma once
// The frame that all four sessions share: the attribute string, the
// connection scope (depth of BeginTransaction), the kept reader and the
// feature table. Engines supply the connection itself.
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

struct SessionFeatures {
    bool fullTextSearch = false;
    bool connectionPooling = false;
    bool createIndexInCreateTable = false;
    bool multiRowInsert = false;
};

class SessionBase : public IDBSession {
public:
    // `className` prefixes the trace literals ("DbMsXML", "DbMySqlDB", ...).
    SessionBase(int32_t dbTypeId, String className, SessionFeatures features);
    ~SessionBase() override;

    void Connect(const String& psAttributes) override;
    void BeginTransaction() override;
    void EndTransaction() override;
    void RollbackTransaction() override;
    String ConnectionString() override { return GetConnectionString(false); }
    String AttributeValue(const String& psAttribute) override;
    bool IsFeatureSupported(const String& psFeature) override;
    Ref<IDBReader> DbReader() override;
    Ref<IDbSqlBuilder> DbSqlBuilder() override { return NewSqlBuilder(dbTypeId_); }

    int32_t DbTypeId() const { return dbTypeId_; }
    // Refuses a name, place or login that the attribute reader would hand
    // out shortened (a second "=", a character 0, a ";" inside it), before
    // it reaches an engine.
    void CheckWholeAttributes() const;

    const String& ClassName() const { return className_; }

protected:
    // Open the store unless a bracket holds it open; close it at depth 0.
    virtual void OpenConnection() = 0;
    virtual void CloseConnection() = 0;
    virtual String GetConnectionString(bool pbServer) = 0;
    virtual Ref<IDBReader> MakeReader() = 0;
    // Hook for sessions whose full-text answer needs the server.
    virtual bool FullTextSearchSupported() { return features_.fullTextSearch; }

    // The file of a file engine: dbname inside the dblocation folder. A name
    // that would leave the folder ("..", a path separator) is refused.
    String DatabaseFile();

    // "<class>:<routine> Ln " for this session's trace lines.
    String Literal(StringView routine) const;

    String msAttributes;
    String msConnectionString;
    int32_t mlOpenDepth = 0;
    bool mbConnected = false;
    Ref<IDBReader> moReader;

private:
    int32_t dbTypeId_;
    String className_;
    SessionFeatures features_;
    String literalAttributeValue_, literalDbReader_;
};

} // namespace zolsdk
