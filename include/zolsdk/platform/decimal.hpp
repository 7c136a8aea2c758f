#pragma once
// The platform's decimal: a 96-bit unsigned mantissa, a sign and a scale of
// 0 to 28 (value = mantissa / 10^scale). Arithmetic that does not fit in 96
// bits first gives up fraction digits (rounding half to even) and fails with
// Overflow (6) only when the integer part itself does not fit.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class ZOLSDK_API Decimal {
public:
    using u128 = unsigned __int128;
    static constexpr int MaxScale = 28;

    Decimal() = default;
    static Decimal FromInt64(int64_t v);
    static Decimal FromUInt64(uint64_t v);
    static Decimal FromDouble(double v);          // 15 significant digits, as the platform converts
    static Decimal FromParts(u128 mantissa, int scale, bool negative); // raises 6 if it does not fit

    // Invariant form: [blanks][+|-]digits[<sep>digits][E[+|-]digits][blanks].
    // Returns false when the text is not such a number.
    static bool TryParse(StringView text, char16_t decimalSep, Decimal& out);

    double ToDouble() const;
    int64_t ToInt64() const;                      // rounded half to even; raises 6
    // Shortest text: trailing fraction zeros dropped, `sep` as separator.
    String ToText(char16_t sep = u'.') const;

    bool IsNegative() const { return neg_ && mant_ != 0; }
    bool IsZero() const { return mant_ == 0; }
    int Scale() const { return scale_; }
    u128 Mantissa() const { return mant_; }

    Decimal Negate() const;
    Decimal Add(const Decimal& o) const;
    Decimal Sub(const Decimal& o) const { return Add(o.Negate()); }
    Decimal Mul(const Decimal& o) const;
    Decimal Div(const Decimal& o) const;          // raises 11 on zero
    Decimal Round(int scale) const;               // half to even
    int Compare(const Decimal& o) const;          // -1, 0, 1

    friend bool operator==(const Decimal& a, const Decimal& b) { return a.Compare(b) == 0; }

private:
    u128 mant_ = 0;
    uint8_t scale_ = 0;
    bool neg_ = false;
};

} // namespace zolsdk
