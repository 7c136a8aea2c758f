#include "dialects/sql_dialect.hpp"

#include <cmath>
#include <cstdio>

#include "catalog/raise_error.hpp"
#include "support/numbers.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

constexpr int64_t kDay = 86400;
constexpr int64_t kLastSecondOfDay = 86399;

String Digits(int value, int width) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*d", width, value);
    return Ascii(buf);
}

String TimeOfDay(const DateParts& p) {
    return Digits(p.hour, 2) + u":" + Digits(p.minute, 2) + u":" + Digits(p.second, 2);
}

// Calendar arithmetic of the relative date operators.
double AddDays(double date, int64_t days) { return DateAddSeconds(date, days * kDay); }
double AddSeconds(double date, int64_t seconds) { return DateAddSeconds(date, seconds); }

// Adding months keeps the day of the month, falling back to the month's
// last day when that day does not exist (Jan 31 + 1 month = Feb 28 or 29).
double AddMonths(double date, int64_t months) {
    DateParts p = SplitDate(date);
    const int64_t total = static_cast<int64_t>(p.year) * 12 + (p.month - 1) + months;
    const int64_t year = total >= 0 ? total / 12 : -((-total + 11) / 12);
    const int month = static_cast<int>(total - year * 12) + 1;
    const double first = DateSerial(static_cast<int>(year), month, 1);
    const int daysInMonth = static_cast<int>(DateSerial(static_cast<int>(year), month + 1, 1) - first);
    p.year = static_cast<int>(year);
    p.month = month;
    if (p.day > daysInMonth) p.day = daysInMonth;
    return JoinDate(p);
}

double Jan1(int year) { return DateSerial(year, 1, 1); }
int YearOf(double date) { return SplitDate(date).year; }
int DayOf(double date) { return SplitDate(date).day; }
int WeekdaySunday(double date) { return Weekday(date, 1); }
int WeekdayLocal(double date) { return Weekday(date, UserLocale::Current().firstDayOfWeek); }

// The count of a last-X or next-X operator travels as a date whose serial
// number is X; it is rounded half to even as the platform rounds.
int64_t CountOf(double date) { return static_cast<int64_t>(std::nearbyint(date)); }

// Range of the relative operators that the date-and-time routine and the
// date routine share. `weekday` is Ws for date-and-time, Wl for dates in
// the operators over X weeks. False for an operator that is no such range.
bool SharedRange(int32_t op, double now, int64_t x, int (*weekday)(double), double& start, double& end) {
    switch (op) {
    case dcoLastWeek: {
        const double t = DatePart(AddDays(now, -WeekdayLocal(now)));
        start = AddDays(t, -6);
        end = AddSeconds(t, kLastSecondOfDay);
        return true;
    }
    case dcoThisWeek:
        start = DatePart(AddDays(now, 1 - WeekdayLocal(now)));
        end = AddSeconds(AddDays(start, 7), -1);
        return true;
    case dcoThisMonth:
        start = DatePart(AddDays(now, 1 - DayOf(now)));
        end = AddSeconds(AddMonths(start, 1), -1);
        return true;
    case dcoLastMonth: {
        const double t = DatePart(AddDays(now, -DayOf(now)));
        start = AddDays(t, 1 - DayOf(t));
        end = AddSeconds(t, kLastSecondOfDay);
        return true;
    }
    case dcoNextMonth: {
        const double t = AddMonths(now, 1);
        start = DatePart(AddDays(t, 1 - DayOf(t)));
        end = AddSeconds(AddMonths(start, 1), -1);
        return true;
    }
    case dcoThisYear:
    case dcoLastYear:
    case dcoNextYear:
        start = Jan1(YearOf(now) + (op == dcoThisYear ? 0 : op == dcoLastYear ? -1 : 1));
        end = AddSeconds(AddMonths(start, 12), -1);
        return true;
    case dcoLastXWeeks: {
        const double t = DatePart(AddDays(now, -7 * x));
        start = AddDays(t, 1 - weekday(t));
        end = now;
        return true;
    }
    case dcoNextXWeeks: {
        const double t = DatePart(AddDays(now, 7 * x));
        start = now;
        end = AddSeconds(AddDays(t, weekday(t)), -1);
        return true;
    }
    case dcoLastXMonths: {
        const double t = DatePart(AddMonths(now, -x));
        start = AddDays(t, 1 - DayOf(t));
        end = now;
        return true;
    }
    case dcoNextXMonths: {
        const double t = DatePart(AddMonths(now, x));
        const double u = AddDays(t, 1 - DayOf(t));
        start = now;
        end = AddSeconds(AddMonths(u, 1), -1);
        return true;
    }
    case dcoLastXYears:
        start = Jan1(static_cast<int>(YearOf(now) - x));
        end = now;
        return true;
    case dcoNextXYears:
        start = now;
        end = AddSeconds(Jan1(static_cast<int>(YearOf(now) + x + 1)), -1);
        return true;
    default: return false;
    }
}

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
// Grammars

