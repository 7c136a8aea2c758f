// Value rendering of every dialect: encoded values of the transfer text as
// the engine's literals.
#include <cstdio>

#include "dialects/sql_dialect.hpp"
#include "support/numbers.hpp"
#include "support/replace_text.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk {

namespace {

String Digits(int value, int width) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*d", width, value);
    return Ascii(buf);
}

String TimeOfDay(const DateParts& p) {
    return Digits(p.hour, 2) + u":" + Digits(p.minute, 2) + u":" + Digits(p.second, 2);
}

// The length of the longest head of an escaped literal body, no longer than
// `limit`, that ends between two pieces.
size_t WholePiecesWithin(const String& body, size_t limit, bool backslashEscapes) {
    size_t i = 0;
    while (i < body.size()) {
        const char16_t c = body[i];
        size_t piece = 1;
        if (c == u'\'' || (backslashEscapes && c == u'\\'))
            piece = 2; // always doubled by the escaping above
        else if (c >= 0xD800 && c <= 0xDBFF && i + 1 < body.size() && body[i + 1] >= 0xDC00 && body[i + 1] <= 0xDFFF)
            piece = 2;
        if (i + piece > limit) break;
        i += piece;
    }
    return i;
}

} // namespace

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
        case dtUnsignedInteger:
            // Unchanged, so it must be a number: any other text would be
            // read as part of the statement.
            ZOL_LN;
            return CheckedNumber(value, false);
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
    // The limit counts the escaped text. The cut falls only between whole
    // pieces of it (a doubled quote, a doubled backslash, both halves of a
    // surrogate pair), so the literal always closes and holds whole
    // characters; a piece that would cross the limit is left out. Cutting
    // at the bare limit and dropping only a lone last quote left a dangling
    // backslash or an odd run of quotes open, and the rest of the statement
    // was read as SQL.
    if (!noTruncate && maxLength >= 0 && body.size() > static_cast<size_t>(maxLength))
        body.resize(WholePiecesWithin(body, static_cast<size_t>(maxLength), traits_.doubleBackslash));
    s += body;
    s += u'\'';
    return s;
}

} // namespace zolsdk
