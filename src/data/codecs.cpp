#include "data/codecs.hpp"

#include <charconv>
#include <cstdio>

#include "support/numbers.hpp"
#include "support/replace_text.hpp"
#include "zolsdk/data/blob.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/error.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
// The platform's number text uses the user's separator; the neutral form
// always has ".", so a record can be read back under any locale.
String Neutral(const String& numberText) { return ReplaceAll(numberText, u",", u"."); }

String TwoDigits(int v) {
    if (v >= 0 && v < 100) return String{static_cast<char16_t>(u'0' + v / 10), static_cast<char16_t>(u'0' + v % 10)};
    return IntText(v);
}

// 1-based substring that, like the platform's, gives what is there when the
// text is shorter, and "" when the start is behind its end.
String Mid(StringView text, size_t start, size_t length) {
    if (start > text.size()) return {};
    return String(text.substr(start - 1, length));
}

int FieldAt(StringView text, size_t start, size_t length) {
    // Converted as the platform converts text to an integer, so a short or
    // broken text fails with its type mismatch.
    return Variant(Mid(text, start, length)).ToInteger();
}
} // namespace

String DbGenericEncoder::Encode(const Variant& pvValue, int32_t plDataTypeGroup, StringView psChar,
                                StringView psEncodeTo) {
    ZOL_ROUTINE(u"dbGenericEncoder:Encode Ln ");
    try {
        switch (plDataTypeGroup) {
        case 1:
            ZOL_LN;
            return EncodeString(pvValue.ToString(), psChar, psEncodeTo);
        case 2: {
            ZOL_LN;
            Ref<DbBlob> blob = pvValue.As<DbBlob>();
            ZOL_LN;
            if (blob.IsNothing()) return {};
            return EncodeString(blob->text(), psChar, psEncodeTo);
        }
        case 3:
        case 4:
            ZOL_LN;
            return pvValue.ToString();
        case 5:
        case 6:
        case 7:
            ZOL_LN;
            return EncodeDate(pvValue.ToDate());
        case 8:
            ZOL_LN;
            return EncodeBoolean(pvValue.ToBoolean());
        case 9:
            ZOL_LN;
            return EncodeDouble(pvValue.ToDouble());
        case 11:
            ZOL_LN;
            return EncodeSingle(pvValue.ToSingle());
        case 12:
            ZOL_LN;
            return EncodeDecimal(pvValue);
        case 13:
            ZOL_LN;
            return EncodeCurrency(pvValue.ToCurrency());
        default:
            // Unknown and binary values have no text form.
            return {};
        }
    }
    ZOL_RERAISE
}

String DbGenericEncoder::EncodeString(StringView text, StringView psChar, StringView psEncodeTo) {
    // Double the escape first, then put it where the delimiter was. Decoding
    // is not the exact inverse of this (two delimiters side by side come
    // back as the escape); the builders read records by that same rule.
    // Most texts hold neither: they are their own encoding.
    if (text.find(psChar) == StringView::npos && text.find(psEncodeTo) == StringView::npos) return String(text);
    String doubled(psEncodeTo);
    doubled += psEncodeTo;
    return ReplaceAll(ReplaceAll(text, psEncodeTo, doubled), psChar, psEncodeTo);
}

String DbGenericEncoder::EncodeDate(double ptValue) {
    const DateParts p = SplitDate(ptValue);
    if (p.year >= 0 && p.year <= 9999 && p.month >= 0 && p.month < 100 && p.day >= 0 && p.day < 100 && p.hour >= 0 &&
        p.hour < 100 && p.minute >= 0 && p.minute < 100 && p.second >= 0 && p.second < 100) {
        // The usual date, written in one go.
        char16_t buf[20];
        size_t n = 0;
        char digits[8];
        const char* end = std::to_chars(digits, digits + sizeof digits, p.year).ptr;
        for (const char* c = digits; c != end; ++c) buf[n++] = static_cast<char16_t>(*c);
        for (int v : {p.month, p.day, -1, p.hour, p.minute, p.second}) {
            if (v < 0) {
                buf[n++] = u'T';
                continue;
            }
            buf[n++] = static_cast<char16_t>(u'0' + v / 10);
            buf[n++] = static_cast<char16_t>(u'0' + v % 10);
        }
        return String(buf, n);
    }
    // The year has no padding: year 999 is written with three digits.
    String out = IntText(p.year);
    out += TwoDigits(p.month);
    out += TwoDigits(p.day);
    out += u'T';
    out += TwoDigits(p.hour);
    out += TwoDigits(p.minute);
    out += TwoDigits(p.second);
    return out;
}

String DbGenericEncoder::EncodeDecimal(const Variant& value) {
    return Neutral(Variant(value.ToDecimal()).ToString());
}

String DbGenericEncoder::EncodeCurrency(Currency value) { return Neutral(Variant(value).ToString()); }

String DbGenericEncoder::EncodeBoolean(bool pbValue) { return pbValue ? u"-1" : u"0"; }

String DbGenericEncoder::EncodeDouble(double pdValue) { return Neutral(Variant(pdValue).ToString()); }

String DbGenericEncoder::EncodeSingle(float value) { return Neutral(Variant(value).ToString()); }

DbGenericDecoder::DbGenericDecoder() : decimalSeparator_(GetDecimalSeparator()) {}

void DbGenericDecoder::Decode(const Variant& poValue, StringView psDataTypeGroup) {
    ZOL_ROUTINE(u"dbGenericDecoder:Decode Ln ");
    try {
        // Kept for the shape of the class: nothing calls it and it does nothing.
        (void)poValue;
        (void)psDataTypeGroup;
    }
    ZOL_RERAISE
}

String DbGenericDecoder::DecodeString(StringView text, StringView psChar, StringView psDecodeTo) {
    ZOL_ROUTINE(u"DbGenericDecoder:DecodeString Ln ");
    try {
        ZOL_LN;
        String out = ReplaceAll(text, psChar, psDecodeTo);
        String doubled(psDecodeTo);
        doubled += psDecodeTo;
        ZOL_LN;
        return ReplaceAll(out, doubled, psChar);
    }
    ZOL_RERAISE
}

double DbGenericDecoder::DecodeDate(StringView text) {
    // Fixed positions: a year written with fewer than four digits is misread,
    // and the "T" at position 9 is never looked at.
    const int year = FieldAt(text, 1, 4);
    const int month = FieldAt(text, 5, 2);
    const int day = FieldAt(text, 7, 2);
    const int hour = FieldAt(text, 10, 2);
    const int minute = FieldAt(text, 12, 2);
    const int second = FieldAt(text, 14, 2);
    const double date = DateSerial(year, month, day);
    return DateAddSeconds(date, static_cast<int64_t>(hour) * 3600 + static_cast<int64_t>(minute) * 60 + second);
}

String DbGenericDecoder::Localised(StringView text) const { return ReplaceAll(text, u".", decimalSeparator_); }

Variant DbGenericDecoder::DecodeDecimal(StringView text) { return Variant(Variant(Localised(text)).ToDecimal()); }

Currency DbGenericDecoder::DecodeCurrency(StringView text) { return Variant(Localised(text)).ToCurrency(); }

bool DbGenericDecoder::DecodeBoolean(StringView text) { return Variant(text).ToBoolean(); }

double DbGenericDecoder::DecodeDouble(StringView text) { return Variant(Localised(text)).ToDouble(); }

float DbGenericDecoder::DecodeSingle(StringView text) { return Variant(Localised(text)).ToSingle(); }

} // namespace zolsdk
