#pragma once
// Type numbers of rowset fields and schema rowsets (the platform's data type
// enumeration), and the other small enumerations of the rowset objects.
#include <cstdint>

namespace zolsdk::ado {

namespace adType {
constexpr int32_t Empty = 0, SmallInt = 2, Integer = 3, Single = 4, Double = 5, Currency = 6,
                  Date = 7, BSTR = 8, Error = 10, Boolean = 11, Variant = 12, Decimal = 14,
                  TinyInt = 16, UnsignedTinyInt = 17, UnsignedSmallInt = 18, UnsignedInt = 19,
                  BigInt = 20, UnsignedBigInt = 21, GUID = 72, Binary = 128, Char = 129,
                  WChar = 130, Numeric = 131, DBDate = 133, DBTime = 134, DBTimeStamp = 135,
                  VarChar = 200, LongVarChar = 201, VarWChar = 202, LongVarWChar = 203,
                  VarBinary = 204, LongVarBinary = 205;
} // namespace adType

constexpr int32_t adUseClient = 3;
constexpr int32_t adStateClosed = 0, adStateOpen = 1, adStateConnecting = 2, adStateExecuting = 4,
                  adStateFetching = 8;
constexpr int32_t adClipString = 2;
constexpr int32_t adFilterNone = 0;
constexpr int32_t adAffectAllChapters = 4;
constexpr int32_t adBookmarkFirst = 1;

} // namespace zolsdk::ado
