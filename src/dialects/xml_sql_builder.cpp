#include "dialects/xml_sql_builder.hpp"

#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
const char16_t* Flag(bool value) { return value ? u"1" : u"0"; }

String TablesBlock(const String& tableName) {
    return u"<tables><table table_name=\"" + tableName + u"\" type=\"TABLE\"/></tables>";
}
} // namespace

DbMsXMLSQLBuilder::DbMsXMLSQLBuilder() : DbMsAccessSQLBuilder(AccessTraits(u"DbMsXMLSQLBuilder", false)) {}

String DbMsXMLSQLBuilder::ColumnItem(const String& tableName, const String& row) {
    // Numbers go out as they stand in the row. The group is written as the
    // data type too: the file keeps portable types only.
    const std::vector<String> f = Split(row, u",", true);
    const String& defaultValue = Field(f, 6);
    String s = u"<column table_name=\"" + tableName + u"\"";
    s += u" column_name=\"" + Field(f, 1) + u"\"";
    s += u" ordinal_position= " + Field(f, 2);
    s += u" data_type= " + Field(f, 4);
    s += u" data_type_group= " + Field(f, 4);
    s += u" has_default= ";
    s += Flag(!defaultValue.empty());
    s += u" column_default= \"" + defaultValue + u"\"";
    s += u" numeric_precision= " + Field(f, 7);
    s += u" numeric_scale= " + Field(f, 8);
    s += u" character_maximum_length= " + Field(f, 9);
    s += u" is_nullable= ";
    s += Flag(FieldBool(f, 10));
    s += u" />";
    return s;
}

String DbMsXMLSQLBuilder::ColumnsBlock(const String& tableName, const String& psColumns) {
    if (psColumns.empty()) return {};
    String items;
    for (const String& row : Split(psColumns, u";", true)) items += ColumnItem(tableName, row);
    return items.empty() ? String(u"<columns/>") : u"<columns>" + items + u"</columns>";
}

String DbMsXMLSQLBuilder::IndexItem(const String& tableName, const String& indexName, bool primaryKey, bool unique,
                                    const String& idxColumns) {
    String s = u"<index table_name=\"" + tableName + u"\" index_name=\"" + indexName + u"\"";
    s += u" primary_key= ";
    s += Flag(primaryKey);
    s += u" unique=";
    s += Flag(unique);
    s += u">";
    int n = 0;
    for (const String& item : Split(idxColumns, u",")) {
        if (item.empty()) RaisePlatform(err::InvalidCall); // no name before the mark
        ++n;
        // ">" (descending) is stored as 1, any other mark as 2.
        const bool descending = item.back() == u'>';
        s += u"<idx_column table_name=\"" + tableName + u"\" index_name=\" column_name=\"" +
             item.substr(0, item.size() - 1) + u"\" ordinal_position=" + IntText(n) + u" sort_order=" +
             (descending ? u"1" : u"2") + u" />";
    }
    s += u"</index>";
    return s;
}

String DbMsXMLSQLBuilder::CreateTableSql(const String& psTableName, const String& psColumns,
                                         const String& psIndexes) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateTableSql");
    try {
        ZOL_LN;
        const String columns = ColumnsBlock(psTableName, psColumns);
        String indexes;
        if (!psIndexes.empty()) {
            String items;
            ZOL_LN;
            for (const String& row : Split(psIndexes, u";", true)) {
                ZOL_LN;
                const std::vector<String> parts = Split(row, u"|");
                const std::vector<String> index = Split(Field(parts, 0), u",");
                // An index without columns is left out.
                if (Field(parts, 1).empty()) continue;
                ZOL_LN;
                items += IndexItem(psTableName, Field(index, 1), FieldBool(index, 2), FieldBool(index, 3), parts[1]);
            }
            indexes = items.empty() ? String(u"<indexes/>") : u"<indexes>" + items + u"</indexes>";
        }
        return u"<sql type=\"ddl\" sql_type=\"insert\" entity=\"table\">" + TablesBlock(psTableName) + columns +
               indexes + u"</sql>";
    }
    ZOL_RERAISE
}

String DbMsXMLSQLBuilder::AddColumnSql(const String& psTableName, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AddColumnSql");
    try {
        ZOL_LN;
        return u"<sql type=\"ddl\" sql_type=\"modify\" entity=\"table\">" + TablesBlock(psTableName) +
               ColumnsBlock(psTableName, psColumns) + u"<indexes /></sql>";
    }
    ZOL_RERAISE
}

String DbMsXMLSQLBuilder::AlterColumnSql(const String& psTableName, const String& psColumnDetail) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AlterColumnSql");
    try {
        ZOL_LN;
        const String item = psColumnDetail.empty() ? String() : ColumnItem(psTableName, psColumnDetail);
        return u"<sql type=\"ddl\" sql_type=\"modify\" entity=\"column\">" + item + u"</sql>";
    }
    ZOL_RERAISE
}

String DbMsXMLSQLBuilder::DropColumnSql(const String&, const String& psColumns) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_DropColumnSql");
    try {
        // The table's name is not part of this record.
        String text;
        ZOL_LN;
        for (const String& name : Split(psColumns, u",")) text += u", DROP COLUMN " + name;
        if (!text.empty()) text.erase(0, 1);
        return u"<sql type=\"ddl\" sql_type=\"delete\" entity=\"column\">" + text + u"</sql>";
    }
    ZOL_RERAISE
}

String DbMsXMLSQLBuilder::CreateIndexSql(const String& psIndexName, const String& psTableName,
                                         const String& psIdxColumns, int32_t plFlagBitMask) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CreateIndexSql");
    try {
        ZOL_LN;
        const String body = psIdxColumns.empty() ? String()
                                                 : IndexItem(psTableName, psIndexName, (plFlagBitMask & 1) != 0,
                                                             (plFlagBitMask & 2) != 0, psIdxColumns);
        return u"<sql type=\"ddl\" sql_type=\"insert\" entity=\"index\">" + body + u"</sql>";
    }
    ZOL_RERAISE
}

String DbMsXMLSQLBuilder::DropIndexSql(const String& psIndexName, const String& psTableName, int32_t) {
    // A primary key is dropped in the same words as any index.
    return u"<sql type=\"ddl\" sql_type=\"delete\" entity=\"index\"><index table_name=\"" + psTableName +
           u"\" index_name=\"" + psIndexName + u"\"/></sql>";
}

String DbMsXMLSQLBuilder::DropTableSql(const String& psTableName) {
    return u"<sql type=\"ddl\" sql_type=\"delete\" entity=\"table\"><table table_name=\"" + psTableName +
           u"\" /></sql>";
}

String DbMsXMLSQLBuilder::DeleteSql(const String& psTableName) {
    return u"<sql type=\"dml\" sql_type=\"delete\" entity=\"table_rows\"><query entity=\"" + psTableName +
           u"\"><criteria /></query></sql>";
}

String DbMsXMLSQLBuilder::SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_SelectSql");
    try {
        ZOL_LN;
        // A list of bare names becomes a bracketed one.
        const String set = psColumnSet.empty() ? String() : u"[" + ReplaceAll(psColumnSet, u",", u"],[") + u"]";
        return SelectText(psTableName, set, psFilter);
    }
    ZOL_RERAISE
}

} // namespace zolsdk
