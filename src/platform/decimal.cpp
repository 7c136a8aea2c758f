#include "zolsdk/platform/decimal.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "zolsdk/platform/error.hpp"

namespace zolsdk {

namespace {
using u128 = Decimal::u128;
const u128 kLimit = (static_cast<u128>(1) << 96); // mantissa must stay below

u128 Pow10(int n) {
    u128 r = 1;
    while (n-- > 0) r *= 10;
    return r;
}

// Divide by 10^n with rounding half to even; `sticky` carries digits already
// dropped so that a tie is only a tie when nothing else was dropped.
u128 DivRound(u128 v, int n, bool sticky = false) {
    if (n <= 0) return v;
    u128 p = Pow10(n);
    u128 q = v / p, r = v % p;
    u128 half = p / 2;
    if (r > half || (r == half && (sticky || (q & 1)))) ++q;
    return q;
}

// 192-bit unsigned as three 64-bit limbs, little end first.
struct Wide {
    uint64_t w[3] = {0, 0, 0};
    bool FitsIn96() const { return w[2] == 0 && (w[1] >> 32) == 0; }
    bool IsZero() const { return !w[0] && !w[1] && !w[2]; }
    uint32_t DivSmall(uint32_t d) {
        u128 rem = 0;
        for (int i = 2; i >= 0; --i) {
            u128 cur = (rem << 64) | w[i];
            w[i] = static_cast<uint64_t>(cur / d);
            rem = cur % d;
        }
        return static_cast<uint32_t>(rem);
    }
    u128 Low128() const { return (static_cast<u128>(w[1]) << 64) | w[0]; }
};

Wide MulWide(u128 a, u128 b) {
    uint32_t x[3] = {static_cast<uint32_t>(a), static_cast<uint32_t>(a >> 32), static_cast<uint32_t>(a >> 64)};
    uint32_t y[3] = {static_cast<uint32_t>(b), static_cast<uint32_t>(b >> 32), static_cast<uint32_t>(b >> 64)};
    uint64_t r[6] = {0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        uint64_t carry = 0;
        for (int j = 0; j < 3; ++j) {
            uint64_t cur = static_cast<uint64_t>(x[i]) * y[j] + r[i + j] + carry;
            r[i + j] = cur & 0xFFFFFFFFu;
            carry = cur >> 32;
        }
        r[i + 3] += carry;
    }
    Wide out;
    out.w[0] = r[0] | (r[1] << 32);
    out.w[1] = r[2] | (r[3] << 32);
    out.w[2] = r[4] | (r[5] << 32);
    return out;
}
} // namespace

Decimal Decimal::FromParts(u128 mantissa, int scale, bool negative) {
    bool sticky = false;
    while (scale > MaxScale || (mantissa >= kLimit && scale > 0)) {
        u128 q = DivRound(mantissa, 1, sticky);
        sticky = sticky || (mantissa % 10 != 0);
        mantissa = q;
        --scale;
    }
    if (mantissa >= kLimit) RaisePlatform(err::Overflow);
    Decimal d;
    d.mant_ = mantissa;
    d.scale_ = static_cast<uint8_t>(scale < 0 ? 0 : scale);
    d.neg_ = negative && mantissa != 0;
    return d;
}

Decimal Decimal::FromInt64(int64_t v) {
    bool neg = v < 0;
    u128 m = neg ? static_cast<u128>(-(v + 1)) + 1 : static_cast<u128>(v);
    return FromParts(m, 0, neg);
}

Decimal Decimal::FromUInt64(uint64_t v) { return FromParts(v, 0, false); }

Decimal Decimal::FromDouble(double v) {
    if (!std::isfinite(v) || std::fabs(v) >= 7.9228162514264338e28) RaisePlatform(err::Overflow);
    if (v == 0) return Decimal();
    // 15 significant digits, correctly rounded, as "%.14e" gives them.
    char buf[64];
    const char* end = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 14).ptr;
    char16_t wide[64];
    std::copy(static_cast<const char*>(buf), end, wide);
    Decimal d;
    TryParse(StringView(wide, static_cast<size_t>(end - buf)), u'.', d);
    return d;
}

bool Decimal::TryParse(StringView t, char16_t sep, Decimal& out) {
    size_t i = 0, n = t.size();
    while (i < n && t[i] == u' ') ++i;
    bool neg = false;
    if (i < n && (t[i] == u'+' || t[i] == u'-')) { neg = t[i] == u'-'; ++i; }
    u128 mant = 0;
    int scale = 0, dropped = 0, digits = 0;
    bool sticky = false, inFrac = false;
    for (; i < n; ++i) {
        char16_t c = t[i];
        if (c >= u'0' && c <= u'9') {
            ++digits;
            if (mant < kLimit / 10 * 100) { // room to spare in 128 bits
                mant = mant * 10 + (c - u'0');
                if (inFrac) ++scale;
            } else {
                if (!inFrac) ++dropped; // integer digits beyond range: scaled later
                if (c != u'0') sticky = true;
            }
        } else if (c == sep && !inFrac) {
            inFrac = true;
        } else break;
    }
    if (digits == 0) return false;
    int exp = 0;
    if (i < n && (t[i] == u'E' || t[i] == u'e' || t[i] == u'D' || t[i] == u'd')) {
        size_t j = i + 1;
        bool eneg = false;
        if (j < n && (t[j] == u'+' || t[j] == u'-')) { eneg = t[j] == u'-'; ++j; }
        if (j >= n || t[j] < u'0' || t[j] > u'9') return false;
        while (j < n && t[j] >= u'0' && t[j] <= u'9') {
            exp = exp * 10 + (t[j] - u'0');
            if (exp > 400) exp = 400;
            ++j;
        }
        if (eneg) exp = -exp;
        i = j;
    }
    while (i < n && t[i] == u' ') ++i;
    if (i != n) return false;
    exp += dropped;
    scale -= exp;
    (void)sticky;
    // Bring a negative scale into the mantissa, and an excess one down.
    while (scale < 0) {
        if (mant > (static_cast<u128>(-1) / 10)) RaisePlatform(err::Overflow);
        mant *= 10;
        ++scale;
    }
    if (scale > 60) { mant = 0; scale = 0; }
    out = FromParts(mant, scale, neg);
    return true;
}

