#pragma once
#include "zolsdk/export.hpp"
#include "zolsdk/schema/collection_frame.hpp"

namespace zolsdk {

class DbCatalog;
class DbColumns;
class DbIndexes;

class ZOLSDK_API DbTable : public Object {
public:
    const String& TableName() const { return m_sTableName; }
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName);
    // A new collection at each read; each read asks the reader again.
    Ref<DbColumns> Columns();
    Ref<DbIndexes> Indexes();
    // The table's name alone; the delimiter is not used.
    String GetString(const String& psColumnDelimiter) const;

private:
    Ref<DbCatalog> m_oDB;
    String m_sTableName;
};

class ZOLSDK_API DbTables : public SchemaCollection<DbTable> {
public:
    DbTables();
    void Init(const Ref<DbCatalog>& poDB);

protected:
    void Fill(DbTable& item) override;

private:
    Ref<DbCatalog> m_oDB;
};

} // namespace zolsdk
