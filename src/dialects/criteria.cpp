// The criteria routines of every dialect: one condition for one column, by
// the column's type group, the relative date operators resolved on the
// client's clock.
#include "catalog/raise_error.hpp"
#include "dialects/relative_dates.hpp"
#include "dialects/sql_dialect.hpp"
#include "support/numbers.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk {

using namespace relative_dates;

namespace {

// The comparison pieces of operators 1 to 6 (and their date synonyms).
const char16_t* ComparisonPiece(int32_t op) {
    switch (op) {
    case dcoEqualto: case dcoOn: return u" = ";
    case dconotequalto: return u" <> ";
    case dcoLessThan: case dcoBefore: return u" < ";
    case dcoGreaterThan: case dcoAfter: return u" > ";
    case dcoLessThanEqualTo: case dcoOnOrBefore: return u" <= ";
    case dcoGreaterThanEqualTo: case dcoOnOrAfter: return u" >= ";
    default: return nullptr;
    }
}

} // namespace

String DbSqlDialect::ColumnRef(const String& alias, const String& column) const {
    // The alias is written even when empty, and as it is: one word or
    // already quoted.
    String s = alias.empty() ? alias : Bare(alias, u"The alias");
    s += u'.';
    s += Quoted(column);
    return s;
}

void DbSqlDialect::RaiseInvalidOperator(const char16_t* routine, int32_t op, const String& column) const {
    String where = ClassName();
    where += u':';
    where += routine;
    where += u" method";
    RaiseError(errnum::ErrInvalidConditionOperator, where, {Variant(NumberToText(op)), Variant(column)});
}

double DbSqlDialect::DecodeDateValue(const String& value) {
    // "NULL" keeps the zero date, 1899-12-30 at midnight.
    return value == u"NULL" ? 0.0 : decoder_.DecodeDate(value);
}

String DbSqlDialect::NullValueCondition(const char16_t* routine, const String& c, int32_t op,
                                        const String& column) const {
    switch (op) {
    case dcoEqualto:
    case dcoLessThanEqualTo:
    case dcoGreaterThanEqualTo: return c + u" IS NULL ";
    case dconotequalto:
    case dcoLessThan:
    case dcoGreaterThan: return c + u" IS NOT NULL ";
    default: RaiseInvalidOperator(routine, op, column);
    }
}

