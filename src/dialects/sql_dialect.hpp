#pragma once
// What the four SQL dialects have in common: the grammars of the delimited
// texts that cross from the catalog (dialect_grammar.cpp), the rendering of
// encoded values as literals (value_rendering.cpp), the criteria routines
// (criteria.cpp, relative_dates.cpp), and the statements that every engine
// words alike but for its quotes (sql_dialect.cpp). An engine supplies its
// pieces as a DialectTraits and writes the statements that differ in its own
// class.
#include <cstdint>
#include <vector>

#include "data/codecs.hpp"
#include "dialects/name_quoting.hpp"
#include "platform/failure_chain.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

struct DialectTraits {
    const char16_t* className = nullptr; // head of every trace line
    NameQuotes nameQuotes = kBracketQuotes;
    bool jetNames = false;               // names that Jet cannot hold are refused
    const char16_t* stringOpen = u"'";   // "'" or "N'"; the closing quote is always "'"
    bool doubleBackslash = false;        // the engine reads "\\" as an escape
    const char16_t* dateOpen = nullptr;  // around date and date-time literals, blanks included
    const char16_t* dateClose = nullptr;
    bool yearFirst = false;              // yyyy-mm-dd, otherwise mm/dd/yyyy
    const char16_t* timeOpen = nullptr;  // a time stands on the base date 1899-12-30
    const char16_t* timeClose = nullptr;
    const char16_t* boolTrue = u"1";
    const char16_t* boolFalse = u"0";
    bool modBitTest = false;             // no "&" operator: flags are tested by integer division and mod 2
};

// One item of a typed column set: the group from the two leading digits,
// the name from the third character on.
struct TypedColumn {
    int32_t group = 0;
    String name;
};

// The fields of one column row that the SQL statements read.
struct ColumnRow {
    String name;
    int32_t dataType = 0;
    int32_t group = 0;
    int32_t precision = 0;
    int32_t scale = 0;
    int32_t maxLength = 0;
    bool nullable = false;
};

class DbSqlDialect : public IDbSqlBuilder {
public:
    // Constant parts of the contract, the same for every engine.
    String BlockCommentDelimiter() override { return {}; }
    String CreateKeySql() override { return {}; }
    String DropKeySql() override { return {}; }

    // The statements that every engine words alike, but for its quotes.
    String InsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                     const String& psBlobValueSubstibute) override;
    String UpdateSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                     const String& psBlobValueSubstibute) override;
    String UpdateByAttributeSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                                const String& psBlobValueSubstibute, const String& psAttributes,
                                const String& psAttributeValue) override;
    String AlterColumnSql(const String& psTableName, const String& psColumnDetail) override;
    String DeleteSql(const String& psTableName) override;
    String DropTableSql(const String& psTableName) override;
    String CountSql(const String& psTableName) override;

    String CriteriaClause(const String& Alias, const String& psColumn, int32_t plDataType, int32_t plOperator,
                          const String& psValue) override;

    // The engine's type text of a column; "" for a group outside 1 to 13.
    virtual String ColumnTypeSql(int32_t group, int32_t dataType, int32_t precision, int32_t scale,
                                 int32_t maxLength) = 0;

    // Value rendering. These are the engine's own routines; they are public
    // for the code that composes statements and for tests, not part of the
    // builder contract.
    String DecodeValue(const String& value, int32_t group);
    String GetValue(const String& value, int32_t group, const String& substitute);
    String DBBoolean(bool value) const;
    String DBDateTime(double date) const;
    String DBDate(double date) const;
    String DBTime(double date) const;
    String DBNumber(const String& text) const;
    String DBString(const String& text, bool noTruncate, int32_t maxLength) const;

    // The criteria routines, one per family of groups.
    String GetStringCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetIntegerCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetDecimalCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetBooleanCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetDateTimeCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetDateCondition(const String& alias, const String& column, int32_t op, const String& value);
    String GetTimeCondition(const String& alias, const String& column, int32_t op, const String& value);

    const DialectTraits& Traits() const { return traits_; }
    const char16_t* ClassName() const { return traits_.className; }

