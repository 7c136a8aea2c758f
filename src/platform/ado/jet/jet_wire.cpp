#include "platform/ado/jet/jet_wire.hpp"

#include "platform/ado/backend.hpp"

#include <cstring>

#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/decimal.hpp"

namespace zolsdk::ado::detail::jet {

namespace {

// java.sql.Types numbers of the null markers.
constexpr int32_t kSqlVarchar = 12, kSqlVarbinary = -3, kSqlBigint = -5, kSqlDouble = 8, kSqlTimestamp = 93,
                  kSqlBoolean = 16, kSqlDecimal = 3;

bool IsBinary(int32_t t) { return t == adType::Binary || t == adType::VarBinary || t == adType::LongVarBinary; }
bool IsText(int32_t t) {
    return t == adType::Char || t == adType::WChar || t == adType::VarChar || t == adType::VarWChar ||
           t == adType::LongVarChar || t == adType::LongVarWChar || t == adType::BSTR || t == adType::GUID;
}
bool IsInteger(int32_t t) {
    return t == adType::TinyInt || t == adType::SmallInt || t == adType::Integer || t == adType::BigInt ||
           t == adType::UnsignedTinyInt || t == adType::UnsignedSmallInt || t == adType::UnsignedInt ||
           t == adType::UnsignedBigInt;
}
bool IsDate(int32_t t) {
    return t == adType::Date || t == adType::DBDate || t == adType::DBTime || t == adType::DBTimeStamp;
}

} // namespace

void WireReader::Need(size_t n) const {
    if (pos_ + n > data_.size())
        throw ProviderFailure({{0, u"HY000", u"the provider's Java half sent a truncated answer"}});
}

uint8_t WireReader::Byte() {
    Need(1);
    return data_[pos_++];
}

int32_t WireReader::Int() {
    Need(4);
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = (v << 8) | data_[pos_++];
    return static_cast<int32_t>(v);
}

int64_t WireReader::Long() {
    Need(8);
    uint64_t v = 0;
    for (int i = 0; i < 8; ++i) v = (v << 8) | data_[pos_++];
    return static_cast<int64_t>(v);
}

String WireReader::Text() {
    int32_t n = Int();
    if (n < 0) throw ProviderFailure({{0, u"HY000", u"the provider's Java half sent a negative length"}});
    Need(static_cast<size_t>(n) * 2);
    String s(static_cast<size_t>(n), u'\0');
    for (int32_t i = 0; i < n; ++i) {
        s[static_cast<size_t>(i)] = static_cast<char16_t>((data_[pos_] << 8) | data_[pos_ + 1]);
        pos_ += 2;
    }
    return s;
}

Variant WireReader::Value() {
    uint8_t tag = Byte();
    switch (tag) {
    case 'N': Int(); return Variant::Null();
    case 'Z': return Variant(Boolean());
    case 'I': return Variant(Int());
    case 'J': return Variant::FromInt64(Long());
    case 'F': {
        int32_t bits = Int();
        float f;
        std::memcpy(&f, &bits, sizeof f);
        return Variant(f);
    }
    case 'D': {
        int64_t bits = Long();
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return Variant(d);
    }
    case 'S': return Variant(Text());
    case 'M': {
        String text = Text();
        Decimal d;
        try {
            if (Decimal::TryParse(text, u'.', d)) return Variant(d);
        } catch (const DbError&) {
            // More digits than a decimal holds: the double keeps the magnitude.
        }
        return Variant(std::strtod(ToUtf8(text).c_str(), nullptr));
    }
    case 'X': {
        int32_t n = Int();
        if (n < 0) throw ProviderFailure({{0, u"HY000", u"the provider's Java half sent a negative length"}});
        Need(static_cast<size_t>(n));
        zolsdk::Bytes b(data_.begin() + static_cast<long>(pos_), data_.begin() + static_cast<long>(pos_) + n);
        pos_ += static_cast<size_t>(n);
        return Variant(std::move(b));
    }
    case 'T': {
        DateParts p;
        p.year = Int();
        p.month = Byte();
        p.day = Byte();
        p.hour = Byte();
        p.minute = Byte();
        p.second = Byte();
        int32_t nanos = Int();
        double date = JoinDate(p);
        // Fractions of a second survive as the fraction of the day they are;
        // before day 0 the time runs away from zero.
        if (nanos != 0) {
            double fraction = nanos / 1e9 / 86400.0;
            date += date < 0 ? -fraction : fraction;
        }
        return Variant::FromDate(date);
    }
    default:
        throw ProviderFailure({{0, u"HY000", u"the provider's Java half sent a value of unknown kind " + IntText(tag)}});
    }
}

void WireWriter::Int(int32_t v) {
    auto u = static_cast<uint32_t>(v);
    for (int i = 3; i >= 0; --i) out_.push_back(static_cast<uint8_t>(u >> (i * 8)));
}

void WireWriter::Long(int64_t v) {
    auto u = static_cast<uint64_t>(v);
    for (int i = 7; i >= 0; --i) out_.push_back(static_cast<uint8_t>(u >> (i * 8)));
}

void WireWriter::Text(StringView s) {
    Int(static_cast<int32_t>(s.size()));
    for (char16_t c : s) {
        out_.push_back(static_cast<uint8_t>(c >> 8));
        out_.push_back(static_cast<uint8_t>(c & 0xFF));
    }
}

void WireWriter::Parameter(int32_t t, const Variant& v) {
    bool isNull = v.IsNull() || v.IsEmpty();
    if (IsBinary(t)) {
        if (isNull) { Byte('N'); Int(kSqlVarbinary); return; }
        zolsdk::Bytes b = v.ToBytes();
        Byte('X');
        Int(static_cast<int32_t>(b.size()));
        out_.insert(out_.end(), b.begin(), b.end());
    } else if (t == adType::Boolean) {
        if (isNull) { Byte('N'); Int(kSqlBoolean); return; }
        Byte('Z');
        Byte(v.ToBoolean() ? 1 : 0);
    } else if (IsInteger(t)) {
        if (isNull) { Byte('N'); Int(kSqlBigint); return; }
        Byte('J');
        Long(v.ToDecimal().ToInt64());
    } else if (t == adType::Single || t == adType::Double) {
        if (isNull) { Byte('N'); Int(kSqlDouble); return; }
        double d = v.ToDouble();
        int64_t bits;
        std::memcpy(&bits, &d, sizeof bits);
        Byte('D');
        Long(bits);
    } else if (t == adType::Currency || t == adType::Decimal || t == adType::Numeric) {
        if (isNull) { Byte('N'); Int(kSqlDecimal); return; }
        Byte('M');
        Text(v.ToDecimal().ToText(u'.'));
    } else if (IsDate(t)) {
        if (isNull) { Byte('N'); Int(kSqlTimestamp); return; }
        DateParts p = SplitDate(v.ToDate());
        Byte('T');
        Int(p.year);
        Byte(static_cast<uint8_t>(p.month));
        Byte(static_cast<uint8_t>(p.day));
        Byte(static_cast<uint8_t>(p.hour));
        Byte(static_cast<uint8_t>(p.minute));
        Byte(static_cast<uint8_t>(p.second));
        Int(0);
    } else {
        if (isNull) { Byte('N'); Int(kSqlVarchar); return; }
        Byte('S');
        Text(v.ToString());
    }
}

std::vector<uint8_t> EncodeParameters(const std::vector<Ref<ado::Parameter>>& params) {
    WireWriter w;
    w.Int(static_cast<int32_t>(params.size()));
    for (const Ref<ado::Parameter>& p : params) w.Parameter(p->Type(), p->Value());
    return w.Bytes();
}

Variant FitToField(const Variant& v, int32_t t) {
    if (v.IsNull() || v.IsEmpty()) return Variant::Null();
    switch (t) {
    case adType::UnsignedTinyInt: return Variant(v.ToByte());
    case adType::TinyInt:
    case adType::SmallInt: return Variant(v.ToInteger());
    case adType::Integer: return Variant(v.ToLong());
    case adType::Single: return Variant(v.ToSingle());
    case adType::Double: return Variant(v.ToDouble());
    case adType::Currency: return Variant(v.ToCurrency());
    case adType::Decimal:
    case adType::Numeric: return v.Type() == VarType::Decimal ? v : Variant(v.ToDecimal());
    case adType::Boolean: return Variant(v.ToBoolean());
    case adType::Date:
    case adType::DBDate:
    case adType::DBTime:
    case adType::DBTimeStamp: return v.Type() == VarType::Date ? v : Variant::FromDate(v.ToDate());
    default:
        if (IsBinary(t)) return v.IsArray() ? v : Variant(v.ToBytes());
        if (IsText(t)) return v.IsString() ? v : Variant(v.ToString());
        return v;
    }
}

} // namespace zolsdk::ado::detail::jet
