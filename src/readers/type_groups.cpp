#include "readers/type_groups.hpp"

#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

namespace {

using namespace ado::adType;

// Cells below zero are rules that look at the size (and scale).
enum Rule : int32_t {
    kTextBy256 = -1,      // text below 256 characters, long text from 256
    kTextByLength = -2,   // text with a length, long text without one (memo)
    kBoolUpTo3 = -3,      // boolean for widths 1 to 3, else an integer
    kBoolAt1 = -4,        // boolean for width 1, else an unsigned integer
    kCurrencyAt19_4 = -5, // currency for DECIMAL(19,4), else a decimal
};

constexpr int32_t kVarNumeric = 139;

struct GroupRow {
    int32_t dataType;
    int32_t group[3]; // Access, MsSql, MySql
};

constexpr GroupRow kGroups[] = {
    //  DATA_TYPE           Access              SQL Server          MySQL
    {SmallInt,         {dtInteger,         dtInteger,         dtInteger}},
    {Integer,          {dtInteger,         dtInteger,         dtInteger}},
    {BigInt,           {dtInteger,         dtInteger,         dtInteger}},
    {TinyInt,          {dtInteger,         dtInteger,         kBoolUpTo3}},
    {UnsignedTinyInt,  {dtUnsignedInteger, dtUnsignedInteger, kBoolAt1}},
    {UnsignedSmallInt, {dtUnsignedInteger, dtUnsignedInteger, dtUnsignedInteger}},
    {UnsignedInt,      {dtUnsignedInteger, dtUnsignedInteger, dtUnsignedInteger}},
    {UnsignedBigInt,   {dtUnsignedInteger, dtUnsignedInteger, dtUnsignedInteger}},
    {Single,           {dtSingle,          dtSingle,          dtSingle}},
    {Double,           {dtDouble,          dtDouble,          dtDouble}},
    {kVarNumeric,      {dtDouble,          dtDouble,          kCurrencyAt19_4}},
    {Currency,         {dtCurrency,        dtCurrency,        dtCurrency}},
    {Decimal,          {dtDecimal,         dtDecimal,         kCurrencyAt19_4}},
    {Numeric,          {dtDecimal,         dtDecimal,         kCurrencyAt19_4}},
    {Date,             {dtDateTime,        dtDateTime,        dtDateTime}},
    {DBTimeStamp,      {dtDateTime,        dtDateTime,        dtDateTime}},
    {DBDate,           {dtDate,            dtDate,            dtDate}},
    {DBTime,           {dtTime,            dtTime,            dtTime}},
    {Boolean,          {dtBoolean,         dtBoolean,         dtBoolean}},
    {BSTR,             {dtVarChar,         dtVarChar,         dtVarChar}},
    {Char,             {kTextBy256,        kTextBy256,        kTextBy256}},
    {VarWChar,         {kTextBy256,        kTextBy256,        kTextBy256}},
    {WChar,            {kTextByLength,     kTextBy256,        kTextBy256}},
    {VarChar,          {kTextByLength,     kTextBy256,        kTextBy256}},
    {LongVarChar,      {dtCharBLOB,        dtCharBLOB,        dtCharBLOB}},
    {LongVarWChar,     {dtCharBLOB,        dtCharBLOB,        dtCharBLOB}},
    {Binary,           {dtBinaryBLOB,      dtBinaryBLOB,      dtBinaryBLOB}},
    {VarBinary,        {dtBinaryBLOB,      dtBinaryBLOB,      dtBinaryBLOB}},
    {LongVarBinary,    {dtBinaryBLOB,      dtBinaryBLOB,      dtBinaryBLOB}},
};

int32_t Apply(int32_t cell, int32_t size, int32_t scale) {
    switch (cell) {
    case kTextBy256: return size < 256 ? dtVarChar : dtCharBLOB;
    case kTextByLength: return size != 0 ? dtVarChar : dtCharBLOB;
    case kBoolUpTo3: return size >= 1 && size <= 3 ? dtBoolean : dtInteger;
    case kBoolAt1: return size == 1 ? dtBoolean : dtUnsignedInteger;
    case kCurrencyAt19_4: return size == 19 && scale == 4 ? dtCurrency : dtDecimal;
    default: return cell;
    }
}

} // namespace

int32_t TypeGroupOf(GroupColumn engine, int32_t dataType, int32_t size, int32_t scale) {
    for (const GroupRow& row : kGroups)
        if (row.dataType == dataType) return Apply(row.group[static_cast<int>(engine)], size, scale);
    return dtUnknown;
}

} // namespace zolsdk
