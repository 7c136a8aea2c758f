#pragma once
// The neutral text form of values of each type group, and back.
#include <cstdint>

#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class DbGenericEncoder {
public:
    String Encode(const Variant& pvValue, int32_t plDataTypeGroup, StringView psChar, StringView psEncodeTo);
    String EncodeString(StringView text, StringView psChar, StringView psEncodeTo);
    String EncodeDate(double ptValue);
    String EncodeDecimal(const Variant& value);
    String EncodeCurrency(Currency value);
    String EncodeBoolean(bool pbValue);
    String EncodeDouble(double pdValue);
    String EncodeSingle(float value);
};

class DbGenericDecoder {
public:
    DbGenericDecoder(); // reads the user's decimal separator once
    void Decode(const Variant& poValue, StringView psDataTypeGroup);
    // psChar is the escape sequence here, psDecodeTo the character.
    String DecodeString(StringView text, StringView psChar, StringView psDecodeTo);
    double DecodeDate(StringView text);
    Variant DecodeDecimal(StringView text);
    Currency DecodeCurrency(StringView text);
    bool DecodeBoolean(StringView text);
    double DecodeDouble(StringView text);
    float DecodeSingle(StringView text);

private:
    String decimalSeparator_;
    // The neutral "." replaced by the user's separator, for the
    // locale-dependent conversions.
    String Localised(StringView text) const;
};

} // namespace zolsdk
