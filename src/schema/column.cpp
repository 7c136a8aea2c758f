#include "zolsdk/schema/column.hpp"

#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/readers/reader.hpp"
#include "zolsdk/sessions/session.hpp"

namespace zolsdk {

namespace {
String Flag(bool b) { return b ? u"-1" : u"0"; }
} // namespace

void DbColumn::Init(const String& psTableName, const String& psColumnName, int32_t plPosition, int32_t plDataType,
                    int32_t plDataTypeGroup, bool pbHasDefault, const String& psDefault, int32_t plPrecision,
                    int32_t plScale, int32_t plCharLength, bool pbIsNullable) {
    m_sTableName = psTableName;
    m_sColumnName = psColumnName;
    m_lPosition = plPosition;
    m_lDataType = plDataType;
    m_lDataTypeGroup = plDataTypeGroup;
    m_bHasDefault = pbHasDefault;
    m_sDefault = psDefault;
    m_lPrecision = plPrecision;
    m_lScale = plScale;
    m_lCharLength = plCharLength;
    m_bIsNullable = pbIsNullable;
}

String DbColumn::GetString(const String& d) const {
    return m_sTableName + d + m_sColumnName + d + IntText(m_lPosition) + d + IntText(m_lDataType) + d +
           IntText(m_lDataTypeGroup) + d + Flag(m_bHasDefault) + d + m_sDefault + d + IntText(m_lPrecision) + d +
           IntText(m_lScale) + d + IntText(m_lCharLength) + d + Flag(m_bIsNullable);
}

DbColumns::DbColumns() : SchemaCollection(u"DbColumns", u"column_name") {}

void DbColumns::Init(const Ref<DbCatalog>& poDB, const String& psTableName) {
    m_oReader = poDB->Session()->DbReader();
    m_oRS = m_oReader->TableColumns(psTableName);
}

void DbColumns::Fill(DbColumn& item) {
    // Conversions from the fields' values: a null in any of them fails.
    ado::Recordset& rs = *m_oRS;
    item.Init(rs.Value(u"table_name").ToString(), rs.Value(u"column_name").ToString(),
              rs.Value(u"ordinal_position").ToLong(), rs.Value(u"data_type").ToLong(),
              rs.Value(u"data_type_group").ToLong(), rs.Value(u"has_default").ToBoolean(),
              rs.Value(u"column_default").ToString(), rs.Value(u"numeric_precision").ToLong(),
              rs.Value(u"numeric_scale").ToLong(), rs.Value(u"character_maximum_length").ToLong(),
              rs.Value(u"is_nullable").ToBoolean());
}

} // namespace zolsdk
