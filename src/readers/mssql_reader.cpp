#include "readers/mssql_reader.hpp"

#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

DbMsSQLReader::DbMsSQLReader() : SchemaRowsetReader(u"DbMsSQLReader") {}

int32_t DbMsSQLReader::GetDataTypeGroup(int32_t plDataType, int32_t plSize) {
    using namespace ado::adType;
    switch (plDataType) {
    case SmallInt: case Integer: case BigInt: case TinyInt: return dtInteger;
    case Single: return dtSingle;
    case Double: case 139: return dtDouble;
    case ado::adType::Currency: return dtCurrency;
    case Date: case DBTimeStamp: return dtDateTime;
    case BSTR: return dtVarChar;
    case Boolean: return dtBoolean;
    case ado::adType::Decimal: case Numeric: return dtDecimal;
    case UnsignedTinyInt: case UnsignedSmallInt: case UnsignedInt: case UnsignedBigInt: return dtUnsignedInteger;
    case Binary: case VarBinary: case LongVarBinary: return dtBinaryBLOB;
    case Char: case WChar: case VarChar: case VarWChar: return plSize < 256 ? dtVarChar : dtCharBLOB;
    case DBDate: return dtDate;
    case DBTime: return dtTime;
    case LongVarChar: case LongVarWChar: return dtCharBLOB;
    default: return dtUnknown;
    }
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
