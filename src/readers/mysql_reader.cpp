#include "readers/mysql_reader.hpp"

#include "dialects/name_quoting.hpp"
#include "readers/type_groups.hpp"
#include "schema/rowset_shapes.hpp"
#include "sessions/open_connection.hpp"
#include "platform/ado/connection.hpp"
#include "zolsdk/schema/enums.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

String Table(const String& name) { return QuotedName(name, kBacktickQuotes); }

// A native text field that some servers hand out as bytes.
String NativeText(const Variant& v) {
    if (v.IsArray()) return DbMySQLReader::BytesToString(v);
    if (v.IsNull() || v.IsEmpty()) return String();
    return v.ToString();
}

void CloseIfOpen(Ref<ado::Recordset>& rs) {
    if (rs && rs->State() != ado::adStateClosed) rs->Close();
    rs.Release();
}

} // namespace

DbMySQLReader::~DbMySQLReader() {
    try {
        CloseIfOpen(moTablesRS);
        CloseIfOpen(moColumnsRS);
    } catch (...) {
        // Nothing may leave a destructor.
    }
}

String DbMySQLReader::BytesToString(const Variant& pvBytes) {
    Bytes b = pvBytes.ToBytes();
    auto zero = std::find(b.begin(), b.end(), uint8_t{0});
    return FromUtf8(std::string(b.begin(), zero));
}

int32_t DbMySQLReader::MajorVersion(const String& version) {
    if (version.empty() || version[0] < u'0' || version[0] > u'9') return 0;
    return version[0] - u'0';
}

int32_t DbMySQLReader::GetDataTypeGroup(int32_t plDataType, int32_t plSize, int32_t plScale) {
    return TypeGroupOf(GroupColumn::MySql, plDataType, plSize, plScale);
}

Ref<ado::Recordset> DbMySQLReader::FetchSchema(int32_t schema, const std::vector<Variant>& criteria) {
    auto connection = Ref<ado::Connection>::New();
    OpenConnection_DB(connection, Session());
    Ref<ado::Recordset> rs = connection->OpenSchema(schema, criteria);
    // The schema rowset is client-side already: closing the connection
    // leaves it readable.
    CloseConnection(connection);
    return rs;
}

