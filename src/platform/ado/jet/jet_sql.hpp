#pragma once
// Statements in Jet's own SQL, made ready for the JDBC driver that runs
// them. The driver's SQL differs from Jet's in a few measured places:
//  - type names: LONGTEXT, IMAGE, MONEY and LONG INTEGER are unknown to it,
//    and BIT, INTEGER and REAL make a Byte, a 16-bit Integer and a Double,
//    so column definitions are rewritten to MEMO, OLE, CURRENCY, LONG,
//    YESNO, LONG and SINGLE;
//  - integer division "a \ b" and infix "a mod b" are unknown to it;
//  - it stores every index column ascending, and it wants index names to
//    be unique in the whole database where Jet wants them unique in their
//    table: an index with a descending column, or one whose name another
//    table uses already, is made in the file directly;
//  - it refuses ALTER COLUMN, DROP COLUMN, DROP INDEX and DROP PRIMARY KEY:
//    a change of NULL / NOT NULL is made in the file directly, the rest is
//    refused with a message that says so.
#include <cstdint>
#include <vector>

#include "zolsdk/platform/text.hpp"

namespace zolsdk::ado::detail::jet {

struct JetStatement {
    enum class Kind {
        Plain,        // `sql` goes to the driver
        CreateIndex,  // `sql` goes to the driver unless the index must be made in the file
        AlterColumn,  // NULL / NOT NULL of a column, set in the file
        Refused,      // cannot be done: `refusal` says why
    };
    Kind kind = Kind::Plain;
    String sql;
    // CREATE, ALTER or DROP: the driver's mirror of the file is made afresh
    // before the next statement that reads or writes rows.
    bool changesTables = false;
    String table, name; // the table; the index or column
    bool unique = false;
    bool descending = false; // a column of the index is descending
    std::vector<String> columns;
    std::vector<bool> ascending;
    // AlterColumn: the wanted type as the file names it ("TEXT:40:0:0",
    // empty when the statement gives none) and the null mark (-1 none,
    // 0 NULL, 1 NOT NULL).
    String fileType;
    int required = -1;
    String refusal;
};

// What to do with one statement.
JetStatement PrepareJetStatement(StringView sql);

// The statement with the driver's type names and operators (used by
// PrepareJetStatement for plain statements).
String TranslateJetSql(StringView sql);

// The "?" marks of a statement, outside texts, [names] and #dates#.
int32_t CountJetParameterMarks(StringView sql);

// The file's type of a Jet type text ("VARCHAR(40)" gives "TEXT:40:0:0",
// "DECIMAL(10,2)" gives "NUMERIC:0:10:2"); empty for an unknown type. Length
// counts only for TEXT and BINARY, precision and scale only for NUMERIC.
String JetFileType(StringView typeText);

} // namespace zolsdk::ado::detail::jet
