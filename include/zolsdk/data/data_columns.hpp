#pragma once
// The column set of a data set: which columns, of what type group, in what
// order, including computed COUNT(...) and MAX(...) items.
#include "zolsdk/export.hpp"
#include "zolsdk/schema/collection_frame.hpp"

namespace zolsdk {

class DbColumns;

class ZOLSDK_API DbDataColumn : public Object {
public:
    const String& ColumnName() const { return m_sColumnName; }
    int32_t DataTypeGroup() const { return m_lDataTypeGroup; }
    int32_t ListOrder() const { return m_lListOrder; }
    void Init(const String& psColumnName, int32_t plDataTypeGroup, int32_t plPosition);
    String GetString(const String& psColumnDelimiter) const;

private:
    String m_sColumnName;
    int32_t m_lDataTypeGroup = 0, m_lListOrder = 0;
};

class ZOLSDK_API DbDataColumns : public SchemaCollection<DbDataColumn> {
public:
    DbDataColumns();
    // psColumnSet: names separated by ","; empty for every column of the
    // table. Unknown names that are no COUNT(...)/MAX(...) item are dropped.
    void Init(const Ref<DbColumns>& poColumns, const String& psColumnSet);
    // The first call's text is kept, with its delimiters, for good.
    String GetString(const String& psColumnDelimiter, const String& psRowDelimiter);

protected:
    void Fill(DbDataColumn& item) override;

private:
    String m_sColumnList;
};

// Column list text (name,group,position,type,expression;...) to the row
// column set of DbDataRow.Init ("03id,10photo").
ZOLSDK_API String ToRowColumnSet(const String& psColumnList);

} // namespace zolsdk