String DbMySQLReader::GetVersion() {
    ZOL_ROUTINE(u"DbMySQLReader:GetVersion Ln ");
    try {
        if (msVersion.empty()) {
            ZOL_LN; msVersion = u"4.1";
            ZOL_LN; Ref<ado::Recordset> rs = Session()->Execute(u"SHOW VARIABLES LIKE 'version'");
            ZOL_LN; if (!rs->Eof()) {
                ZOL_LN; String value = NativeText(rs->Value(u"value"));
                if (!value.empty()) msVersion = value;
            }
            ZOL_LN; rs->Close();
        }
        return msVersion;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMySQLReader::Tables() {
    ZOL_ROUTINE(u"DbMySQLReader:IDBReader_Tables Ln ");
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

Ref<ado::Recordset> DbMySQLReader::TableColumns(const String& psTableName) {
    ZOL_ROUTINE(u"DbMySQLReader:IDBReader_TableColumns Ln ");
    try {
        if (!moColumnsRS) {
            ZOL_LN; moColumnsRS = FetchSchema(ado::adSchemaColumns, {});
        } else {
            ZOL_LN; moColumnsRS->Filter(Variant(int32_t{ado::adFilterNone}));
        }
        ZOL_LN; moColumnsRS->Filter(Variant(u"TABLE_NAME = '" + psTableName + u"'"));
        ZOL_LN; int32_t major = MajorVersion(GetVersion());
        ZOL_LN; Ref<ado::Recordset> rs = ColumnRS();
        String pkIndex;
        if (moColumnsRS->RecordCount() > 0) {
            ZOL_LN; pkIndex = PrimaryKeyIndex(psTableName);
            ZOL_LN; moColumnsRS->MoveFirst();
            while (!moColumnsRS->Eof()) {
                ado::Recordset& n = *moColumnsRS;
                const Variant& precision = n.Value(u"NUMERIC_PRECISION");
                const Variant& length = n.Value(u"CHARACTER_MAXIMUM_LENGTH");
                const Variant& scale = n.Value(u"NUMERIC_SCALE");
                // The size that decides the type group: the precision, or the
                // length, which old servers gave in bytes of UTF-8.
                int32_t size = 0;
                if (!precision.IsNull()) {
                    ZOL_LN; size = precision.ToLong();
                } else if (!length.IsNull()) {
                    ZOL_LN; size = major < 5 ? Variant(length.ToDouble() / 3.0).ToLong() : length.ToLong();
                }
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
                ZOL_LN; rs->Value(u"column_name", n.Value(u"COLUMN_NAME"));
                ZOL_LN; rs->Value(u"ordinal_position", n.Value(u"ORDINAL_POSITION"));
                ZOL_LN; rs->Value(u"data_type", n.Value(u"DATA_TYPE"));
                ZOL_LN; rs->Value(u"has_default", n.Value(u"COLUMN_HASDEFAULT"));
                const Variant& def = n.Value(u"COLUMN_DEFAULT");
                ZOL_LN; rs->Value(u"column_default", def.IsNull() ? Variant(String()) : def);
                ZOL_LN; rs->Value(u"numeric_precision", precision.IsNull() ? Variant(int32_t{0}) : precision);
                ZOL_LN; rs->Value(u"numeric_scale", scale.IsNull() ? Variant(int32_t{0}) : scale);
                ZOL_LN; rs->Value(u"character_maximum_length", length.IsNull() ? Variant(int32_t{0}) : Variant(size));
                const Variant& nullable = n.Value(u"IS_NULLABLE");
                ZOL_LN; rs->Value(u"is_nullable", nullable.IsNull() ? Variant(true) : nullable);
                ZOL_LN; rs->Value(u"data_type_group",
                                  Variant(GetDataTypeGroup(n.Value(u"DATA_TYPE").ToLong(), size,
                                                           scale.IsNull() ? 0 : scale.ToLong())));
                ZOL_LN; moColumnsRS->MoveNext();
            }
        }
        ZOL_LN; ApplyPrimaryKeyRule(*rs, psTableName, pkIndex);
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMySQLReader::Indexes(const String& psTableName) {
    ZOL_ROUTINE(u"DbMySQLReader:IDBReader_Indexes Ln ");
    try {
        ZOL_LN; int32_t major = MajorVersion(GetVersion());
        Ref<ado::Recordset> native;
        if (major >= 5) {
            ZOL_LN; native = Session()->Execute(u"SHOW INDEX FROM " + Table(psTableName) +
                                                u" WHERE Seq_in_index = 1 AND index_type <> 'fulltext'");
        } else {
            // Old servers keep full-text indexes in the list.
            ZOL_LN; native = Session()->Execute(u"SHOW INDEX FROM " + Table(psTableName));
            ZOL_LN; if (!(native->Eof() && native->Bof())) native->Filter(Variant(u"Seq_in_index = 1"));
        }
        ZOL_LN; Ref<ado::Recordset> rs = IndexRS();
        // The first index listed counts as the primary key, whatever its
        // name: the server lists PRIMARY first when there is one.
        bool first = true;
        if (!(native->Eof() && native->Bof())) {
            ZOL_LN; native->MoveFirst();
            while (!native->Eof()) {
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
                ZOL_LN; rs->Value(u"index_name", Variant(NativeText(native->Value(u"Key_name"))));
                ZOL_LN; rs->Value(u"primary_key", Variant(first));
                first = false;
                ZOL_LN; rs->Value(u"unique", Variant(!native->Value(u"Non_unique").ToBoolean()));
                ZOL_LN; native->MoveNext();
            }
        }
        ZOL_LN; native->Close();
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMySQLReader::IndexColumns(const String& psIndexName, const String& psTableName) {
    ZOL_ROUTINE(u"DbMySQLReader:IDBReader_IndexColumns Ln ");
    try {
        ZOL_LN; int32_t major = MajorVersion(GetVersion());
        Ref<ado::Recordset> native;
        if (major >= 5) {
            ZOL_LN; native = Session()->Execute(u"SHOW INDEX FROM " + Table(psTableName) + u" WHERE key_name = '" +
                                                psIndexName + u"'");
        } else {
            ZOL_LN; native = Session()->Execute(u"SHOW INDEX FROM " + Table(psTableName));
            ZOL_LN; if (!(native->Eof() && native->Bof()))
                native->Filter(Variant(u"key_name = '" + EscapedText(psIndexName, false) + u"'"));
        }
        ZOL_LN; Ref<ado::Recordset> rs = IdxColumnRS();
        if (!(native->Eof() && native->Bof())) {
            ZOL_LN; native->MoveFirst();
            while (!native->Eof()) {
                ZOL_LN; rs->AddNew();
                ZOL_LN; rs->Value(u"table_name", Variant(psTableName));
                ZOL_LN; rs->Value(u"index_name", Variant(psIndexName));
                ZOL_LN; rs->Value(u"column_name", Variant(NativeText(native->Value(u"Column_name"))));
                ZOL_LN; rs->Value(u"ordinal_position", native->Value(u"Seq_in_index"));
                const Variant& collation = native->Value(u"Collation");
                int32_t order = collation.IsNull() ? 0 : (NativeText(collation) == u"A" ? 1 : 2);
                ZOL_LN; rs->Value(u"sort_order", Variant(order));
                ZOL_LN; native->MoveNext();
            }
        }
        ZOL_LN; native->Close();
        ZOL_LN; rs->UpdateBatch(ado::adAffectAllChapters);
        ZOL_LN; rs->Sort(u"ordinal_position");
        return rs;
    } ZOL_READER_RERAISE
}

Ref<ado::Recordset> DbMySQLReader::Keys(const String& psTableName) {
    ZOL_ROUTINE(u"DbMySQLReader:IDBReader_Keys Ln ");
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

String DbMySQLReader::PrimaryKeyIndex(const String& psTableName) {
    ZOL_ROUTINE(u"DbMySQLReader:PrimaryKeyIndex Ln ");
    try {
        ZOL_LN; Ref<ado::Recordset> native =
            FetchSchema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), Variant(psTableName)});
        String name;
        ZOL_LN; if (!native->Eof()) name = NativeText(native->Value(u"PK_NAME"));
        ZOL_LN; native->Close();
        return name;
    } ZOL_READER_RERAISE
}

Variant DbMySQLReader::Refresh() {
    CloseIfOpen(moTablesRS);
    CloseIfOpen(moColumnsRS);
    return Variant();
}

} // namespace zolsdk
