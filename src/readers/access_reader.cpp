#include "readers/access_reader.hpp"

#include "readers/type_groups.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

DbMsAccessReader::DbMsAccessReader() : SchemaRowsetReader(u"DbMsAccessReader") {}

int32_t DbMsAccessReader::GetDataTypeGroup(int32_t plDataType, int32_t plSize) {
    return TypeGroupOf(GroupColumn::Access, plDataType, plSize);
}

int32_t DbMsAccessReader::TypeGroup(int32_t plDataType, int32_t plSize) const { return GetDataTypeGroup(plDataType, plSize); }

} // namespace zolsdk
