#pragma once
// The lazy row source of a data set: one select, run at first use, turned
// into DbDataRow objects. Fill modes: 0 rows from the select; 1 each row
// re-read by its primary key (for tables with large values); 2 as 1 without
// the key; 3 the select fetched in the background while rows are read.
#include <cstdint>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/data/data_columns.hpp"
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/schema/enumerable.hpp"

namespace zolsdk {

class DbCatalog;
class IDBSession;

class ZOLSDK_API DbDataRows : public IVBEnumerable {
public:
    DbDataRows();
    ~DbDataRows() override;
    void Init(const Ref<DbCatalog>& poDB, const String& lsTableName, const String& psDataColumnSet,
              const String& psFilter, int32_t plMode);
    bool Exist(int32_t plIndex);
    // A new row for the 0-based position, or nothing.
    Ref<DbDataRow> Item(int32_t plIndex);
    int32_t Count();
    Ref<DbEnumerator<DbDataRow>> NewEnum();
    int32_t Mode() const { return m_lMode; }
    String GetString(const String& psColumnDelimiter, const String& psRowDelimiter,
                     const String& psBlobValueSubstibute);

    int32_t GetNext(Variant& value) override;
    int32_t Reset() override;
    int32_t Skip(int32_t count) override;

    // The row column set every row is made from ("03id,01name").
    const String& RowColumnSet() const { return m_sRowColumnSet; }

private:
    int32_t m_lMode = 0;
    String m_sRowColumnSet, m_sSelectList, m_sFilter;
    int32_t m_lRowCount = 0;
    String m_sKeyAttributes, m_sKeySelectList;
    bool m_bHasPrimaryKey = false, m_bIsEmpty = false, m_bFetching = false;
    Ref<DbDataColumns> m_oKeyColumns;
    String m_sTableName;
    Ref<IDBSession> m_oSession;
    Ref<DbDataRow> m_oRow;
    bool m_bLoaded = false;
    // Mode 3 lets go of the rows a walk has passed: a new walk selects again.
    bool m_bWalked = false;
    int32_t m_lStatus = 0;
    Ref<ado::Recordset> m_oRS;
    // The cell of each field of m_oRS, found by name once for the rowset
    // rather than once a row; empty until the first row is filled.
    std::vector<int32_t> m_fieldCells;

    void Load();
    Ref<DbDataColumns> GetPrimaryKeyDataColumn(const Ref<DbCatalog>& poDB, const String& psTableName);
    static void BuildColumnLists(const String& psColumnList, String& rowColumnSet, String& selectList);
    void InitRow(Ref<DbDataRow>& row);
    void DropRecordset();
};

class ZOLSDK_API DbDataSet : public Object {
public:
    // plFillMode -1 chooses: 1 when a column holds large values, else 0.
    void Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psColumnSet,
              const String& psFilter, int32_t plFillMode = -1);
    Ref<DbDataColumns> Columns() const { return m_oColumns; }
    Ref<DbDataRows> Rows() const { return m_oRows; }
    // A free-standing row with the set's columns, all null.
    Ref<DbDataRow> NewRow();

private:
    Ref<DbDataColumns> m_oColumns;
    Ref<DbDataRows> m_oRows;
};

} // namespace zolsdk