String DbSqlDialect::Quoted(const String& name) const {
    String s = traits_.nameOpen;
    s += name;
    s += traits_.nameClose;
    return s;
}

const String& DbSqlDialect::Field(const std::vector<String>& fields, size_t index) {
    if (index >= fields.size()) RaisePlatform(err::SubscriptOutOfRange);
    return fields[index];
}

int32_t DbSqlDialect::FieldLong(const std::vector<String>& fields, size_t index) {
    return Variant(Field(fields, index)).ToLong();
}

bool DbSqlDialect::FieldBool(const std::vector<String>& fields, size_t index) {
    return Variant(Field(fields, index)).ToBoolean();
}

ColumnRow DbSqlDialect::ReadColumnRow(const String& row) {
    const std::vector<String> f = Split(row, u",", true);
    ColumnRow c;
    c.name = Field(f, 1);
    c.dataType = FieldLong(f, 3);
    c.group = FieldLong(f, 4);
    c.precision = FieldLong(f, 7);
    c.scale = FieldLong(f, 8);
    c.maxLength = FieldLong(f, 9);
    c.nullable = FieldBool(f, 10);
    return c;
}

std::vector<TypedColumn> DbSqlDialect::ReadColumnSet(const String& columnSet) {
    std::vector<TypedColumn> out;
    for (const String& item : Split(columnSet, u",")) {
        TypedColumn c;
        c.group = Variant(item.substr(0, 2)).ToLong();
        c.name = item.size() > 2 ? item.substr(2) : String();
        out.push_back(std::move(c));
    }
    return out;
}

String DbSqlDialect::RowMark() {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%%%X", static_cast<unsigned>(u';'));
    return Ascii(buf);
}

