// Each reader's type group of a schema rowset's DATA_TYPE, at every size
// boundary a rule looks at.
#include <gtest/gtest.h>

#include "readers/access_reader.hpp"
#include "readers/mssql_reader.hpp"
#include "readers/mysql_reader.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {
namespace {

using namespace ado::adType;

struct GroupCase {
    int32_t dataType, size, scale;
    int32_t access, mssql, mysql;
};

TEST(TypeGroups, EveryReaderAtEveryBoundary) {
    constexpr int32_t T = dtVarChar, M = dtCharBLOB;
    const GroupCase cases[] = {
        //  type              size   scale  Access             SQL Server         MySQL
        {SmallInt,           5,     0,     dtInteger,         dtInteger,         dtInteger},
        {BigInt,             19,    0,     dtInteger,         dtInteger,         dtInteger},
        // MySQL's TINYINT(1..3) is a flag; the others' is a number.
        {TinyInt,            1,     0,     dtInteger,         dtInteger,         dtBoolean},
        {TinyInt,            3,     0,     dtInteger,         dtInteger,         dtBoolean},
        {TinyInt,            4,     0,     dtInteger,         dtInteger,         dtInteger},
        {TinyInt,            0,     0,     dtInteger,         dtInteger,         dtInteger},
        {UnsignedTinyInt,    1,     0,     dtUnsignedInteger, dtUnsignedInteger, dtBoolean},
        {UnsignedTinyInt,    3,     0,     dtUnsignedInteger, dtUnsignedInteger, dtUnsignedInteger},
        {UnsignedBigInt,     20,    0,     dtUnsignedInteger, dtUnsignedInteger, dtUnsignedInteger},
        {Single,             7,     0,     dtSingle,          dtSingle,          dtSingle},
        {Double,             15,    0,     dtDouble,          dtDouble,          dtDouble},
        {139,                0,     0,     dtDouble,          dtDouble,          dtDecimal},
        {139,                19,    4,     dtDouble,          dtDouble,          dtCurrency},
        {ado::adType::Currency,           19,    0,     dtCurrency,        dtCurrency,        dtCurrency},
        // DECIMAL(19,4) is MySQL's currency.
        {Numeric,            19,    4,     dtDecimal,         dtDecimal,         dtCurrency},
        {Numeric,            19,    2,     dtDecimal,         dtDecimal,         dtDecimal},
        {ado::adType::Decimal,  18,    4,     dtDecimal,         dtDecimal,         dtDecimal},
        {Date,               0,     0,     dtDateTime,        dtDateTime,        dtDateTime},
        {DBTimeStamp,        0,     0,     dtDateTime,        dtDateTime,        dtDateTime},
        {DBDate,             0,     0,     dtDate,            dtDate,            dtDate},
        {DBTime,             0,     0,     dtTime,            dtTime,            dtTime},
        {Boolean,            0,     0,     dtBoolean,         dtBoolean,         dtBoolean},
        {BSTR,               0,     0,     T,                 T,                 T},
        // Text below 256 characters is text, from 256 long text; Access's
        // wide and narrow varying texts go by whether there is a length.
        {Char,               255,   0,     T,                 T,                 T},
        {Char,               256,   0,     M,                 M,                 M},
        {VarWChar,           50,    0,     T,                 T,                 T},
        {VarWChar,           255,   0,     T,                 T,                 T},
        {VarWChar,           256,   0,     M,                 M,                 M},
        {WChar,              255,   0,     T,                 T,                 T},
        {WChar,              300,   0,     T,                 M,                 M},
        {WChar,              0,     0,     M,                 T,                 T},
        {VarChar,            300,   0,     T,                 M,                 M},
        {VarChar,            0,     0,     M,                 T,                 T},
        {LongVarWChar,       10,    0,     M,                 M,                 M},
        {LongVarChar,        0,     0,     M,                 M,                 M},
        {Binary,             8,     0,     dtBinaryBLOB,      dtBinaryBLOB,      dtBinaryBLOB},
        {LongVarBinary,      0,     0,     dtBinaryBLOB,      dtBinaryBLOB,      dtBinaryBLOB},
        {GUID,               0,     0,     dtUnknown,         dtUnknown,         dtUnknown},
        {-1,                 0,     0,     dtUnknown,         dtUnknown,         dtUnknown},
    };
    for (const GroupCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.dataType << " size " << c.size << " scale " << c.scale);
        EXPECT_EQ(DbMsAccessReader::GetDataTypeGroup(c.dataType, c.size), c.access);
        EXPECT_EQ(DbMsSQLReader::GetDataTypeGroup(c.dataType, c.size), c.mssql);
        EXPECT_EQ(DbMySQLReader::GetDataTypeGroup(c.dataType, c.size, c.scale), c.mysql);
    }
}

} // namespace
} // namespace zolsdk
