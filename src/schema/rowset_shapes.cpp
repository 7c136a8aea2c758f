#include "schema/rowset_shapes.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

using namespace ado;

namespace {
constexpr int32_t S = adType::VarWChar; // text, 255 characters
constexpr int32_t L = adType::Integer;
constexpr int32_t B = adType::Boolean;

Ref<Recordset> Shape(StringView literal, std::initializer_list<std::pair<const char16_t*, int32_t>> fields) {
    ZOL_ROUTINE(literal);
    try {
        auto rs = Ref<Recordset>::New();
        ZOL_LN; rs->CursorLocation(adUseClient);
        for (auto& [name, type] : fields) {
            ZOL_LN; rs->Fields().Append(name, type, type == S ? 255 : 0, -1);
        }
        ZOL_LN; rs->Open();
        return rs;
    } ZOL_RERAISE
}
} // namespace

Ref<Recordset> TableRS() {
    return Shape(u"modGeneral:TableRS Ln ", {{u"table_name", S}, {u"type", S}});
}

Ref<Recordset> ColumnRS() {
    return Shape(u"modGeneral:ColumnRS Ln ",
                 {{u"table_name", S}, {u"column_name", S}, {u"ordinal_position", L}, {u"data_type", L},
                  {u"data_type_group", L}, {u"has_default", B}, {u"column_default", S}, {u"numeric_precision", L},
                  {u"numeric_scale", L}, {u"character_maximum_length", L}, {u"is_nullable", B}});
}

Ref<Recordset> IndexRS() {
    return Shape(u"modGeneral:IndexRS Ln ",
                 {{u"table_name", S}, {u"index_name", S}, {u"primary_key", B}, {u"unique", B}});
}

Ref<Recordset> IdxColumnRS() {
    return Shape(u"modGeneral:IdxColumnRS Ln ", {{u"table_name", S}, {u"index_name", S}, {u"column_name", S},
                                                 {u"ordinal_position", L}, {u"sort_order", L}});
}

Ref<Recordset> KeyRS() {
    return Shape(u"modGeneral:KeyRS Ln ",
                 {{u"pk_table_name", S}, {u"pk_column_name", S}, {u"fk_table_name", S}, {u"fk_column_name", S},
                  {u"ordinal", L}, {u"update_rule", S}, {u"delete_rule", S}, {u"pk_name", S}, {u"fk_name", S}});
}

Ref<Recordset> DataColumnRS() {
    return Shape(u"modGeneral:DataColumnRS Ln ", {{u"column_name", S}, {u"data_type_group", L},
                                                  {u"ordinal_position", L}, {u"column_type", L},
                                                  {u"column_expression", S}});
}

} // namespace zolsdk
