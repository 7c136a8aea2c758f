#include "dialects/sql_dialect.hpp"

#include "support/numbers.hpp"
#include "support/split.hpp"
#include "platform/failure_chain.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk {

void DialectMark::Reraise() const {
    DbError e = CurrentFailure();
    String literal = self->ClassName();
    literal += u':';
    literal += routine;
    if (conditionForm) {
        literal += u" method (";
        e.AppendTrace(literal, line);
        e.Source(e.Source() + u")");
    } else {
        literal += u" Ln ";
        e.AppendTrace(literal, line);
    }
    throw e;
}

// ---------------------------------------------------------------------------
// Names and numbers that stand in a statement as they are
//
// Names are escaped the engine's way, and a name that cannot be written
// safely is refused, where the statements were once written with names as
// given. An ordinary name gives the same text as before.

String DbSqlDialect::Quoted(const String& name) const {
    if (traits_.jetNames) CheckJetName(name, u"The name");
    return QuotedName(name, traits_.nameQuotes);
}

String DbSqlDialect::Escaped(const String& name) const {
    if (traits_.jetNames) CheckJetName(name, u"The name");
    return EscapedName(name, traits_.nameQuotes);
}

const String& DbSqlDialect::Bare(const String& name, const char16_t* what) const {
    CheckBareName(name, traits_.nameQuotes, what);
    return name;
}

const String& DbSqlDialect::CheckedNumber(const String& value, bool list) {
    // Blanks, a sign, digits, a point and an exponent; with `list`, numbers
    // separated by ",". Nothing here can end a literal or start a comment.
    size_t i = 0;
    const size_t n = value.size();
    auto digits = [&] {
        const size_t from = i;
        while (i < n && value[i] >= u'0' && value[i] <= u'9') ++i;
        return i > from;
    };
    auto blanks = [&] {
        while (i < n && value[i] == u' ') ++i;
    };
    bool ok = true;
    do {
        blanks();
        if (i < n && (value[i] == u'-' || value[i] == u'+')) ++i;
        bool any = digits();
        if (i < n && value[i] == u'.') {
            ++i;
            any = digits() || any;
        }
        if (any && i < n && (value[i] == u'e' || value[i] == u'E')) {
            ++i;
            if (i < n && (value[i] == u'-' || value[i] == u'+')) ++i;
            any = digits();
        }
        blanks();
        ok = any;
    } while (ok && list && i < n && value[i] == u',' && ++i);
    if (!ok || i != n) RaisePlatform(err::TypeMismatch, u"'" + value + u"' is not a number");
    return value;
}

// ---------------------------------------------------------------------------
// Statements written once for every engine

String DbSqlDialect::InsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                               const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_InsertSql");
    try {
        if (psColumnSet.empty()) return {};
        ZOL_LN;
        const std::vector<TypedColumn> columns = ReadColumnSet(psColumnSet);
        ZOL_LN;
        const String values = ValueList(columns, psValue, psBlobValueSubstibute);
        ZOL_LN;
        return u"INSERT INTO " + Quoted(psTableName) + u" (" + ColumnList(columns) + u") VALUES (" + values + u")";
    }
    ZOL_RERAISE
}

String DbSqlDialect::UpdateSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                               const String& psBlobValueSubstibute) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_UpdateSql");
    try {
        ZOL_LN;
        return u" UPDATE " + Quoted(psTableName) + u" SET " + Assignments(psColumnSet, psValue, psBlobValueSubstibute);
    }
    ZOL_RERAISE
}

String DbSqlDialect::UpdateByAttributeSql(const String& psTableName, const String& psColumnSet,
                                          const String& psValue, const String& psBlobValueSubstibute,
                                          const String& psAttributes, const String& psAttributeValue) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_UpdateByAttributeSql");
    try {
        ZOL_LN;
        String filter = AttributeFilter(psAttributes, psAttributeValue, psBlobValueSubstibute);
        if (!psAttributes.empty()) filter = u" WHERE " + filter;
        ZOL_LN;
        return UpdateSql(psTableName, psColumnSet, psValue, psBlobValueSubstibute) + filter;
    }
    ZOL_RERAISE
}

String DbSqlDialect::AlterColumnSql(const String& psTableName, const String& psColumnDetail) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_AlterColumnSql");
    try {
        String change;
        if (!psColumnDetail.empty()) {
            ZOL_LN;
            const ColumnRow c = ReadColumnRow(psColumnDetail);
            // The one definition with a blank between name and type.
            change = u"ALTER COLUMN " + Quoted(c.name) + u" " +
                     ColumnTypeSql(c.group, c.dataType, c.precision, c.scale, c.maxLength) + NullMark(c.nullable);
        }
        ZOL_LN;
        return u" ALTER TABLE " + Quoted(psTableName) + u" " + change;
    }
    ZOL_RERAISE
}

String DbSqlDialect::DeleteSql(const String& psTableName) { return u"DELETE FROM " + Quoted(psTableName); }

String DbSqlDialect::DropTableSql(const String& psTableName) { return u"DROP TABLE " + Quoted(psTableName); }

String DbSqlDialect::CountSql(const String& psTableName) { return u"SELECT COUNT(*) FROM " + Quoted(psTableName); }

} // namespace zolsdk
