// The rows of a multi-row insert, rendered straight into the statement.
//
// A batch holds a thousand rows and more; decoding every value into a text
// of its own, and rendering that again, made the builder the largest cost
// of a copy. Here the values that make up nearly all real data (NULL,
// integers, plain texts, dates, canonical numbers) are written directly
// from the record, with the same characters GetValue gives them; anything
// else, and anything that might fail, goes through GetValue itself, so its
// text and its failure are GetValue's own.
#include "dialects/sql_dialect.hpp"
#include "support/numbers.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "zolsdk/platform/datetime.hpp"

namespace zolsdk {

namespace {

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool IsNullWord(StringView v) {
    if (v.size() != 4) return false;
    static constexpr char16_t kUpper[] = u"NULL";
    for (size_t i = 0; i < 4; ++i)
        if ((v[i] & ~char16_t(0x20)) != kUpper[i]) return false;
    return true;
}

// -?[0-9]+: what CheckedNumber lets through unchanged, and the common case.
bool IsPlainInteger(StringView v) {
    size_t i = v.size() > 0 && v[0] == u'-' ? 1 : 0;
    if (i == v.size()) return false;
    for (; i < v.size(); ++i)
        if (!IsDigit(v[i])) return false;
    return true;
}

// A number as the platform writes it: no exponent, no leading or trailing
// zero that the text form would drop, not "-0", at most `maxDigits`
// significant digits, and no more than `maxLeadingZeros` zeros behind the
// point before the first digit (below that the text form switches to an
// exponent). Reading such a text and writing it again gives it back.
bool IsCanonicalNumber(StringView v, size_t maxDigits, size_t maxLeadingZeros) {
    size_t i = 0;
    const bool negative = !v.empty() && v[0] == u'-';
    if (negative) ++i;
    const size_t intFrom = i;
    while (i < v.size() && IsDigit(v[i])) ++i;
    const size_t intLen = i - intFrom;
    if (intLen == 0 || (intLen > 1 && v[intFrom] == u'0')) return false;
    const bool zeroInt = v[intFrom] == u'0';
    size_t digits = zeroInt ? 0 : intLen;
    if (i == v.size()) return !(negative && zeroInt) && digits <= maxDigits;
    if (v[i] != u'.') return false;
    const size_t fracFrom = ++i;
    while (i < v.size() && IsDigit(v[i])) ++i;
    if (i != v.size() || i == fracFrom || v[i - 1] == u'0') return false;
    size_t f = fracFrom;
    if (zeroInt) {
        while (v[f] == u'0') ++f;
        if (f - fracFrom > maxLeadingZeros) return false;
    }
    digits += i - f;
    return digits <= maxDigits;
}

int Number(StringView v, size_t from, size_t length) {
    int n = 0;
    for (size_t i = from; i < from + length; ++i) n = n * 10 + (v[i] - u'0');
    return n;
}

void PutDigits(String& out, int value, int width) {
    char16_t buf[8];
    for (int i = width - 1; i >= 0; --i) {
        buf[i] = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
    }
    out.append(buf, static_cast<size_t>(width));
}

// The parts of an encoded date ("yyyymmddThhnnss"), when they name a real
// moment of the years 1900 to 9999 that DateSerial and SplitDate give back
// unchanged.
bool ReadEncodedDate(StringView v, DateParts& p) {
    if (v.size() != 15 || v[8] != u'T') return false;
    for (size_t i = 0; i < 15; ++i)
        if (i != 8 && !IsDigit(v[i])) return false;
    p.year = Number(v, 0, 4);
    p.month = Number(v, 4, 2);
    p.day = Number(v, 6, 2);
    p.hour = Number(v, 9, 2);
    p.minute = Number(v, 11, 2);
    p.second = Number(v, 13, 2);
    if (p.year < 1900 || p.month < 1 || p.month > 12 || p.day < 1 || p.hour > 23 || p.minute > 59 || p.second > 59)
        return false;
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (p.year % 4 == 0 && p.year % 100 != 0) || p.year % 400 == 0;
    return p.day <= kDays[p.month - 1] + (p.month == 2 && leap ? 1 : 0);
}

bool NeedsEscape(char16_t c) { return c == u'%' || c == u'\'' || c == u'\\' || c == 0; }

} // namespace

bool DbSqlDialect::AppendDirectValue(String& out, StringView v, int32_t group, const String& substitute,
                                     bool plainNumbers) const {
    const bool inlineMark = substitute == u"=";
    if (group != dtCharBLOB && group != dtBinaryBLOB && IsNullWord(v)) {
        out += u"NULL";
        return true;
    }
    switch (group) {
    case dtVarChar:
    case dtCharBLOB: {
        if (group == dtCharBLOB) {
            if (!inlineMark) {
                out += substitute;
                return true;
            }
            if (IsNullWord(v)) {
                out += u"NULL";
                return true;
            }
        }
        // Only a text that decodes and escapes to itself, and that no limit
        // cuts, is written as it stands.
        if (group == dtVarChar && v.size() > 255) return false;
        for (char16_t c : v)
            if (NeedsEscape(c)) return false;
        out += traits_.stringOpen;
        out += v;
        out += u'\'';
        return true;
    }
    case dtInteger:
    case dtUnsignedInteger:
        if (!IsPlainInteger(v)) return false;
        out += v;
        return true;
    case dtDate:
    case dtTime:
    case dtDateTime: {
        DateParts p{};
        if (!traits_.dateOpen || !traits_.timeOpen || !ReadEncodedDate(v, p)) return false;
        if (group == dtTime) {
            out += traits_.timeOpen;
        } else {
            out += traits_.dateOpen;
            if (traits_.yearFirst) {
                PutDigits(out, p.year, 4), out += u'-', PutDigits(out, p.month, 2), out += u'-';
                PutDigits(out, p.day, 2);
            } else {
                PutDigits(out, p.month, 2), out += u'/', PutDigits(out, p.day, 2), out += u'/';
                PutDigits(out, p.year, 4);
            }
            if (group == dtDate) {
                out += traits_.dateClose;
                return true;
            }
            out += u' ';
        }
        PutDigits(out, p.hour, 2), out += u':', PutDigits(out, p.minute, 2), out += u':';
        PutDigits(out, p.second, 2);
        out += group == dtTime ? traits_.timeClose : traits_.dateClose;
        return true;
    }
    case dtDouble:
        if (!plainNumbers || !IsCanonicalNumber(v, 15, 5)) return false;
        out += v;
        return true;
    case dtDecimal:
        if (!plainNumbers || !IsCanonicalNumber(v, 27, 27)) return false;
        out += v;
        return true;
    case dtBinaryBLOB:
        out += inlineMark ? String(u"NULL") : substitute;
        return true;
    default: return false;
    }
}

void DbSqlDialect::AppendBulkRows(String& out, const std::vector<TypedColumn>& columns, const String& values,
                                  const String& substitute, StringView before, StringView after,
                                  StringView between) {
    const String mark = RowMark();
    const String escapedMark = mark.substr(0, 2) + u"%" + mark.substr(2);
    if (values.empty()) {
        // No rows at all, as the split gives none.
        for (const String& row : BulkRows(columns, values, substitute)) out += before, out += row, out += after;
        return;
    }
    // Numbers keep their text only where the user's separators are those
    // of the record ("." and no grouping that a number could hold).
    const String thousands = GetThousandSeparator();
    const bool plainNumbers = GetDecimalSeparator() == u"." &&
                              (thousands.empty() || thousands.find_first_of(u"0123456789.-") == String::npos);
    const StringView all(values);
    size_t from = 0;
    bool first = true;
    String restored;
    while (true) {
        const size_t end = all.find(mark, from);
        StringView row = all.substr(from, end == StringView::npos ? StringView::npos : end - from);
        if (row.find(escapedMark) != StringView::npos) {
            restored = ReplaceAll(row, escapedMark, mark);
            row = restored;
        }
        if (!first) out += between;
        first = false;
        out += before;
        const size_t rowStart = out.size();
        bool direct = !row.empty();
        size_t i = 0, pos = 0;
        while (direct) {
            const size_t comma = row.find(u',', pos);
            const StringView field = row.substr(pos, comma == StringView::npos ? StringView::npos : comma - pos);
            if (i >= columns.size()) {
                direct = false;
                break;
            }
            if (i > 0) out += u',';
            if (!AppendDirectValue(out, field, columns[i].group, substitute, plainNumbers))
                out += GetValue(String(field), columns[i].group, substitute);
            ++i;
            if (comma == StringView::npos) break;
            pos = comma + 1;
        }
        if (!direct) {
            // The rare row (empty, or with more values than columns) takes
            // the general road, which also raises its failure.
            out.resize(rowStart);
            out += BulkRowValues(columns, String(row), substitute);
        }
        out += after;
        if (end == StringView::npos) break;
        from = end + mark.size();
    }
}

} // namespace zolsdk
