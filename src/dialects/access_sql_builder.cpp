#include "dialects/access_sql_builder.hpp"

#include "dialects/column_types.hpp"
#include "support/split.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

DialectTraits DbMsAccessSQLBuilder::AccessTraits(const char16_t* className, bool jetNames) {
    return DialectTraits{
        .className = className,
        .nameQuotes = kBracketQuotes,
        .jetNames = jetNames,
        .stringOpen = u"'",
        .dateOpen = u" #",
        .dateClose = u"# ",
        .timeOpen = u"#12/30/1899 ",
        .timeClose = u"#",
        .boolTrue = u"-1",
        .boolFalse = u"0",
        .modBitTest = true,
    };
}

DbMsAccessSQLBuilder::DbMsAccessSQLBuilder() : DbMsSqlSQLBuilder(AccessTraits(u"DbMsAccessSQLBuilder", true)) {}

String DbMsAccessSQLBuilder::ColumnTypeSql(int32_t group, int32_t, int32_t precision, int32_t scale,
                                           int32_t maxLength) {
    return ColumnTypeText(TypeColumn::Access, group, precision, scale, maxLength);
}

String DbMsAccessSQLBuilder::AddColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AddColumnSql");
    try {
        ZOL_LN;
        return u" ALTER TABLE " + Bare(psTableName, u"The table name") + u" " + AddedColumns(psColumns);
    }
    ZOL_RERAISE
}

String DbMsAccessSQLBuilder::DropColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_DropColumnSql");
    try {
        String text;
        ZOL_LN;
        for (const String& name : Split(psColumns, u",")) text += u", DROP COLUMN " + Bare(name, u"The column name");
        if (!text.empty()) text.erase(0, 1);
        ZOL_LN;
        return u"ALTER TABLE " + Quoted(psTableName) + text;
    }
    ZOL_RERAISE
}

} // namespace zolsdk
