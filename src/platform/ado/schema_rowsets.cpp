#include "platform/ado/schema_rowsets.hpp"

namespace zolsdk::ado::detail {

namespace {
Ref<Recordset> Shape(std::initializer_list<std::pair<const char16_t*, int32_t>> fields) {
    auto rs = Ref<Recordset>::New();
    rs->CursorLocation(adUseClient);
    for (const auto& [name, type] : fields) {
        int32_t size = 0;
        if (type == adType::VarWChar) size = 128;
        else if (type == adType::LongVarWChar) size = 2147483647;
        rs->Fields().Append(name, type, size, -1);
    }
    rs->Open();
    return rs;
}
} // namespace

Ref<Recordset> TablesSchemaRowset() {
    return Shape({{u"TABLE_CATALOG", adType::VarWChar},
                  {u"TABLE_SCHEMA", adType::VarWChar},
                  {u"TABLE_NAME", adType::VarWChar},
                  {u"TABLE_TYPE", adType::VarWChar},
                  {u"TABLE_GUID", adType::GUID},
                  {u"DESCRIPTION", adType::VarWChar},
                  {u"TABLE_PROPID", adType::UnsignedInt},
                  {u"DATE_CREATED", adType::Date},
                  {u"DATE_MODIFIED", adType::Date}});
}

Ref<Recordset> ColumnsSchemaRowset() {
    return Shape({{u"TABLE_CATALOG", adType::VarWChar},
                  {u"TABLE_SCHEMA", adType::VarWChar},
                  {u"TABLE_NAME", adType::VarWChar},
                  {u"COLUMN_NAME", adType::VarWChar},
                  {u"COLUMN_GUID", adType::GUID},
                  {u"COLUMN_PROPID", adType::UnsignedInt},
                  {u"ORDINAL_POSITION", adType::UnsignedInt},
                  {u"COLUMN_HASDEFAULT", adType::Boolean},
                  {u"COLUMN_DEFAULT", adType::LongVarWChar},
                  {u"COLUMN_FLAGS", adType::UnsignedInt},
                  {u"IS_NULLABLE", adType::Boolean},
                  {u"DATA_TYPE", adType::UnsignedSmallInt},
                  {u"TYPE_GUID", adType::GUID},
                  {u"CHARACTER_MAXIMUM_LENGTH", adType::UnsignedInt},
                  {u"CHARACTER_OCTET_LENGTH", adType::UnsignedInt},
                  {u"NUMERIC_PRECISION", adType::UnsignedSmallInt},
                  {u"NUMERIC_SCALE", adType::SmallInt},
                  {u"DATETIME_PRECISION", adType::UnsignedInt},
                  {u"CHARACTER_SET_CATALOG", adType::VarWChar},
                  {u"CHARACTER_SET_SCHEMA", adType::VarWChar},
                  {u"CHARACTER_SET_NAME", adType::VarWChar},
                  {u"COLLATION_CATALOG", adType::VarWChar},
                  {u"COLLATION_SCHEMA", adType::VarWChar},
                  {u"COLLATION_NAME", adType::VarWChar},
                  {u"DOMAIN_CATALOG", adType::VarWChar},
                  {u"DOMAIN_SCHEMA", adType::VarWChar},
                  {u"DOMAIN_NAME", adType::VarWChar},
                  {u"DESCRIPTION", adType::VarWChar}});
}

Ref<Recordset> IndexesSchemaRowset() {
    return Shape({{u"TABLE_CATALOG", adType::VarWChar},
                  {u"TABLE_SCHEMA", adType::VarWChar},
                  {u"TABLE_NAME", adType::VarWChar},
                  {u"INDEX_CATALOG", adType::VarWChar},
                  {u"INDEX_SCHEMA", adType::VarWChar},
                  {u"INDEX_NAME", adType::VarWChar},
                  {u"PRIMARY_KEY", adType::Boolean},
                  {u"UNIQUE", adType::Boolean},
                  {u"CLUSTERED", adType::Boolean},
                  {u"TYPE", adType::UnsignedSmallInt},
                  {u"FILL_FACTOR", adType::Integer},
                  {u"INITIAL_SIZE", adType::Integer},
                  {u"NULLS", adType::Integer},
                  {u"SORT_BOOKMARKS", adType::Boolean},
                  {u"AUTO_UPDATE", adType::Boolean},
                  {u"NULL_COLLATION", adType::Integer},
                  {u"ORDINAL_POSITION", adType::UnsignedInt},
                  {u"COLUMN_NAME", adType::VarWChar},
                  {u"COLUMN_GUID", adType::GUID},
                  {u"COLUMN_PROPID", adType::UnsignedInt},
                  {u"COLLATION", adType::SmallInt},
                  {u"CARDINALITY", adType::UnsignedBigInt},
                  {u"PAGES", adType::Integer},
                  {u"FILTER_CONDITION", adType::VarWChar},
                  {u"INTEGRATED", adType::Boolean}});
}

Ref<Recordset> ForeignKeysSchemaRowset() {
    return Shape({{u"PK_TABLE_CATALOG", adType::VarWChar},
                  {u"PK_TABLE_SCHEMA", adType::VarWChar},
                  {u"PK_TABLE_NAME", adType::VarWChar},
                  {u"PK_COLUMN_NAME", adType::VarWChar},
                  {u"PK_COLUMN_GUID", adType::GUID},
                  {u"PK_COLUMN_PROPID", adType::UnsignedInt},
                  {u"FK_TABLE_CATALOG", adType::VarWChar},
                  {u"FK_TABLE_SCHEMA", adType::VarWChar},
                  {u"FK_TABLE_NAME", adType::VarWChar},
                  {u"FK_COLUMN_NAME", adType::VarWChar},
                  {u"FK_COLUMN_GUID", adType::GUID},
                  {u"FK_COLUMN_PROPID", adType::UnsignedInt},
                  {u"ORDINAL", adType::UnsignedInt},
                  {u"UPDATE_RULE", adType::VarWChar},
                  {u"DELETE_RULE", adType::VarWChar},
                  {u"PK_NAME", adType::VarWChar},
                  {u"FK_NAME", adType::VarWChar},
                  {u"DEFERRABILITY", adType::SmallInt}});
}

Ref<Recordset> PrimaryKeysSchemaRowset() {
    return Shape({{u"TABLE_CATALOG", adType::VarWChar},
                  {u"TABLE_SCHEMA", adType::VarWChar},
                  {u"TABLE_NAME", adType::VarWChar},
                  {u"COLUMN_NAME", adType::VarWChar},
                  {u"COLUMN_GUID", adType::GUID},
                  {u"COLUMN_PROPID", adType::UnsignedInt},
                  {u"ORDINAL", adType::UnsignedInt},
                  {u"PK_NAME", adType::VarWChar}});
}

} // namespace zolsdk::ado::detail
