#include "readers/access_reader.hpp"

#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

DbMsAccessReader::DbMsAccessReader() : SchemaRowsetReader(u"DbMsAccessReader") {}

int32_t DbMsAccessReader::GetDataTypeGroup(int32_t plDataType, int32_t plSize) {
    using namespace ado::adType;
    switch (plDataType) {
    case SmallInt: case Integer: case TinyInt: case BigInt: return dtInteger;
    case Single: return dtSingle;
    case Double: case 139: return dtDouble;
    case ado::adType::Currency: return dtCurrency;
    case Date: case DBTimeStamp: return dtDateTime;
    case BSTR: return dtVarChar;
    case Boolean: return dtBoolean;
    case ado::adType::Decimal: case Numeric: return dtDecimal;
    case UnsignedTinyInt: case UnsignedSmallInt: case UnsignedInt: case UnsignedBigInt: return dtUnsignedInteger;
    case Binary: case VarBinary: case LongVarBinary: return dtBinaryBLOB;
    // Narrow text and wide varying text go by the limit of 256; wide text and
    // narrow varying text by whether there is a length at all (0 for memo).
    case Char: case VarWChar: return plSize < 256 ? dtVarChar : dtCharBLOB;
    case WChar: case VarChar: return plSize != 0 ? dtVarChar : dtCharBLOB;
    case DBDate: return dtDate;
    case DBTime: return dtTime;
    case LongVarChar: case LongVarWChar: return dtCharBLOB;
    default: return dtUnknown;
    }
}

int32_t DbMsAccessReader::TypeGroup(int32_t plDataType, int32_t plSize) const { return GetDataTypeGroup(plDataType, plSize); }

} // namespace zolsdk
