#include "transfer/values.hpp"

#include <charconv>
#include <cstring>

#include "transfer/type_map.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

std::string Shortest(double d) {
    char buf[40];
    auto r = std::to_chars(buf, buf + sizeof buf, d);
    return std::string(buf, r.ptr);
}

std::string Shortest(float f) {
    char buf[40];
    auto r = std::to_chars(buf, buf + sizeof buf, f);
    return std::string(buf, r.ptr);
}

String TwoDigits(int v) {
    String s = IntText(v);
    return v < 10 ? u"0" + s : s;
}

String DatePartText(const DateParts& p) {
    String y = IntText(p.year);
    while (y.size() < 4) y = u"0" + y;
    return y + u"-" + TwoDigits(p.month) + u"-" + TwoDigits(p.day);
}

String TimePartText(const DateParts& p) {
    return TwoDigits(p.hour) + u":" + TwoDigits(p.minute) + u":" + TwoDigits(p.second);
}

// The date as text for the kind: the date alone, the time alone or both.
String DateForKind(Kind k, double date) {
    DateParts p = SplitDate(date);
    if (k == Kind::Date) return DatePartText(p);
    if (k == Kind::Time) return TimePartText(p);
    return DatePartText(p) + u" " + TimePartText(p);
}

String ExactNumber(const Variant& v) {
    switch (v.Type()) {
    case VarType::Double: return Ascii(Shortest(v.ToDouble()));
    case VarType::Single: return Ascii(Shortest(v.ToSingle()));
    case VarType::Boolean: return v.ToBoolean() ? u"1" : u"0";
    default: return v.ToDecimal().ToText(u'.');
    }
}

String GuidText(const Variant& v) {
    String s = UCase(v.ToString());
    if (!s.empty() && s.front() != u'{') s = u"{" + s + u"}";
    return s;
}

void PutLength(std::string& out, size_t n) {
    char b[8];
    std::memcpy(b, &n, 8);
    out.append(b, 8);
}

} // namespace

String TextLiteral(Engine e, StringView text) {
    String s;
    s.reserve(text.size() + 2);
    s += u'\'';
    for (char16_t c : text) {
        if (e == Engine::MySql) {
            if (c == u'\\') { s += u"\\\\"; continue; }
            if (c == u'\0') { s += u"\\0"; continue; }
            if (c == u'\'') { s += u"\\'"; continue; }
        } else if (c == u'\'') {
            s += u"''";
            continue;
        }
        s += c;
    }
    s += u'\'';
    return s;
}

String Literal(Engine e, Kind k, const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return u"NULL";
    switch (k) {
    case Kind::Boolean:
        if (v.IsString()) return TextLiteral(e, v.ToString());
        return v.ToBoolean() ? (e == Engine::Access ? u"-1" : u"1") : u"0";
    case Kind::Date: case Kind::Time: case Kind::DateTime: {
        String text = DateForKind(k, v.ToDate());
        if (e == Engine::Access) return u"#" + text + u"#";
        return u"'" + text + u"'";
    }
    case Kind::Binary: case Kind::LongBinary: {
        Bytes b = v.ToBytes();
        if (b.empty()) return u"''";
        static const char16_t hex[] = u"0123456789ABCDEF";
        String s = e == Engine::SqlServer ? u"0x" : u"X'";
        s.reserve(s.size() + b.size() * 2 + 1);
        for (uint8_t x : b) {
            s += hex[x >> 4];
            s += hex[x & 15];
        }
        if (e != Engine::SqlServer) s += u'\'';
        return s;
    }
    case Kind::Guid:
        return TextLiteral(e, GuidText(v));
    case Kind::Text: case Kind::LongText:
        return (e == Engine::SqlServer ? u"N" : u"") + TextLiteral(e, v.ToString());
    default:
        if (v.IsString()) return TextLiteral(e, v.ToString());
        return ExactNumber(v);
    }
}

