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
//    refused with a message that says so;
//  - it names every primary key "PrimaryKey": a primary key is made in the
//    file with the name the statement gives.
// And one that is not about its SQL: the driver converts the text of a
// statement, literals included ("AA^AA" would arrive as "POWER(AA, AA)").
// No value may be seen by that conversion, so the text literals of every
// statement that reads or writes rows are taken out and bound as
// parameters, and plain INSERTs and SELECTs of whole tables do not go
// through the driver at all: the file library writes and reads their rows.
#include <cstdint>
#include <vector>

#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk::ado::detail::jet {

// One value of a statement: a literal taken out of its text, or the
// parameter of one of its "?" marks.
struct JetValue {
    enum class Kind { Param, Null, Text, Number, Boolean, Date };
    Kind kind = Kind::Null;
    String text;        // Text: the value; Number: the digits, sign included; Date: between the # marks
    bool truth = false; // Boolean
    int32_t param = -1; // Param: the index of the parameter
};

struct JetStatement {
    enum class Kind {
        Plain,        // `sql` goes to the driver, with `bound` for its "?" marks
        InsertRows,   // `rows` for `columns` of `table` (all of them when empty), by the file's row calls
        SelectRows,   // `columns` of `table` (all when empty), read from the file
        CountRows,    // the number of rows of `table`
        PrimaryKey,   // the primary key `name` of `table` over `columns`, made in the file
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
    // Plain (and the driver's form of the kinds above): what each "?" mark
    // of `sql` stands for, in order; empty when `sql` is the statement as
    // given, whose marks take the parameters in order.
    std::vector<JetValue> bound;
    std::vector<std::vector<JetValue>> rows; // InsertRows
};

// What to do with one statement.
JetStatement PrepareJetStatement(StringView sql);

// The statement for the driver, with its text literals taken out (`sql`
// and `bound` of a Plain statement): the form a statement takes when the
// file's row calls cannot do it.
JetStatement DriverForm(StringView sql);

// The statement with the driver's type names and operators (used by
// PrepareJetStatement for plain statements).
String TranslateJetSql(StringView sql);

// A date as Jet writes it between "#" marks (m/d/yyyy or yyyy-m-d, with a
// time h:n[:s] or alone); false for any other form.
bool ParseJetDate(StringView text, DateParts& parts);

// The "?" marks of a statement, outside texts, [names] and #dates#.
int32_t CountJetParameterMarks(StringView sql);

// The file's type of a Jet type text ("VARCHAR(40)" gives "TEXT:40:0:0",
// "DECIMAL(10,2)" gives "NUMERIC:0:10:2"); empty for an unknown type. Length
// counts only for TEXT and BINARY, precision and scale only for NUMERIC.
String JetFileType(StringView typeText);

} // namespace zolsdk::ado::detail::jet
