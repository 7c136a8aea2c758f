#include "zolsdk/platform/variant.hpp"

#include <algorithm>
#include <charconv>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/error.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk {

namespace {
char16_t DecSep() {
    const String& s = UserLocale::Current().decimalSeparator;
    return s.empty() ? u'.' : s[0];
}

// Round half to even, as the platform's integer conversions do.
double RoundEven(double v) { return std::nearbyint(v); }

constexpr double kMinDate = -657434.0;  // 0100-01-01
constexpr double kMaxDate = 2958465.99999; // 9999-12-31 23:59:59

// Digits and exponent of a value rounded to `digits` significant digits.
String FormatSignificant(double v, int digits, int sciFrom, char16_t sep) {
    // The platform has no text for infinities or NaN: they only arise from an
    // overflow that it would have reported.
    if (!std::isfinite(v)) RaisePlatform(err::Overflow);
    if (v == 0) return u"0";
    // [-]d.ddddde[+-]xx, correctly rounded to `digits` significant digits.
    char buf[64];
    const char* end = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, digits - 1).ptr;
    const char* p = buf;
    bool neg = *p == '-';
    if (neg) ++p;
    const char* e = std::find(p, end, 'e');
    int exp = 0;
    std::from_chars(e + 1 + (e[1] == '+'), end, exp);
    // The significant digits without the point, trailing zeros dropped.
    char mant[64];
    size_t m = 0;
    for (const char* c = p; c != e; ++c)
        if (*c != '.') mant[m++] = *c;
    while (m > 1 && mant[m - 1] == '0') --m;
    char16_t out[96];
    size_t n = 0;
    if (neg) out[n++] = u'-';
    auto put = [&](char c) { out[n++] = static_cast<char16_t>(c); };
    if (exp >= sciFrom || exp < -6) {
        put(mant[0]);
        if (m > 1) {
            out[n++] = sep;
            for (size_t i = 1; i < m; ++i) put(mant[i]);
        }
        put('E');
        put(exp < 0 ? '-' : '+');
        int a = exp < 0 ? -exp : exp;
        if (a >= 100) put(static_cast<char>('0' + a / 100));
        put(static_cast<char>('0' + a / 10 % 10));
        put(static_cast<char>('0' + a % 10));
    } else if (exp >= 0) {
        size_t whole = static_cast<size_t>(exp) + 1;
        for (size_t i = 0; i < whole; ++i) put(i < m ? mant[i] : '0');
        if (m > whole) {
            out[n++] = sep;
            for (size_t i = whole; i < m; ++i) put(mant[i]);
        }
    } else {
        put('0');
        out[n++] = sep;
        for (int i = 0; i < -exp - 1; ++i) put('0');
        for (size_t i = 0; i < m; ++i) put(mant[i]);
    }
    return String(out, n);
}

int64_t CheckedRound(double d, double lo, double hi) {
    if (std::isnan(d)) RaisePlatform(err::Overflow);
    double r = RoundEven(d);
    if (r < lo || r > hi) RaisePlatform(err::Overflow);
    return static_cast<int64_t>(r);
}

