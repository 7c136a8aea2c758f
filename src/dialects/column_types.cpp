#include "dialects/column_types.hpp"

#include "support/replace_text.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

namespace {

// In a type text, {p} is the precision, {s} the scale and {n} the maximum
// length (255 when the column gives none).
#define ZOL_UTF8 u" CHARACTER SET utf8 COLLATE utf8_general_ci "

struct TypeRow {
    int32_t group;
    // Integer groups are banded by decimal digits: a row holds for
    // precisions up to and including this; other groups have one row.
    int32_t maxDigits;
    const char16_t* text[3]; // MySql, MsSql, Access
};

constexpr int32_t kAny = INT32_MAX;

constexpr TypeRow kTypes[] = {
    //  group              digits   MySQL                            SQL Server        Access
    {dtVarChar,          kAny, {u"VARCHAR({n})" ZOL_UTF8,         u"NVARCHAR({n})", u"VARCHAR({n})"}},
    {dtCharBLOB,         kAny, {u"LONGTEXT" ZOL_UTF8,             u"NTEXT",         u"LONGTEXT"}},
    // One digit or less has no integer type anywhere.
    {dtInteger,          1,    {u"",                              u"",              u""}},
    {dtInteger,          3,    {u"TINYINT({p})",                  u"TINYINT",       u"TINYINT"}},
    {dtInteger,          5,    {u"SMALLINT({p})",                 u"SMALLINT",      u"SMALLINT"}},
    {dtInteger,          8,    {u"MEDIUMINT({p})",                u"INTEGER",       u"INTEGER"}},
    {dtInteger,          10,   {u"INT({p})",                      u"INTEGER",       u"INTEGER"}},
    {dtInteger,          kAny, {u"BIGINT({p})",                   u"BIGINT",        u""}},
    // Unsigned: a suffix in MySQL, the signed type in SQL Server, one step
    // wider in Access.
    {dtUnsignedInteger,  1,    {u"",                              u"",              u""}},
    {dtUnsignedInteger,  3,    {u"TINYINT({p}) UNSIGNED ",        u"TINYINT",       u"TINYINT"}},
    {dtUnsignedInteger,  5,    {u"SMALLINT({p}) UNSIGNED ",       u"SMALLINT",      u"INTEGER"}},
    {dtUnsignedInteger,  8,    {u"MEDIUMINT({p}) UNSIGNED ",      u"INTEGER",       u"LONG INTEGER"}},
    {dtUnsignedInteger,  10,   {u"INT({p}) UNSIGNED ",            u"INTEGER",       u"LONG INTEGER"}},
    {dtUnsignedInteger,  kAny, {u"BIGINT({p}) UNSIGNED ",         u"BIGINT",        u""}},
    {dtDate,             kAny, {u"DATE",                          u"DATETIME",      u"DATETIME"}},
    {dtTime,             kAny, {u"TIME",                          u"DATETIME",      u"DATETIME"}},
    {dtDateTime,         kAny, {u"DATETIME",                      u"DATETIME",      u"DATETIME"}},
    {dtBoolean,          kAny, {u"TINYINT(1)",                    u"BIT",           u"BIT"}},
    {dtDouble,           kAny, {u"FLOAT(53)",                     u"FLOAT",         u"FLOAT"}},
    {dtBinaryBLOB,       kAny, {u"LONGBLOB",                      u"IMAGE",         u"IMAGE"}},
    {dtSingle,           kAny, {u"FLOAT(24)",                     u"REAL",          u"REAL"}},
    {dtDecimal,          kAny, {u"DECIMAL({p},{s})",              u"DECIMAL({p},{s})", u"DECIMAL({p},{s})"}},
    {dtCurrency,         kAny, {u"DECIMAL({p},{s})",              u"MONEY",         u"MONEY"}},
};

#undef ZOL_UTF8

} // namespace

String ColumnTypeText(TypeColumn engine, int32_t group, int32_t precision, int32_t scale, int32_t maxLength) {
    for (const TypeRow& row : kTypes) {
        if (row.group != group || precision > row.maxDigits) continue;
        String text = row.text[static_cast<int>(engine)];
        text = ReplaceAll(text, u"{p}", IntText(precision));
        text = ReplaceAll(text, u"{s}", IntText(scale));
        return ReplaceAll(text, u"{n}", IntText(maxLength != 0 ? maxLength : 255));
    }
    return {};
}

} // namespace zolsdk
