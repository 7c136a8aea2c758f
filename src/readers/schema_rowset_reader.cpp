#include "readers/schema_rowset_reader.hpp"

#include "schema/rowset_shapes.hpp"
#include "sessions/open_connection.hpp"
#include "platform/ado/connection.hpp"
#include "zolsdk/schema/enums.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

void CloseIfOpen(Ref<ado::Recordset>& rs) {
    if (rs && rs->State() != ado::adStateClosed) rs->Close();
    rs.Release();
}

bool IsEmptyRowset(ado::Recordset& rs) { return rs.Eof() && rs.Bof(); }

} // namespace

SchemaRowsetReader::SchemaRowsetReader(StringView className) {
    String c(className);
    litTables_ = c + u":IDBReader_Tables Ln ";
    litTableColumns_ = c + u":IDBReader_TableColumns Ln ";
    litIndexes_ = c + u":IDBReader_Indexes Ln ";
    litIndexColumns_ = c + u":IDBReader_IndexColumns Ln ";
    litKeys_ = c + u":IDBReader_Keys Ln ";
    litPrimaryKeyIndex_ = c + u":PrimaryKeyIndex Ln ";
}

SchemaRowsetReader::~SchemaRowsetReader() {
    try {
        CloseIfOpen(moTablesRS);
    } catch (...) {
        // Nothing may leave a destructor.
    }
}

Ref<ado::Recordset> SchemaRowsetReader::FetchSchema(int32_t schema, const std::vector<Variant>& criteria) {
    auto connection = Ref<ado::Connection>::New();
    OpenConnection_DB(connection, Session());
    Ref<ado::Recordset> rs = connection->OpenSchema(schema, criteria);
    // The schema rowset is client-side: it is walked after the close.
    CloseConnection(connection);
    return rs;
}

