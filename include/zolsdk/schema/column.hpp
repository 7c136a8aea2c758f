#pragma once
#include "zolsdk/export.hpp"
#include "zolsdk/schema/collection_frame.hpp"

namespace zolsdk {

class DbCatalog;
class IDBReader;

// The portable description of one column.
class ZOLSDK_API DbColumn : public Object {
public:
    const String& TableName() const { return m_sTableName; }
    const String& ColumnName() const { return m_sColumnName; }
    int32_t ListOrder() const { return m_lPosition; }
    int32_t DataType() const { return m_lDataType; }
    int32_t DataTypeGroup() const { return m_lDataTypeGroup; }
    bool HasDefault() const { return m_bHasDefault; }
    const String& Default() const { return m_sDefault; }
    int32_t NumericPrecision() const { return m_lPrecision; }
    int32_t NumericScale() const { return m_lScale; }
    int32_t MaxCharLength() const { return m_lCharLength; }
    // -1 for true, 0 for false (a number, not a boolean).
    int32_t IsNullable() const { return m_bIsNullable ? -1 : 0; }
    // The eleven fields joined by the delimiter; booleans as -1/0.
    String GetString(const String& psColumnDelimiter) const;
    void Init(const String& psTableName, const String& psColumnName, int32_t plPosition, int32_t plDataType,
              int32_t plDataTypeGroup, bool pbHasDefault, const String& psDefault, int32_t plPrecision,
              int32_t plScale, int32_t plCharLength, bool pbIsNullable);

private:
    String m_sTableName, m_sColumnName;
    int32_t m_lPosition = 0, m_lDataType = 0, m_lDataTypeGroup = 0;
    bool m_bHasDefault = false;
    String m_sDefault;
    int32_t m_lPrecision = 0, m_lScale = 0, m_lCharLength = 0;
    bool m_bIsNullable = false;
};

class ZOLSDK_API DbColumns : public SchemaCollection<DbColumn> {
public:
    DbColumns();
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName);

protected:
    void Fill(DbColumn& item) override;

private:
    Ref<IDBReader> m_oReader;
};

} // namespace zolsdk
