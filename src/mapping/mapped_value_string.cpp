#include "mapping/mapped_value_string.hpp"

#include "data/codecs.hpp"
#include "mapping/object_cast.hpp"
#include "support/string_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

String MappedValueString(const Ref<DbDataRow>& poDataRow, const Ref<DbColumnMap>& poColumnMap,
                         const String& psColumnDelimiter, const String& psBlobValueSubstibute) {
    ZOL_ROUTINE(u"basUtility:MappedValueString Ln ");
    try {
        CStringBuilder record;
        DbGenericEncoder encoder;
        const bool inlineBlobs = psBlobValueSubstibute == u"=";
        // Kept from map to map on purpose: a map of no known kind renders
        // what the map before it rendered.
        Variant value;
        int32_t group = dtUnknown;
        ZOL_LN; for (const Ref<DbMap>& map : poColumnMap) {
            record.Append(psColumnDelimiter);
            const int32_t type = map->MapType();
            if (map->MapFamily() == mtExpression) {
                if (type == mtExpression) {
                    ZOL_LN; value = CastObject<DbMapExpression>(map->MapTo())->GetValue(poDataRow, map->DataTypeGroup());
                    group = map->DataTypeGroup();
                }
            } else if (type == mtColumn) {
                ZOL_LN; const Ref<DbColumn> source = CastObject<DbColumn>(map->MapTo());
                ZOL_LN; value = poDataRow->Item(Variant(source->ColumnName()));
                group = source->DataTypeGroup();
            } else if (type == mtConstant) {
                value = map->MapTo();
                group = map->DataTypeGroup();
            }

            // The map's own group decides what is written; the value's group
            // only how it is encoded.
            const int32_t mapGroup = map->DataTypeGroup();
            const bool blobMap = mapGroup == dtBinaryBLOB || mapGroup == dtCharBLOB;
            if (value.IsNull() || value.IsEmpty()) {
                record.Append(blobMap && !inlineBlobs ? StringView(psBlobValueSubstibute) : StringView(u"NULL"));
            } else if (!blobMap || (mapGroup == dtCharBLOB && inlineBlobs)) {
                ZOL_LN; record.Append(encoder.Encode(value, group, psColumnDelimiter, u"%2C"));
            } else {
                record.Append(psBlobValueSubstibute);
            }
        }
        ZOL_LN; record.Remove(0, static_cast<int32_t>(psColumnDelimiter.size()));
        return record.ToString();
    } ZOL_RERAISE
}

} // namespace zolsdk