protected:
    explicit DbSqlDialect(const DialectTraits& traits) : traits_(traits) {}

    // The name between the engine's quotes, a closing quote inside it doubled.
    String Quoted(const String& name) const;
    // A name in a place that the statement writes without quotes; refused
    // unless it is one word or already quoted whole. `what` names it.
    const String& Bare(const String& name, const char16_t* what) const;
    // What stands between the quotes when a statement writes them itself.
    String Escaped(const String& name) const;
    // The integer text of groups 3 and 4, which goes into the statement as it
    // stands: refused unless it is a number.
    static const String& CheckedNumber(const String& value, bool list);
    static String NullMark(bool nullable) { return nullable ? u" NULL " : u" NOT NULL "; }

    // Grammars of the delimited texts.
    static const String& Field(const std::vector<String>& fields, size_t index); // 9 when missing
    static int32_t FieldLong(const std::vector<String>& fields, size_t index);
    static bool FieldBool(const std::vector<String>& fields, size_t index);
    static ColumnRow ReadColumnRow(const String& row);
    static std::vector<TypedColumn> ReadColumnSet(const String& columnSet);
    // "%" and the hexadecimal code of ";": the mark between rows of a bulk insert.
    static String RowMark();

    // An index column list ("a<,b>") with each name quoted: " ASC" and " DESC"
    // for the marks with `directions`, the marks dropped without.
    String IndexColumnList(const String& columns, bool directions) const;
    // Quoted names of a typed column set joined by ",".
    String ColumnList(const std::vector<TypedColumn>& columns) const;
    // Literals of one row, position by position with the columns; a row
    // shorter than the column set fails.
    String ValueList(const std::vector<TypedColumn>& columns, const String& values, const String& substitute);
    // Literals of one bulk row: its own values drive the walk, so a longer
    // row fails and a shorter one is rendered with what it has.
    String BulkRowValues(const std::vector<TypedColumn>& columns, const String& row, const String& substitute);
    // The literals of every row of a bulk value text: rows split at the row
    // mark, a mark that a value really held ("%3%B") put back first.
    std::vector<String> BulkRows(const std::vector<TypedColumn>& columns, const String& values,
                                 const String& substitute);
    // The same rows appended to `out`, each as `before` literals `after`,
    // with `between` between two rows: the text BulkRows would give, made
    // without a text per value.
    void AppendBulkRows(String& out, const std::vector<TypedColumn>& columns, const String& values,
                        const String& substitute, StringView before, StringView after, StringView between);
    // Appends the literal GetValue gives `value`, where it can be written
    // without decoding (`plainNumbers`: the user's separators are the
    // record's); false, with nothing appended, for the rest.
    bool AppendDirectValue(String& out, StringView value, int32_t group, const String& substitute,
                           bool plainNumbers) const;
    // name = value pairs of an UPDATE, joined by ",".
    String Assignments(const String& columnSet, const String& values, const String& substitute);
    // " `a` = 1 AND `b` IS NULL ": equality on attributes, with a blank in front.
    String AttributeFilter(const String& attributes, const String& attributeValues, const String& substitute);

private:
    DialectTraits traits_;
    DbGenericDecoder decoder_;

    String DateLiteral(double date, bool withTime) const;
    String ColumnRef(const String& alias, const String& column) const;
    [[noreturn]] void RaiseInvalidOperator(const char16_t* routine, int32_t op, const String& column) const;
    double DecodeDateValue(const String& value);
    String NullValueCondition(const char16_t* routine, const String& c, int32_t op, const String& column) const;
};

// The trap of a dialect routine: the trace line names the engine's class,
// so that a routine written once here still reports where it ran.
struct DialectMark {
    const DbSqlDialect* self;
    const char16_t* routine;
    int line;
    bool conditionForm; // "Class:Routine method (" line ")" rather than "Class:Routine Ln " line
    [[noreturn]] void Reraise() const;
};

} // namespace zolsdk

#define ZOL_DIALECT_ROUTINE(name) ::zolsdk::DialectMark zol_mark_{this, name, __LINE__, false}
#define ZOL_DIALECT_METHOD(name) ::zolsdk::DialectMark zol_mark_{this, name, __LINE__, true}
