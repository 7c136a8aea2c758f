#pragma once
// DbCatalog: one database, reached through one session made from an
// attribute string such as "dbtype=mysql;dbname=shop;dblocation=127.0.0.1".
// Create it with Ref<DbCatalog>::New() (or CreateObject(u"DbCatalog")):
// the objects it hands out hold a reference to it.
#include <cstdint>
#include <functional>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class IDBSession;
class DbTables;
class DbTable;
class DbColumns;
class DbIndexes;
class DbDataSet;
class DbDataRow;
class DbQuery;
class DbColumnMap;

class ZOLSDK_API DbCatalog : public Object {
public:
    // Makes the session for the attribute's dbtype and hands it the
    // attributes; opens nothing. An unknown dbtype leaves no session, and
    // this and every later call fail with 91.
    void Init(const String& psAttributes);
    Ref<IDBSession> Session() const { return m_oSession; }
    bool Drop();
    bool Create();
    String Name();
    String DBProperty(const String& psString);
    String CatalogType();
    String Location();
    // A new collection at every call.
    Ref<DbTables> Tables();
    int32_t GetDataRowCount(const String& psTableName);
    bool IsFeatureSupported(const String& psFeature);
    bool IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    bool EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    bool DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName);
    // A connection scope: the store stays open from the first Begin to the
    // matching End. Nothing is ever rolled back in the engine.
    void BeginTransaction();
    void EndTransaction();
    void RollbackTransaction();

    // ---- data out -----------------------------------------------------------
    // All rows of a table; above 100000 rows they are fetched in the
    // background while the first ones are read.
    Ref<DbDataSet> ExportData(const String& psTableName);
    Ref<DbDataSet> ExportDataByQuery(const Ref<DbQuery>& poQuery);
    // Deletes every row of the table; with no name, forgets the cached schema.
    Variant ClearData(const String& psTableName);
    // Runs the statement as it is; true when it touched at least one row.
    bool PassThroughQuery(const String& psSQL);

    // ---- data in ------------------------------------------------------------
    // Copies every row of the data set into the table, in batches where the
    // engine takes multi-row inserts, with bound parameters for large values.
    // A failure ends the run; rows written before it stay.
    bool ImportData(const String& psTableName, const Ref<DbDataSet>& poDataSet);
    // The same through a column map: the map's targets are written, with
    // values from the row's columns, constants or expressions.
    bool ImportDataEx(const String& psTableName, const Ref<DbDataSet>& poDataSet, const Ref<DbColumnMap>& poColumnMap);
    bool ImportDataRow(const String& psTableName, const Ref<DbDataSet>& poDataSet, const Ref<DbDataRow>& poDataRow);
    bool UpdateDataByAttribute(const String& psTableName, const Ref<DbDataSet>& poDataSet,
                               const Ref<DbDataRow>& poDataRow, const String& psAttributes,
                               const String& psAttributeValue);

    // ---- schema in ----------------------------------------------------------
    // Recreates a table of another catalog here, with its keys and indexes.
    // The result tells of the last statement only (rows it reported).
    bool ImportTable(const Ref<DbTable>& poTable);
    bool ImportColumns(const Ref<DbColumns>& poColumns);   // does nothing, false
    bool ImportIndex(const Ref<DbIndexes>& poIndex);       // does nothing, false

    // Progress of ImportData/ImportDataEx on this catalog: called with the
    // table and the rows handed to the engine so far, every `everyRows` rows
    // and once at the end. For progress displays; nothing else depends on it.
    using ImportProgress = std::function<void(const String& table, int64_t rows)>;
    void OnImportProgress(ImportProgress callback, int32_t everyRows = 10000);

private:
    Ref<IDBSession> m_oSession;
    ImportProgress m_progress;
    int32_t m_progressEvery = 10000;
};

} // namespace zolsdk