String DbSqlDialect::ColumnList(const std::vector<TypedColumn>& columns) const {
    String s;
    for (const TypedColumn& c : columns) {
        s += u',';
        s += Quoted(c.name);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::ValueList(const std::vector<TypedColumn>& columns, const String& values,
                               const String& substitute) {
    const std::vector<String> v = Split(values, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        s += u',';
        s += GetValue(Field(v, i), columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

std::vector<String> DbSqlDialect::BulkRows(const std::vector<TypedColumn>& columns, const String& values,
                                           const String& substitute) {
    const String mark = RowMark();
    const String escapedMark = mark.substr(0, 2) + u"%" + mark.substr(2);
    std::vector<String> rows;
    for (const String& encodedRow : Split(values, mark))
        rows.push_back(BulkRowValues(columns, ReplaceAll(encodedRow, escapedMark, mark), substitute));
    return rows;
}

String DbSqlDialect::BulkRowValues(const std::vector<TypedColumn>& columns, const String& row,
                                   const String& substitute) {
    const std::vector<String> v = Split(row, u",");
    String s;
    for (size_t i = 0; i < v.size(); ++i) {
        if (i >= columns.size()) RaisePlatform(err::SubscriptOutOfRange);
        s += u',';
        s += GetValue(v[i], columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::Assignments(const String& columnSet, const String& values, const String& substitute) {
    const std::vector<TypedColumn> columns = ReadColumnSet(columnSet);
    const std::vector<String> v = Split(values, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        s += u',';
        s += Quoted(columns[i].name);
        s += u" = ";
        s += GetValue(Field(v, i), columns[i].group, substitute);
    }
    return s.empty() ? s : s.substr(1);
}

String DbSqlDialect::AttributeFilter(const String& attributes, const String& attributeValues,
                                     const String& substitute) {
    const std::vector<TypedColumn> columns = ReadColumnSet(attributes);
    const std::vector<String> v = Split(attributeValues, u",");
    String s;
    for (size_t i = 0; i < columns.size(); ++i) {
        const String& value = Field(v, i);
        s += u" AND ";
        s += Quoted(columns[i].name);
        if (!EqualsNoCase(value, u"null")) {
            s += u" = ";
            s += GetValue(value, columns[i].group, substitute);
        } else {
            s += u" IS NULL ";
        }
    }
    // The first " AND" goes; the blank behind it leads the filter.
    return s.size() > 4 ? s.substr(4) : String();
}

// ---------------------------------------------------------------------------
// Values

String DbSqlDialect::DecodeValue(const String& value, int32_t group) {
    ZOL_DIALECT_ROUTINE(u"DecodeValue");
    try {
        ZOL_LN;
        if (EqualsNoCase(value, u"null")) return u"NULL";
        switch (group) {
        case dtVarChar:
        case dtCharBLOB:
            ZOL_LN;
            return decoder_.DecodeString(value, u"%2C", u",");
        case dtInteger:
        case dtUnsignedInteger: return value;
        case dtDate:
        case dtTime:
        case dtDateTime:
            ZOL_LN;
            return Variant::FromDate(decoder_.DecodeDate(value)).ToString();
        case dtBoolean:
            ZOL_LN;
            return decoder_.DecodeBoolean(value) ? u"True" : u"False";
        case dtDouble:
            ZOL_LN;
            return Variant(decoder_.DecodeDouble(value)).ToString();
        case dtSingle:
            ZOL_LN;
            return Variant(decoder_.DecodeSingle(value)).ToString();
        case dtDecimal:
            ZOL_LN;
            return decoder_.DecodeDecimal(value).ToString();
        case dtCurrency:
            ZOL_LN;
            return Variant(decoder_.DecodeCurrency(value)).ToString();
        default: return {};
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::GetValue(const String& value, int32_t group, const String& substitute) {
    ZOL_DIALECT_ROUTINE(u"GetValue");
    try {
        ZOL_LN;
        // Large values are never tested for null here: their substitute
        // stands for them whatever they hold.
        if (group != dtCharBLOB && group != dtBinaryBLOB && EqualsNoCase(value, u"null")) return u"NULL";
        switch (group) {
        case dtVarChar:
            ZOL_LN;
            return DBString(decoder_.DecodeString(value, u"%2C", u","), false, 255);
        case dtCharBLOB:
            ZOL_LN;
            if (substitute != u"=") return substitute;
            if (EqualsNoCase(value, u"null")) return u"NULL";
            ZOL_LN;
            return DBString(decoder_.DecodeString(value, u"%2C", u","), true, 255);
        case dtInteger:
        case dtUnsignedInteger: return value;
        case dtDate:
            ZOL_LN;
            return DBDate(decoder_.DecodeDate(value));
        case dtTime:
            ZOL_LN;
            return DBTime(decoder_.DecodeDate(value));
        case dtDateTime:
            ZOL_LN;
            return DBDateTime(decoder_.DecodeDate(value));
        case dtBoolean:
            ZOL_LN;
            return DBBoolean(decoder_.DecodeBoolean(value));
        case dtDouble:
            ZOL_LN;
            return DBNumber(Variant(decoder_.DecodeDouble(value)).ToString());
        case dtSingle:
            ZOL_LN;
            return DBNumber(Variant(decoder_.DecodeSingle(value)).ToString());
        case dtDecimal:
            ZOL_LN;
            return DBNumber(decoder_.DecodeDecimal(value).ToString());
        case dtCurrency:
            ZOL_LN;
            return DBNumber(Variant(decoder_.DecodeCurrency(value)).ToString());
        case dtBinaryBLOB:
            // Binary data never stands in a statement.
            return substitute == u"=" ? String(u"NULL") : substitute;
        default: return {};
        }
    }
    ZOL_RERAISE
}

String DbSqlDialect::DBBoolean(bool value) const { return value ? traits_.boolTrue : traits_.boolFalse; }

String DbSqlDialect::DateLiteral(double date, bool withTime) const {
    const DateParts p = SplitDate(date);
    String s = traits_.dateOpen;
    if (traits_.yearFirst)
        s += Digits(p.year, 4) + u"-" + Digits(p.month, 2) + u"-" + Digits(p.day, 2);
    else
        s += Digits(p.month, 2) + u"/" + Digits(p.day, 2) + u"/" + Digits(p.year, 4);
    if (withTime) {
        s += u' ';
        s += TimeOfDay(p);
    }
    s += traits_.dateClose;
    return s;
}

String DbSqlDialect::DBDateTime(double date) const { return DateLiteral(date, true); }

String DbSqlDialect::DBDate(double date) const { return DateLiteral(date, false); }

String DbSqlDialect::DBTime(double date) const {
    String s = traits_.timeOpen;
    s += TimeOfDay(SplitDate(date));
    s += traits_.timeClose;
    return s;
}

String DbSqlDialect::DBNumber(const String& text) const {
    // The number was made text in the user's locale; the engines want a
    // plain point and no grouping.
    String s = Trim(text);
    s = ReplaceAll(s, GetThousandSeparator(), u"");
    return ReplaceAll(s, GetDecimalSeparator(), u".");
}

String DbSqlDialect::DBString(const String& text, bool noTruncate, int32_t maxLength) const {
    String s = traits_.stringOpen;
    if (text.empty()) return s + u"'";
    String body = ReplaceAll(text, String(1, u'\0'), u"\\0");
    body = ReplaceAll(body, u"'", u"''");
    // After the zero escape on purpose: a character 0 leaves as "\\0".
    if (traits_.doubleBackslash) body = ReplaceAll(body, u"\\", u"\\\\");
    if (!noTruncate && maxLength >= 0 && body.size() > static_cast<size_t>(maxLength)) body.resize(maxLength);
    // A cut through a doubled quote leaves half of it at the end: drop it.
    // A doubled quote that is whole stays.
    const size_t n = body.size();
    if (n > 0 && body[n - 1] == u'\'' && (n < 2 || body[n - 2] != u'\'')) body.pop_back();
    s += body;
    s += u'\'';
    return s;
}

// ---------------------------------------------------------------------------
// Criteria

String DbSqlDialect::ColumnRef(const String& alias, const String& column) const {
    // The alias is written even when empty.
    String s = alias;
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