Ref<ado::Recordset> SchemaRowsetReader::Tables() {
    ZOL_ROUTINE(litTables_);
    try {
        if (!moTablesRS) {
            ZOL_LN; moTablesRS = FetchSchema(ado::adSchemaTables, {});
            ZOL_LN; moTablesRS->Filter(Variant(u"TABLE_TYPE = 'TABLE'"));
        }
        ZOL_LN; Ref<ado::Recordset> rs = TableRS();
        if (moTablesRS->RecordCount() > 0) {
            ZOL_LN; moTablesRS->MoveFirst();
            while (!moTablesRS->Eof()) {
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", moTablesRS->Value(u"TABLE_NAME"));
                ZOL_LN; rs->Value(u"type", Variant(u"TABLE"));
                ZOL_LN; moTablesRS->MoveNext();
            }
        }
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> SchemaRowsetReader::TableColumns(const String& psTableName) {
    ZOL_ROUTINE(litTableColumns_);
    try {
        ZOL_LN; Ref<ado::Recordset> native =
            FetchSchema(ado::adSchemaColumns, {Variant(), Variant(), Variant(psTableName)});
        ZOL_LN; Ref<ado::Recordset> rs = ColumnRS();
        String pkIndex;
        if (!IsEmptyRowset(*native)) {
            ZOL_LN; pkIndex = PrimaryKeyIndex(psTableName);
            ZOL_LN; native->MoveFirst();
            while (!native->Eof()) {
                ado::Recordset& n = *native;
                const Variant& precision = n.Value(u"NUMERIC_PRECISION");
                const Variant& length = n.Value(u"CHARACTER_MAXIMUM_LENGTH");
                const Variant& scale = n.Value(u"NUMERIC_SCALE");
                // The size that decides the type group: the precision, else
                // the length, as the provider gives them.
                int32_t size = 0;
                if (!precision.IsNull()) {
                    ZOL_LN; size = precision.ToLong();
                } else if (!length.IsNull()) {
                    ZOL_LN; size = length.ToLong();
                }
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
                ZOL_LN; rs->Value(u"column_name", n.Value(u"COLUMN_NAME"));
                ZOL_LN; rs->Value(u"ordinal_position", n.Value(u"ORDINAL_POSITION"));
                ZOL_LN; rs->Value(u"data_type", n.Value(u"DATA_TYPE"));
                ZOL_LN; int32_t group = TypeGroup(n.Value(u"DATA_TYPE").ToLong(), size);
                ZOL_LN; rs->Value(u"data_type_group", Variant(group));
                ZOL_LN; rs->Value(u"has_default", n.Value(u"COLUMN_HASDEFAULT"));
                const Variant& def = n.Value(u"COLUMN_DEFAULT");
                ZOL_LN; rs->Value(u"column_default", def.IsNull() ? Variant(String()) : def);
                ZOL_LN; rs->Value(u"numeric_precision", precision.IsNull() ? Variant(int32_t{0}) : precision);
                ZOL_LN; rs->Value(u"character_maximum_length", length.IsNull() ? Variant(int32_t{0}) : length);
                // Money's scale is 4 whatever the provider says of it.
                ZOL_LN; rs->Value(u"numeric_scale", group == dtCurrency ? Variant(int32_t{4})
                                                    : scale.IsNull()     ? Variant(int32_t{0})
                                                                         : scale);
                const Variant& nullable = n.Value(u"IS_NULLABLE");
                ZOL_LN; rs->Value(u"is_nullable", nullable.IsNull() ? Variant(true) : nullable);
                ZOL_LN; native->MoveNext();
            }
        }
        ZOL_LN; ApplyPrimaryKeyRule(*rs, psTableName, pkIndex);
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> SchemaRowsetReader::Indexes(const String& psTableName) {
    ZOL_ROUTINE(litIndexes_);
    try {
        ZOL_LN; Ref<ado::Recordset> native = FetchSchema(
            ado::adSchemaIndexes, {Variant(), Variant(), Variant(), Variant(), Variant(psTableName)});
        ZOL_LN; Ref<ado::Recordset> rs = IndexRS();
        if (!IsEmptyRowset(*native)) {
            // One row an index: its first column.
            ZOL_LN; native->Filter(Variant(u"ORDINAL_POSITION = 1"));
            while (!native->Eof()) {
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
                ZOL_LN; rs->Value(u"index_name", native->Value(u"INDEX_NAME"));
                ZOL_LN; rs->Value(u"primary_key", native->Value(u"PRIMARY_KEY"));
                ZOL_LN; rs->Value(u"unique", native->Value(u"UNIQUE"));
                ZOL_LN; native->MoveNext();
            }
        }
        ZOL_LN; native->Close();
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> SchemaRowsetReader::IndexColumns(const String& psIndexName, const String& psTableName) {
    ZOL_ROUTINE(litIndexColumns_);
    try {
        ZOL_LN; Ref<ado::Recordset> native = FetchSchema(
            ado::adSchemaIndexes, {Variant(), Variant(), Variant(), Variant(), Variant(psTableName)});
        ZOL_LN; native->Filter(Variant(u"INDEX_NAME = '" + psIndexName + u"'"));
        ZOL_LN; Ref<ado::Recordset> rs = IdxColumnRS();
        while (!native->Eof()) {
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
            ZOL_LN; rs->Value(u"index_name", Variant(psIndexName));
            ZOL_LN; rs->Value(u"column_name", native->Value(u"COLUMN_NAME"));
            ZOL_LN; rs->Value(u"ordinal_position", native->Value(u"ORDINAL_POSITION"));
            ZOL_LN; rs->Value(u"sort_order", native->Value(u"COLLATION"));
            ZOL_LN; native->MoveNext();
        }
        ZOL_LN; native->Close();
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> SchemaRowsetReader::Keys(const String& psTableName) {
    ZOL_ROUTINE(litKeys_);
    try {
        // The sixth criterion is the foreign key's table: the keys this
        // table holds towards others.
        ZOL_LN; Ref<ado::Recordset> native = FetchSchema(
            ado::adSchemaForeignKeys, {Variant(), Variant(), Variant(), Variant(), Variant(), Variant(psTableName)});
        ZOL_LN; Ref<ado::Recordset> rs = KeysFromForeignKeyRowset(*native, zol_mark_);
        ZOL_LN; native->Close();
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        return rs;
    } ZOL_READER_RERAISE
}

String SchemaRowsetReader::PrimaryKeyIndex(const String& psTableName) {
    ZOL_ROUTINE(litPrimaryKeyIndex_);
    try {
        ZOL_LN; Ref<ado::Recordset> native =
            FetchSchema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), Variant(psTableName)});
        String name;
        ZOL_LN; if (!native->Eof()) name = native->Value(u"PK_NAME").ToString();
        ZOL_LN; native->Close();
        return name;
    } ZOL_READER_RERAISE
}

Variant SchemaRowsetReader::Refresh() {
    CloseIfOpen(moTablesRS);
    return Variant();
}

} // namespace zolsdk