// Normalised ASCII form of a number written with the user's separators:
// returns false when the text is not a number.
bool NormaliseNumber(StringView text, std::string& out, bool& isHex, int64_t& hexValue) {
    String t = Trim(text);
    isHex = false;
    if (t.size() >= 2 && t[0] == u'&' && (t[1] == u'H' || t[1] == u'h' || t[1] == u'O' || t[1] == u'o')) {
        int base = (t[1] == u'H' || t[1] == u'h') ? 16 : 8;
        if (t.size() == 2) return false;
        uint64_t v = 0;
        for (size_t i = 2; i < t.size(); ++i) {
            int d;
            char16_t c = t[i];
            if (c >= u'0' && c <= u'9') d = c - u'0';
            else if (c >= u'a' && c <= u'f') d = c - u'a' + 10;
            else if (c >= u'A' && c <= u'F') d = c - u'A' + 10;
            else return false;
            if (d >= base) return false;
            v = v * static_cast<uint64_t>(base) + static_cast<uint64_t>(d);
            if (v > 0xFFFFFFFFull) return false;
        }
        // &H values are 16 or 32 bits and wrap into the signed range.
        isHex = true;
        hexValue = v <= 0xFFFF ? static_cast<int16_t>(v) : static_cast<int32_t>(v);
        return true;
    }
    const UserLocale& loc = UserLocale::Current();
    char16_t dec = loc.decimalSeparator.empty() ? u'.' : loc.decimalSeparator[0];
    char16_t thou = loc.thousandSeparator.empty() ? 0 : loc.thousandSeparator[0];
    size_t i = 0;
    out.clear();
    if (i < t.size() && (t[i] == u'+' || t[i] == u'-')) { if (t[i] == u'-') out += '-'; ++i; }
    bool digits = false, frac = false;
    for (; i < t.size(); ++i) {
        char16_t c = t[i];
        if (c >= u'0' && c <= u'9') { out += static_cast<char>(c); digits = true; }
        else if (c == dec && !frac) { out += '.'; frac = true; }
        else if (thou && c == thou && !frac) continue;
        else break;
    }
    if (!digits) return false;
    if (i < t.size() && (t[i] == u'E' || t[i] == u'e' || t[i] == u'D' || t[i] == u'd')) {
        out += 'e';
        ++i;
        if (i < t.size() && (t[i] == u'+' || t[i] == u'-')) out += static_cast<char>(t[i++]);
        bool ed = false;
        while (i < t.size() && t[i] >= u'0' && t[i] <= u'9') { out += static_cast<char>(t[i++]); ed = true; }
        if (!ed) return false;
    }
    return i == t.size();
}
} // namespace

String DoubleText(double v, char16_t sep) { return FormatSignificant(v, 15, 15, sep); }
// A Single's text is the shortest text that reads back as the same float:
// its digits come from the shortest round-trip form, laid out as the
// platform lays out a Single (plain up to seven integer digits and down to
// 1E-06, otherwise with an exponent of at least two digits).
String SingleText(float v, char16_t sep) {
    if (!std::isfinite(v)) RaisePlatform(err::Overflow);
    if (v == 0) return u"0";
    char buf[48];
    auto end = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific).ptr;
    std::string s(buf, end); // [-]d[.ddd]e[+-]xx
    bool neg = s[0] == '-';
    if (neg) s.erase(0, 1);
    size_t e = s.find('e');
    int exp = std::atoi(s.c_str() + e + 1);
    std::string mant = s.substr(0, 1) + (e > 2 ? s.substr(2, e - 2) : "");
    std::string out;
    if (exp >= 7 || exp < -6) {
        out = mant.substr(0, 1);
        if (mant.size() > 1) out += "." + mant.substr(1);
        char eb[16];
        std::snprintf(eb, sizeof eb, "E%c%02d", exp < 0 ? '-' : '+', exp < 0 ? -exp : exp);
        out += eb;
    } else if (exp >= 0) {
        if (static_cast<int>(mant.size()) <= exp + 1) out = mant + std::string(static_cast<size_t>(exp + 1) - mant.size(), '0');
        else out = mant.substr(0, static_cast<size_t>(exp + 1)) + "." + mant.substr(static_cast<size_t>(exp + 1));
    } else {
        out = "0." + std::string(static_cast<size_t>(-exp - 1), '0') + mant;
    }
    if (neg) out.insert(out.begin(), '-');
    String r = Ascii(out);
    for (auto& c : r) if (c == u'.') c = sep;
    return r;
}

String CurrencyText(Currency c, char16_t sep) {
    return Decimal::FromParts(c.raw < 0 ? static_cast<Decimal::u128>(-(c.raw + 1)) + 1 : static_cast<Decimal::u128>(c.raw), 4, c.raw < 0)
        .ToText(sep);
}