namespace {

// Whether any of the eight bytes of `w` is `b` (the zero-byte test on w ^ b).
constexpr uint64_t HasByte(uint64_t w, uint8_t b) {
    uint64_t x = w ^ (0x0101010101010101ull * b);
    return (x - 0x0101010101010101ull) & ~x & 0x8080808080808080ull;
}

} // namespace

void AppendLoadEscaped(std::string_view text, std::string& out) {
    const char* p = text.data();
    const char* end = p + text.size();
    while (p != end) {
        // Runs without a byte to escape are copied whole, found eight bytes a step.
        const char* run = p;
        for (uint64_t w; end - p >= 8; p += 8) {
            std::memcpy(&w, p, 8);
            if (HasByte(w, '\\') | HasByte(w, '\t') | HasByte(w, '\n') | HasByte(w, 0)) break;
        }
        while (p != end && *p != '\\' && *p != '\t' && *p != '\n' && *p != '\0') ++p;
        out.append(run, static_cast<size_t>(p - run));
        if (p == end) break;
        char c = *p++;
        out += '\\';
        out += c == '\t' ? 't' : c == '\n' ? 'n' : c == '\0' ? '0' : c;
    }
}

void AppendHex(std::string_view bytes, std::string& out) {
    static const char hex[] = "0123456789ABCDEF";
    size_t at = out.size();
    out.resize(at + bytes.size() * 2);
    char* q = out.data() + at;
    for (unsigned char x : bytes) {
        *q++ = hex[x >> 4];
        *q++ = hex[x & 15];
    }
}

void AppendLoadText(Kind k, const Variant& v, std::string& out) {
    if (v.IsNull() || v.IsEmpty()) {
        out += "\\N";
        return;
    }
    switch (k) {
    case Kind::Binary: case Kind::LongBinary: {
        Bytes b = v.ToBytes();
        AppendHex(std::string_view(reinterpret_cast<const char*>(b.data()), b.size()), out);
        return;
    }
    case Kind::Text: case Kind::LongText:
        AppendLoadEscaped(ToUtf8(v.ToString()), out);
        return;
    case Kind::Guid:
        out += ToUtf8(GuidText(v));
        return;
    case Kind::Boolean:
        if (v.IsString()) break;
        out += v.ToBoolean() ? '1' : '0';
        return;
    case Kind::Date: case Kind::Time: case Kind::DateTime:
        out += ToUtf8(DateForKind(k, v.ToDate()));
        return;
    default:
        if (v.IsString()) break;
        out += ToUtf8(ExactNumber(v));
        return;
    }
    AppendLoadEscaped(ToUtf8(v.ToString()), out);
}

void Normalise(Kind k, const Variant& v, std::string& out) {
    if (v.IsNull() || v.IsEmpty()) {
        out += "\x01N";
        return;
    }
    switch (k) {
    case Kind::Boolean:
        out += v.ToBoolean() ? "b1" : "b0";
        return;
    case Kind::Single:
        out += 'f';
        out += Shortest(v.ToSingle());
        return;
    case Kind::Double:
        out += 'd';
        out += Shortest(v.ToDouble());
        return;
    case Kind::Date: case Kind::Time: case Kind::DateTime:
        out += 't';
        out += ToUtf8(DateForKind(k, v.ToDate()));
        return;
    case Kind::Binary: case Kind::LongBinary: {
        Bytes b = v.ToBytes();
        out += 'x';
        PutLength(out, b.size());
        out.append(reinterpret_cast<const char*>(b.data()), b.size());
        return;
    }
    case Kind::Text: case Kind::LongText: case Kind::Guid: {
        std::string s = ToUtf8(k == Kind::Guid ? GuidText(v) : v.ToString());
        out += 's';
        PutLength(out, s.size());
        out += s;
        return;
    }
    default: {
        // Every integer, decimal and currency by its exact decimal value.
        Decimal d;
        if (v.IsString()) {
            bool parsed = false;
            try {
                parsed = Decimal::TryParse(v.ToString(), u'.', d);
            } catch (const DbError&) {
                // More digits than a Decimal holds: compared as its text.
            }
            if (!parsed) {
                out += 's' + ToUtf8(v.ToString());
                return;
            }
        } else {
            d = v.ToDecimal();
        }
        out += 'n';
        out += ToUtf8(d.ToText(u'.'));
        return;
    }
    }
}

