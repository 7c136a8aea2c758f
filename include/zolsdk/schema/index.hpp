#pragma once
#include "zolsdk/export.hpp"
#include "zolsdk/schema/collection_frame.hpp"

namespace zolsdk {

class DbCatalog;
class IDBReader;
class DbIdxColumns;

class ZOLSDK_API DbIndex : public Object {
public:
    const String& IndexName() const { return m_sIndexName; }
    const String& TableName() const { return m_sTableName; }
    bool PrimaryKey() const { return m_bPrimaryKey; }
    bool Unique() const { return m_bUnique; }
    // A new collection at each read.
    Ref<DbIdxColumns> Columns();
    String GetString(const String& psColumnDelimiter) const;
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psIndexName, bool pbPrimaryKey,
              bool pbUnique);

private:
    Ref<DbCatalog> m_oDB;
    String m_sTableName, m_sIndexName;
    bool m_bPrimaryKey = false, m_bUnique = false;
};

class ZOLSDK_API DbIdxColumn : public Object {
public:
    const String& TableName() const { return m_sTableName; }
    const String& IndexName() const { return m_sIndexName; }
    const String& ColumnName() const { return m_sColumnName; }
    int32_t Position() const { return m_lPosition; }
    int32_t SortOrder() const { return m_eSortOrder; }
    String GetString(const String& psColumnDelimiter) const;
    void Init(const String& psTableName, const String& psIndexName, const String& psColumnName, int32_t plPosition,
              int32_t peSortOrder);

private:
    String m_sTableName, m_sIndexName, m_sColumnName;
    int32_t m_lPosition = 0, m_eSortOrder = 0;
};

class ZOLSDK_API DbIndexes : public SchemaCollection<DbIndex> {
public:
    DbIndexes();
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName);

protected:
    void Fill(DbIndex& item) override;

private:
    Ref<DbCatalog> m_oDB;
};

class ZOLSDK_API DbIdxColumns : public SchemaCollection<DbIdxColumn> {
public:
    DbIdxColumns();
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psIndexName);

protected:
    void Fill(DbIdxColumn& item) override;

private:
    Ref<IDBReader> m_oReader;
};

// Public classes without operations, kept in the interface.
class ZOLSDK_API DbKey : public Object {};
class ZOLSDK_API DbKeys : public Object {};

} // namespace zolsdk