namespace {
// The power of ten of the leading digit of a normalised number text
// ("[-]digits[.digits][e[+|-]digits]"); whether the text stands for a huge
// or a tiny value, without reading it as a double.
long DecimalMagnitude(const std::string& s) {
    size_t e = s.find('e');
    long exp = e == std::string::npos ? 0 : std::strtol(s.c_str() + e + 1, nullptr, 10);
    // strtol saturates on an exponent of many digits; far beyond any double's
    // range either way, and the sums below must not overflow.
    exp = std::clamp(exp, -100000L, 100000L);
    long intDigits = 0, leadingFracZeros = 0;
    bool inFrac = false, seen = false;
    for (size_t i = 0; i < std::min(e, s.size()); ++i) {
        char c = s[i];
        if (c == '.') { inFrac = true; continue; }
        if (c < '0' || c > '9') continue;
        if (!inFrac) {
            if (c != '0' || seen) { seen = true; ++intDigits; }
        } else if (!seen) {
            if (c != '0') break;
            ++leadingFracZeros;
        }
    }
    return intDigits > 0 ? intDigits - 1 + exp : exp - leadingFracZeros - 1;
}
} // namespace

bool TryParseNumber(StringView text, double& out) {
    std::string s;
    bool hex;
    int64_t hv = 0;
    if (!NormaliseNumber(text, s, hex, hv)) return false;
    if (hex) { out = static_cast<double>(hv); return true; }
    auto r = std::from_chars(s.data(), s.data() + s.size(), out);
    if (r.ec == std::errc::result_out_of_range) {
        // Too small to hold is zero; only too large is an overflow.
        if (DecimalMagnitude(s) >= 0) RaisePlatform(err::Overflow);
        out = 0;
        return r.ptr == s.data() + s.size();
    }
    return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

bool TryParseDecimalText(StringView text, Decimal& out) {
    std::string s;
    bool hex;
    int64_t hv = 0;
    if (!NormaliseNumber(text, s, hex, hv)) return false;
    if (hex) { out = Decimal::FromInt64(hv); return true; }
    return Decimal::TryParse(Ascii(s), u'.', out);
}

Variant Variant::FromInt64(int64_t v) {
    if (v >= INT32_MIN && v <= INT32_MAX) return Variant(static_cast<int32_t>(v));
    return Variant(Decimal::FromInt64(v));
}

VarType Variant::Type() const {
    switch (v_.index()) {
    case 0: return VarType::Empty;
    case 1: return VarType::Null;
    case 2: return VarType::Integer;
    case 3: return VarType::Long;
    case 4: return VarType::Single;
    case 5: return VarType::Double;
    case 6: return VarType::Currency;
    case 7: return VarType::Date;
    case 8: return VarType::String;
    case 9: return VarType::Object;
    case 10: return VarType::Boolean;
    case 11: return VarType::Decimal;
    case 12: return VarType::Byte;
    default: return VarType::ByteArray;
    }
}

bool Variant::IsNothing() const {
    auto* o = std::get_if<ObjectBox>(&v_);
    return o && !o->p;
}

bool Variant::IsNumeric() const {
    switch (Type()) {
    case VarType::Integer: case VarType::Long: case VarType::Single: case VarType::Double:
    case VarType::Currency: case VarType::Decimal: case VarType::Byte:
        return true;
    default: return false;
    }
}

// The value as a double for the numeric kinds (Null and the rest excluded).
double NumericOf(const Variant& v) {
    struct V {
        double operator()(std::monostate) const { return 0; }
        double operator()(Variant::NullTag) const { RaisePlatform(err::InvalidUseOfNull); }
        double operator()(int16_t x) const { return x; }
        double operator()(int32_t x) const { return x; }
        double operator()(float x) const { return x; }
        double operator()(double x) const { return x; }
        double operator()(Currency x) const { return static_cast<double>(x.raw) / 10000.0; }
        double operator()(const Variant::DateBox& x) const { return x.d; }
        double operator()(const String& s) const {
            double d;
            if (!TryParseNumber(s, d)) RaisePlatform(err::TypeMismatch);
            return d;
        }
        double operator()(const Variant::ObjectBox& o) const {
            if (!o.p) RaisePlatform(err::ObjectNotSet);
            RaisePlatform(err::TypeMismatch);
        }
        double operator()(bool b) const { return b ? -1 : 0; }
        double operator()(const Decimal& d) const { return d.ToDouble(); }
        double operator()(uint8_t x) const { return x; }
        double operator()(const Bytes&) const { RaisePlatform(err::TypeMismatch); }
    };
    return std::visit(V{}, v.v_);
}

String Variant::ToString() const {
    char16_t sep = DecSep();
    switch (Type()) {
    case VarType::Empty: return {};
    case VarType::Null: RaisePlatform(err::InvalidUseOfNull);
    case VarType::Integer: return IntText(std::get<int16_t>(v_));
    case VarType::Long: return IntText(std::get<int32_t>(v_));
    case VarType::Byte: return IntText(std::get<uint8_t>(v_));
    case VarType::Single: return SingleText(std::get<float>(v_), sep);
    case VarType::Double: return DoubleText(std::get<double>(v_), sep);
    case VarType::Currency: return CurrencyText(std::get<Currency>(v_), sep);
    case VarType::Decimal: return std::get<Decimal>(v_).ToText(sep);
    case VarType::Date: return DateText(std::get<DateBox>(v_).d);
    case VarType::Boolean: return std::get<bool>(v_) ? u"True" : u"False";
    case VarType::String: return std::get<String>(v_);
    case VarType::ByteArray: {
        const Bytes& b = std::get<Bytes>(v_);
        String s(b.size() / 2, u'\0');
        for (size_t i = 0; i + 1 < b.size(); i += 2) s[i / 2] = static_cast<char16_t>(b[i] | (b[i + 1] << 8));
        if (b.size() % 2) s.push_back(b.back());
        return s;
    }
    case VarType::Object:
        NumericOf(*this); // 91 when not set
        RaisePlatform(err::TypeMismatch);
    }
    RaisePlatform(err::TypeMismatch);
}

int16_t Variant::ToInteger() const { return static_cast<int16_t>(CheckedRound(ToDouble(), -32768.0, 32767.0)); }

int32_t Variant::ToLong() const {
    if (auto* d = std::get_if<Decimal>(&v_)) {
        int64_t v = d->ToInt64();
        if (v < INT32_MIN || v > INT32_MAX) RaisePlatform(err::Overflow);
        return static_cast<int32_t>(v);
    }
    if (auto* l = std::get_if<int32_t>(&v_)) return *l;
    return static_cast<int32_t>(CheckedRound(ToDouble(), -2147483648.0, 2147483647.0));
}

uint8_t Variant::ToByte() const { return static_cast<uint8_t>(CheckedRound(ToDouble(), 0.0, 255.0)); }

float Variant::ToSingle() const {
    double d = ToDouble();
    // Too large is what rounds past the largest float: the text of the
    // largest float itself (3.4028235E+38) reads back as that float.
    float f = static_cast<float>(d);
    if (std::isfinite(d) && std::isinf(f)) RaisePlatform(err::Overflow);
    return f;
}

double Variant::ToDouble() const { return NumericOf(*this); }

Currency Variant::ToCurrency() const {
    if (auto* c = std::get_if<Currency>(&v_)) return *c;
    if (IsString() || std::holds_alternative<Decimal>(v_)) {
        Decimal d = ToDecimal().Mul(Decimal::FromInt64(10000));
        return Currency::FromRaw(d.ToInt64());
    }
    double d = ToDouble() * 10000.0;
    return Currency::FromRaw(CheckedRound(d, -9.223372036854775e18, 9.223372036854775e18));
}

Decimal Variant::ToDecimal() const {
    switch (Type()) {
    case VarType::Decimal: return std::get<Decimal>(v_);
    case VarType::Integer: return Decimal::FromInt64(std::get<int16_t>(v_));
    case VarType::Long: return Decimal::FromInt64(std::get<int32_t>(v_));
    case VarType::Byte: return Decimal::FromInt64(std::get<uint8_t>(v_));
    case VarType::Boolean: return Decimal::FromInt64(std::get<bool>(v_) ? -1 : 0);
    case VarType::Currency: {
        int64_t r = std::get<Currency>(v_).raw;
        return Decimal::FromParts(r < 0 ? static_cast<Decimal::u128>(-(r + 1)) + 1 : static_cast<Decimal::u128>(r), 4, r < 0);
    }
    case VarType::Single: {
        Decimal d;
        Decimal::TryParse(SingleText(std::get<float>(v_), u'.'), u'.', d);
        return d;
    }
    case VarType::String: {
        Decimal d;
        if (!TryParseDecimalText(std::get<String>(v_), d)) RaisePlatform(err::TypeMismatch);
        return d;
    }
    case VarType::Empty: return Decimal();
    default: return Decimal::FromDouble(ToDouble());
    }
}

double Variant::ToDate() const {
    if (auto* d = std::get_if<DateBox>(&v_)) return d->d;
    if (auto* s = std::get_if<String>(&v_)) {
        double d;
        if (TryParseDate(*s, d)) return d;
        RaisePlatform(err::TypeMismatch);
    }
    double d = ToDouble();
    if (!(d >= kMinDate && d <= kMaxDate)) RaisePlatform(err::Overflow);
    return d;
}

bool Variant::ToBoolean() const {
    if (auto* b = std::get_if<bool>(&v_)) return *b;
    if (auto* s = std::get_if<String>(&v_)) {
        String t = Trim(*s);
        if (EqualsNoCase(t, u"True") || EqualsNoCase(t, u"#TRUE#")) return true;
        if (EqualsNoCase(t, u"False") || EqualsNoCase(t, u"#FALSE#")) return false;
        double d;
        if (!TryParseNumber(t, d)) RaisePlatform(err::TypeMismatch);
        return d != 0;
    }
    if (std::holds_alternative<Decimal>(v_)) return !std::get<Decimal>(v_).IsZero();
    return ToDouble() != 0;
}

Bytes Variant::ToBytes() const {
    if (auto* b = std::get_if<Bytes>(&v_)) return *b;
    if (auto* s = std::get_if<String>(&v_)) {
        Bytes out;
        out.reserve(s->size() * 2);
        for (char16_t c : *s) { out.push_back(static_cast<uint8_t>(c & 0xFF)); out.push_back(static_cast<uint8_t>(c >> 8)); }
        return out;
    }
    if (IsNull()) RaisePlatform(err::InvalidUseOfNull);
    if (IsEmpty()) return {};
    RaisePlatform(err::TypeMismatch);
}

Ref<Object> Variant::ToObject() const {
    if (auto* o = std::get_if<ObjectBox>(&v_)) return Ref<Object>(o->p);
    RaisePlatform(err::TypeMismatch);
}

int Variant::Compare(const Variant& a, const Variant& b, bool ignoreCase) {
    bool an = a.IsNull() || a.IsEmpty(), bn = b.IsNull() || b.IsEmpty();
    if (an || bn) return an == bn ? 0 : (an ? -1 : 1);
    if (a.IsString() && b.IsString()) {
        const String& x = std::get<String>(a.v_);
        const String& y = std::get<String>(b.v_);
        if (!ignoreCase) return x < y ? -1 : (x == y ? 0 : 1);
        String lx = LCase(x), ly = LCase(y);
        return lx < ly ? -1 : (lx == ly ? 0 : 1);
    }
    if (a.IsString() != b.IsString()) {
        // A number against text: compare as numbers when the text is one,
        // otherwise numbers sort before text.
        const Variant& s = a.IsString() ? a : b;
        double d;
        if (!TryParseNumber(std::get<String>(s.v_), d)) return a.IsString() ? 1 : -1;
    }
    if (std::holds_alternative<Decimal>(a.v_) || std::holds_alternative<Decimal>(b.v_) ||
        std::holds_alternative<Currency>(a.v_) || std::holds_alternative<Currency>(b.v_)) {
        try {
            return a.ToDecimal().Compare(b.ToDecimal());
        } catch (const DbError&) {
        }
    }
    double x = a.ToDouble(), y = b.ToDouble();
    return x < y ? -1 : (x == y ? 0 : 1);
}

bool operator==(const Variant& a, const Variant& b) { return a.v_ == b.v_; }

} // namespace zolsdk