double Decimal::ToDouble() const {
    // Through text: exact to the last digit that a double can hold.
    std::string s = ToUtf8(ToText(u'.'));
    return std::strtod(s.c_str(), nullptr);
}

int64_t Decimal::ToInt64() const {
    u128 q = DivRound(mant_, scale_);
    if (neg_) {
        if (q > static_cast<u128>(INT64_MAX) + 1) RaisePlatform(err::Overflow);
        return q == static_cast<u128>(INT64_MAX) + 1 ? INT64_MIN : -static_cast<int64_t>(q);
    }
    if (q > static_cast<u128>(INT64_MAX)) RaisePlatform(err::Overflow);
    return static_cast<int64_t>(q);
}

String Decimal::ToText(char16_t sep) const {
    u128 m = mant_;
    int scale = scale_;
    while (scale > 0 && m % 10 == 0) { m /= 10; --scale; }
    std::string digits;
    if (m == 0) digits = "0";
    while (m) { digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(m % 10))); m /= 10; }
    if (scale > 0) {
        if (static_cast<int>(digits.size()) <= scale) digits.insert(0, static_cast<size_t>(scale - digits.size() + 1), '0');
        digits.insert(digits.size() - static_cast<size_t>(scale), 1, '.');
    }
    String out = Ascii(digits);
    for (auto& c : out) if (c == u'.') c = sep;
    if (IsNegative()) out.insert(out.begin(), u'-');
    return out;
}

Decimal Decimal::Negate() const {
    Decimal d = *this;
    d.neg_ = !neg_ && mant_ != 0;
    return d;
}

Decimal Decimal::Round(int scale) const {
    if (scale < 0) scale = 0;
    if (scale >= scale_) return *this;
    return FromParts(DivRound(mant_, scale_ - scale), scale, neg_);
}

int Decimal::Compare(const Decimal& o) const {
    bool an = IsNegative(), bn = o.IsNegative();
    if (an != bn) return an ? -1 : 1;
    Decimal diff = Sub(o);
    if (diff.IsZero()) return 0;
    return diff.IsNegative() ? -1 : 1;
}

Decimal Decimal::Add(const Decimal& o) const {
    u128 a = mant_, b = o.mant_;
    int sa = scale_, sb = o.scale_;
    // Align scales: raise the smaller while it fits, then cut the larger.
    while (sa < sb && a < kLimit * 100) { a *= 10; ++sa; }
    while (sb < sa && b < kLimit * 100) { b *= 10; ++sb; }
    if (sa > sb) { a = DivRound(a, sa - sb); sa = sb; }
    if (sb > sa) { b = DivRound(b, sb - sa); sb = sa; }
    bool na = IsNegative(), nb = o.IsNegative();
    if (na == nb) {
        // Both below 2^103: no overflow of 128 bits.
        return FromParts(a + b, sa, na);
    }
    if (a >= b) return FromParts(a - b, sa, na);
    return FromParts(b - a, sa, nb);
}

Decimal Decimal::Mul(const Decimal& o) const {
    Wide p = MulWide(mant_, o.mant_);
    int scale = scale_ + o.scale_;
    bool sticky = false;
    while ((!p.FitsIn96() || scale > MaxScale) && scale > 0) {
        // Divide by 10, keep the remainder for rounding.
        Wide q = p;
        uint32_t r = q.DivSmall(10);
        if (!(q.FitsIn96() && scale - 1 <= MaxScale)) {
            sticky = sticky || r != 0;
            p = q;
            --scale;
            continue;
        }
        // Last step: round.
        u128 v = q.Low128();
        if (r > 5 || (r == 5 && (sticky || (v & 1)))) ++v;
        return FromParts(v, scale - 1, neg_ != o.neg_);
    }
    if (!p.FitsIn96()) RaisePlatform(err::Overflow);
    return FromParts(p.Low128(), scale, neg_ != o.neg_);
}

Decimal Decimal::Div(const Decimal& o) const {
    if (o.IsZero()) RaisePlatform(err::DivisionByZero);
    // Long division to the widest scale that fits.
    u128 num = mant_, den = o.mant_;
    int scale = scale_ - o.scale_;
    u128 q = num / den, r = num % den;
    while (r != 0 && scale < MaxScale && q < kLimit / 10) {
        r *= 10;
        q = q * 10 + r / den;
        r %= den;
        ++scale;
    }
    if (r * 2 > den || (r * 2 == den && (q & 1))) ++q;
    while (scale < 0) { q *= 10; ++scale; if (q >= kLimit) RaisePlatform(err::Overflow); }
    return FromParts(q, scale, neg_ != o.neg_);
}

} // namespace zolsdk
