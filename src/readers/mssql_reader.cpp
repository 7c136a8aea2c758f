#include "readers/mssql_reader.hpp"

#include "readers/type_groups.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

DbMsSQLReader::DbMsSQLReader() : SchemaRowsetReader(u"DbMsSQLReader") {}

int32_t DbMsSQLReader::GetDataTypeGroup(int32_t plDataType, int32_t plSize) {
    return TypeGroupOf(GroupColumn::MsSql, plDataType, plSize);
}

String DbMsSQLReader::GetVersion() {
    ZOL_ROUTINE(u"DbMsSQLReader:GetVersion Ln ");
    try {
        if (msVersion.empty()) {
            ZOL_LN; msVersion = Session()->ExecuteScalar(u"SELECT SERVERPROPERTY('ProductVersion')", u"8.00.2039");
        }
        return msVersion;
    } ZOL_READER_RERAISE
}

int32_t DbMsSQLReader::TypeGroup(int32_t plDataType, int32_t plSize) const { return GetDataTypeGroup(plDataType, plSize); }

} // namespace zolsdk