String Shown(const Variant& v) {
    if (v.IsNull() || v.IsEmpty()) return u"NULL";
    if (v.IsArray()) return u"<" + IntText(static_cast<int64_t>(v.ToBytes().size())) + u" bytes>";
    if (v.Type() == VarType::Date) return DateText(v.ToDate());
    if (v.Type() == VarType::Double || v.Type() == VarType::Single || v.IsNumeric()) return ExactNumber(v);
    String s = v.ToString();
    if (s.size() > 40) s = s.substr(0, 40) + u"...";
    return s;
}

namespace {

uint64_t Rotl(uint64_t x, int r) { return (x << r) | (x >> (64 - r)); }

// Each word mixed before it joins (multiply and rotate).
uint64_t Mix(uint64_t w) {
    w *= 0x87c37b91114253d5ull;
    w = Rotl(w, 31);
    return w * 0x4cf5ad432745937full;
}

// A full avalanche, so that sums of row hashes do not cancel out.
uint64_t Avalanche(uint64_t h) {
    h ^= h >> 30;
    h *= 0xbf58476d1ce4e5b9ull;
    h ^= h >> 27;
    h *= 0x94d049bb133111ebull;
    return h ^ (h >> 31);
}

} // namespace

uint64_t Hash64(std::string_view bytes) {
    // Eight bytes a step, the length folded in.
    uint64_t h = 14695981039346656037ull ^ (bytes.size() * 0x9e3779b97f4a7c15ull);
    const char* p = bytes.data();
    size_t n = bytes.size();
    for (; n >= 8; p += 8, n -= 8) {
        uint64_t w;
        std::memcpy(&w, p, 8);
        h ^= Mix(w);
        h = Rotl(h, 27) * 5 + 0x52dce729;
    }
    if (n) {
        uint64_t w = 0;
        std::memcpy(&w, p, n);
        h ^= Mix(w);
    }
    return Avalanche(h);
}

namespace {

// The two halves of a full 64 x 64-bit product folded together: one
// multiplication takes in sixteen bytes.
uint64_t Fold(uint64_t a, uint64_t b) {
    unsigned __int128 r = static_cast<unsigned __int128>(a) * b;
    return static_cast<uint64_t>(r) ^ static_cast<uint64_t>(r >> 64);
}

constexpr uint64_t kOdd1 = 0xa0761d6478bd642full, kOdd2 = 0xe7037ed1a0b428dbull, kOdd3 = 0x8ebc6af09c88c6e3ull;

} // namespace

void RowHasher::Add(std::string_view value) {
    const char* p = value.data();
    size_t n = value.size();
    uint64_t h = Fold(h_ ^ kOdd1, n ^ kOdd2);
    for (; n >= 16; p += 16, n -= 16) {
        uint64_t a, b;
        std::memcpy(&a, p, 8);
        std::memcpy(&b, p + 8, 8);
        h = Fold(a ^ kOdd2, b ^ h);
    }
    if (n) {
        uint64_t a = 0, b = 0;
        std::memcpy(&a, p, n < 8 ? n : 8);
        if (n > 8) std::memcpy(&b, p + 8, n - 8);
        h = Fold(a ^ kOdd2, b ^ h);
    }
    h_ = h;
}

void RowHasher::AddNull() { h_ = Fold(h_ ^ kOdd3, kOdd1); }

uint64_t RowHasher::Finish() const { return Avalanche(h_ ^ kOdd3); }

} // namespace zolsdk::transfer