String DbSqlDialect::CriteriaClause(const String& Alias, const String& psColumn, int32_t plDataType,
                                    int32_t plOperator, const String& psValue) {
    ZOL_DIALECT_ROUTINE(u"IDbSqlBuilder_CriteriaClause");
    try {
        switch (plDataType) {
        case dtVarChar:
        case dtCharBLOB:
            ZOL_LN;
            return GetStringCondition(Alias, psColumn, plOperator, DecodeValue(psValue, dtVarChar));
        case dtInteger:
        case dtUnsignedInteger:
            ZOL_LN;
            return GetIntegerCondition(Alias, psColumn, plOperator, DecodeValue(psValue, plDataType));
        case dtDate:
            ZOL_LN;
            return GetDateCondition(Alias, psColumn, plOperator, psValue);
        case dtTime:
            ZOL_LN;
            return GetTimeCondition(Alias, psColumn, plOperator, psValue);
        case dtDateTime:
            ZOL_LN;
            return GetDateTimeCondition(Alias, psColumn, plOperator, psValue);
        case dtBoolean:
            ZOL_LN;
            return GetBooleanCondition(Alias, psColumn, plOperator, DecodeValue(psValue, dtBoolean));
        case dtDouble:
        case dtSingle:
        case dtDecimal:
        case dtCurrency:
            ZOL_LN;
            return GetDecimalCondition(Alias, psColumn, plOperator, DecodeValue(psValue, plDataType));
        default:
            // Binary columns and unknown groups have no predicate.
            return {};
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetStringCondition(const String& alias, const String& column, int32_t op,
                                        const String& value) {
    ZOL_DIALECT_METHOD(u"GetStringCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        const bool empty = value.empty();
        String base;
        switch (op) {
        case dcoEqualto: base = c + u" = " + DBString(value, false, 255); break;
        case dconotequalto: base = c + u" <> " + DBString(value, false, 255); break;
        case dcoBeginsWith: base = c + u" LIKE " + DBString(value + u"%", false, 255); break;
        case dcoEndsWith: base = c + u" LIKE " + DBString(u"%" + value, false, 255); break;
        case dcoContains:
            base = c + u" LIKE " + DBString(empty ? String() : u"%" + value + u"%", false, 255);
            break;
        case dcoDoesNotBeginWith: base = c + u" NOT LIKE " + DBString(value + u"%", false, 255); break;
        case dcoDoesNotEndWith: base = c + u" NOT LIKE " + DBString(u"%" + value, false, 255); break;
        case dcoDoesNotContain:
            base = c + u" NOT LIKE " + DBString(empty ? String() : u"%" + value + u"%", false, 255);
            break;
        case dcoNull:
            return u"(" + c + u" = " + DBString(String(), false, 255) + u" OR " + c + u" IS NULL) ";
        case dcoNotNull:
            return u"(" + c + u" <> " + DBString(String(), false, 255) + u" AND " + c + u" IS NOT NULL) ";
        default: ZOL_LN; RaiseInvalidOperator(u"GetStringCondition", op, column);
        }
        // A missing text is what a person means by an empty one.
        switch (op) {
        case dcoEqualto:
        case dcoBeginsWith:
        case dcoEndsWith:
        case dcoContains:
            if (empty) return u"(" + base + u" OR " + c + u" IS NULL)";
            return base;
        default:
            if (empty) return u"(" + base + u" AND " + c + u" IS NOT NULL)";
            return u"(" + base + u" OR " + c + u" IS NULL)";
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetDecimalCondition(const String& alias, const String& column, int32_t op,
                                         const String& value) {
    ZOL_DIALECT_METHOD(u"GetDecimalCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        if (value == u"NULL") {
            ZOL_LN;
            return NullValueCondition(u"GetDecimalCondition", c, op, column);
        }
        if (op >= dcoEqualto && op <= dcoGreaterThanEqualTo) return c + ComparisonPiece(op) + value;
        if (op == dcoNull) return c + u" IS NULL ";
        if (op == dcoNotNull) return c + u" IS NOT NULL ";
        ZOL_LN;
        RaiseInvalidOperator(u"GetDecimalCondition", op, column);
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetIntegerCondition(const String& alias, const String& column, int32_t op,
                                         const String& value) {
    ZOL_DIALECT_METHOD(u"GetIntegerCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        if (value == u"NULL") {
            ZOL_LN;
            return NullValueCondition(u"GetIntegerCondition", c, op, column);
        }
        // The number goes into the text as it stands.
        ZOL_LN;
        CheckedNumber(value, op == dcoIn);
        if (op >= dcoEqualto && op <= dcoGreaterThanEqualTo) return c + ComparisonPiece(op) + value;
        switch (op) {
        case dcoNull: return c + u" IS NULL ";
        case dcoNotNull: return c + u" IS NOT NULL ";
        case dcoContains:
            // A flag test; without a bit operator the engine divides by the
            // flag and looks at the lowest bit.
            if (traits_.modBitTest) return u"(" + c + u"\\" + value + u") mod 2 = " + value;
            return u"(" + c + u" & " + value + u") = " + value;
        case dcoDoesNotContain:
            if (traits_.modBitTest) return u"(" + c + u"\\" + value + u") mod 2 = 0 ";
            return u"(" + c + u" & " + value + u") = 0 ";
        case dcoIn: return u"(" + c + u" IN (" + value + u"))";
        default: ZOL_LN; RaiseInvalidOperator(u"GetIntegerCondition", op, column);
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetBooleanCondition(const String& alias, const String& column, int32_t op,
                                         const String& value) {
    ZOL_DIALECT_METHOD(u"GetBooleanCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        switch (op) {
        case dcoEqualto: return c + u" = " + value;
        case dconotequalto: return c + u"<> " + value;
        case dcoNull: return c + u" IS NULL ";
        case dcoNotNull: return c + u" IS NOT NULL ";
        default: ZOL_LN; RaiseInvalidOperator(u"GetBooleanCondition", op, column);
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetDateTimeCondition(const String& alias, const String& column, int32_t op,
                                          const String& value) {
    ZOL_DIALECT_METHOD(u"GetDateTimeCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        const double d = DecodeDateValue(value);
        const int64_t x = CountOf(d);
        const double now = Clock::Now();
        ZOL_LN;
        if (const char16_t* piece = ComparisonPiece(op); piece && op != dcoEqualto && op != dcoOn &&
                                                         op != dconotequalto)
            return c + piece + DBDateTime(d);
        double start = 0, end = 0;
        switch (op) {
        case dcoEqualto:
        case dcoOn:
        case dconotequalto:
            // One full day from the moment given, not the calendar day.
            return c + (op == dconotequalto ? u" NOT BETWEEN " : u" BETWEEN ") + DBDateTime(d) + u" AND " +
                   DBDateTime(AddSeconds(d, kLastSecondOfDay));
        case dcoNull: return c + u" IS NULL ";
        case dcoNotNull: return c + u" IS NOT NULL ";
        case dcoYesterday:
        case dcoToday:
        case dcoTomorrow:
            start = AddDays(DatePart(now), op - dcoToday);
            end = AddSeconds(start, kLastSecondOfDay);
            break;
        case dcoNextSevenDays:
            start = now;
            end = AddSeconds(AddDays(now, 7), kLastSecondOfDay);
            break;
        case dcoLastSevenDays:
            end = now;
            start = AddDays(DatePart(end), -7);
            break;
        case dcoNextWeek:
            start = AddDays(now, 8 - WeekdayLocal(now));
            end = AddSeconds(AddDays(start, 7), -1);
            break;
        case dcoLastXHours:
            end = now;
            start = AddSeconds(end, -x * 3600);
            break;
        case dcoNextXHours:
            start = now;
            end = AddSeconds(start, x * 3600);
            break;
        case dcoLastXDays:
            // Looks forward like dcoNextXDays, without the last second of
            // the day; callers have always had it so.
            start = now;
            end = DatePart(AddDays(now, x));
            break;
        case dcoNextXDays:
            start = now;
            end = AddSeconds(DatePart(AddDays(now, x)), kLastSecondOfDay);
            break;
        default:
            ZOL_LN;
            if (!SharedRange(op, now, x, WeekdaySunday, start, end))
                RaiseInvalidOperator(u"GetDateTimeCondition", op, column);
        }
        ZOL_LN;
        return c + u" BETWEEN " + DBDateTime(start) + u" AND " + DBDateTime(end);
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetDateCondition(const String& alias, const String& column, int32_t op,
                                      const String& value) {
    ZOL_DIALECT_METHOD(u"GetDateCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        const double decoded = DecodeDateValue(value);
        const double d = DatePart(decoded);
        const int64_t x = CountOf(decoded);
        const double now = Clock::Now();
        ZOL_LN;
        if (const char16_t* piece = ComparisonPiece(op)) return c + piece + DBDate(d);
        double start = 0, end = 0;
        switch (op) {
        case dcoNull: return c + u" IS NULL ";
        case dcoNotNull: return c + u" IS NOT NULL ";
        case dcoYesterday:
        case dcoToday:
        case dcoTomorrow: return c + u" = " + DBDate(AddDays(DatePart(now), op - dcoToday));
        case dcoNextSevenDays:
            start = DatePart(now);
            end = AddDays(DatePart(start), 7);
            break;
        case dcoLastSevenDays:
            end = DatePart(now);
            start = AddDays(DatePart(end), -7);
            break;
        case dcoNextWeek:
            start = DatePart(AddDays(now, 8 - WeekdayLocal(now)));
            end = AddSeconds(AddDays(start, 7), -1);
            break;
        case dcoLastXDays:
            end = now;
            start = AddDays(DatePart(end), -x);
            break;
        case dcoNextXDays:
            start = now;
            end = AddSeconds(AddDays(DatePart(start), x), kLastSecondOfDay);
            break;
        case dcoLastXHours:
        case dcoNextXHours: ZOL_LN; RaiseInvalidOperator(u"GetDateCondition", op, column);
        default:
            ZOL_LN;
            if (!SharedRange(op, now, x, WeekdayLocal, start, end))
                RaiseInvalidOperator(u"GetDateCondition", op, column);
        }
        ZOL_LN;
        return c + u" BETWEEN " + DBDate(start) + u" AND " + DBDate(end);
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetTimeCondition(const String& alias, const String& column, int32_t op,
                                      const String& value) {
    ZOL_DIALECT_METHOD(u"GetTimeCondition");
    try {
        ZOL_LN;
        const String c = ColumnRef(alias, column);
        if (value == u"NULL") {
            ZOL_LN;
            return NullValueCondition(u"GetTimeCondition", c, op, column);
        }
        // The literal first: a bad value fails before the operator is looked at.
        ZOL_LN;
        const double d = decoder_.DecodeDate(value);
        const String literal = DBTime(d);
        if (const char16_t* piece = ComparisonPiece(op)) return c + piece + literal;
        switch (op) {
        case dcoNull: return c + u" IS NULL ";
        case dcoNotNull: return c + u" IS NOT NULL ";
        case dcoLastXHours:
        case dcoNextXHours: {
            // Only the time of day is written, so a range across midnight
            // comes out with its start behind its end.
            ZOL_LN;
            const double now = Clock::Now();
            const int64_t seconds = CountOf(d) * 3600;
            const double start = op == dcoLastXHours ? AddSeconds(now, -seconds) : now;
            const double end = op == dcoLastXHours ? now : AddSeconds(now, seconds);
            return c + u" BETWEEN " + DBTime(start) + u" AND " + DBTime(end);
        }
        default: ZOL_LN; RaiseInvalidOperator(u"GetTimeCondition", op, column);
        }
    }
    ZOL_RERAISE
}

} // namespace zolsdk
