#pragma once
// The tagged value and the platform's coercions, all in one place.
//
// Conversions follow the platform's rules: numbers to text with up to 15
// significant digits (Double) or 7 (Single) and the user's decimal
// separator; text to number through the same separator; rounding to
// integers half to even; booleans as -1/0; failures with the platform's
// numbers (6 Overflow, 13 Type mismatch, 94 Invalid use of Null, 91 for an
// object that is not set).
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/decimal.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// Type codes as the platform numbers them (VarType).
enum class VarType : int32_t {
    Empty = 0, Null = 1, Integer = 2, Long = 3, Single = 4, Double = 5,
    Currency = 6, Date = 7, String = 8, Object = 9, Boolean = 11,
    Decimal = 14, Byte = 17, ByteArray = 8209,
};

// 64-bit integer scaled by 10000.
struct ZOLSDK_API Currency {
    int64_t raw = 0;
    static Currency FromRaw(int64_t r) { Currency c; c.raw = r; return c; }
    friend bool operator==(Currency a, Currency b) { return a.raw == b.raw; }
};

using Bytes = std::vector<uint8_t>;

class ZOLSDK_API Variant {
public:
    Variant() = default;                         // Empty
    Variant(int16_t v) : v_(v) {}                // Integer
    Variant(int32_t v) : v_(v) {}                // Long
    Variant(float v) : v_(v) {}                  // Single
    Variant(double v) : v_(v) {}                 // Double
    Variant(Currency v) : v_(v) {}
    Variant(Decimal v) : v_(v) {}
    Variant(bool v) : v_(v) {}                   // Boolean
    Variant(uint8_t v) : v_(v) {}                // Byte
    Variant(String v) : v_(std::move(v)) {}
    Variant(StringView v) : v_(String(v)) {}
    Variant(const char16_t* v) : v_(String(v)) {}
    Variant(const char*) = delete;               // narrow text would become a Boolean
    Variant(Bytes v) : v_(std::move(v)) {}
    template <class T>
    Variant(const Ref<T>& o) : v_(ObjectBox{std::static_pointer_cast<Object>(o.shared())}) {}
    Variant(std::nullptr_t) : v_(ObjectBox{}) {}  // Nothing: an object reference that is not set

    static Variant Null() { Variant v; v.v_ = NullTag{}; return v; }
    static Variant FromDate(double d) { Variant v; v.v_ = DateBox{d}; return v; }
    // Long when it fits, otherwise Decimal (the platform has no 64-bit integer).
    static Variant FromInt64(int64_t v);

    VarType Type() const;
    bool IsEmpty() const { return std::holds_alternative<std::monostate>(v_); }
    bool IsNull() const { return std::holds_alternative<NullTag>(v_); }
    bool IsObject() const { return std::holds_alternative<ObjectBox>(v_); }
    bool IsNothing() const;                      // an object reference that is not set
    bool IsString() const { return std::holds_alternative<String>(v_); }
    bool IsNumeric() const;                      // the numeric types, Boolean, and Empty excluded
    bool IsArray() const { return std::holds_alternative<Bytes>(v_); }

    // Coercions. Each raises the platform's failure when it cannot convert.
    String ToString() const;                     // CStr
    int16_t ToInteger() const;                   // CInt
    int32_t ToLong() const;                      // CLng
    uint8_t ToByte() const;                      // CByte
    float ToSingle() const;                      // CSng
    double ToDouble() const;                     // CDbl
    Currency ToCurrency() const;                 // CCur
    Decimal ToDecimal() const;                   // CDec
    double ToDate() const;                       // CDate
    bool ToBoolean() const;                      // CBool
    Bytes ToBytes() const;                       // a byte array, or text as its UTF-16 bytes
    Ref<Object> ToObject() const;                // 13 when the value is no object

    template <class T>
    Ref<T> As() const { return ToObject().template As<T>(); }

    // Platform comparison for sorting and filtering: numbers as numbers,
    // text as text (optionally case-blind), Null/Empty first.
    static int Compare(const Variant& a, const Variant& b, bool ignoreCase = false);
    // Same value and same kind (objects by identity).
    friend bool operator==(const Variant& a, const Variant& b);

private:
    struct NullTag { bool operator==(const NullTag&) const { return true; } };
    struct DateBox { double d; bool operator==(const DateBox& o) const { return d == o.d; } };
    struct ObjectBox {
        std::shared_ptr<Object> p;
        bool operator==(const ObjectBox& o) const { return p == o.p; }
    };
    using Storage = std::variant<std::monostate, NullTag, int16_t, int32_t, float, double, Currency,
                                 DateBox, String, ObjectBox, bool, Decimal, uint8_t, Bytes>;
    Storage v_;

    friend double NumericOf(const Variant&);
    friend struct VariantAccess;
};

// Text of numbers as the platform writes them (user separator applied).
ZOLSDK_API String DoubleText(double v, char16_t sep);    // 15 significant digits
ZOLSDK_API String SingleText(float v, char16_t sep);     // 7 significant digits
ZOLSDK_API String CurrencyText(Currency c, char16_t sep);
// Text to number by the platform's rules with the user's separators; false
// when the text is no number.
ZOLSDK_API bool TryParseNumber(StringView text, double& out);
ZOLSDK_API bool TryParseDecimalText(StringView text, Decimal& out);

} // namespace zolsdk
