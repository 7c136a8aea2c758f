#pragma once
// The format in which values cross between the provider and its Java half:
// big-endian, each value a tag byte and its payload, so that a batch of rows
// or a list of parameters crosses in one byte array.
//
//   N null (int: the SQL type number)   Z boolean (1 byte)   I int32   J int64
//   F float (int32 bits)   D double (int64 bits)   S text (int32 count of
//   UTF-16 units, then the units)   X bytes (int32 count, then the bytes)
//   M decimal as plain text (as S)   T date and time (int32 year, bytes
//   month, day, hour, minute, second, int32 nanoseconds)
#include <cstdint>
#include <vector>

#include "platform/ado/connection.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk::ado::detail::jet {

class WireReader {
public:
    explicit WireReader(const std::vector<uint8_t>& bytes) : data_(bytes) {}
    bool AtEnd() const { return pos_ >= data_.size(); }
    uint8_t Byte();
    bool Boolean() { return Byte() != 0; }
    int32_t Int();
    int64_t Long();
    String Text();
    // One tagged value: dates as date values, decimals as Decimal (Double
    // when they do not fit), 64-bit integers as FromInt64 gives them.
    Variant Value();

private:
    const std::vector<uint8_t>& data_;
    size_t pos_ = 0;
    void Need(size_t n) const;
};

class WireWriter {
public:
    void Int(int32_t v);
    void Long(int64_t v);
    void Byte(uint8_t v) { out_.push_back(v); }
    void Text(StringView s);
    // A parameter's value, sent as its ADO type says.
    void Parameter(int32_t adoType, const Variant& value);
    const std::vector<uint8_t>& Bytes() const { return out_; }

private:
    std::vector<uint8_t> out_;
};

// The parameters of a statement as the Java half binds them.
std::vector<uint8_t> EncodeParameters(const std::vector<Ref<ado::Parameter>>& params);

// A value made to fit a rowset field of the given ADO type (a Byte field
// holds a Byte, a Currency field a Currency, ...). Null stays Null.
Variant FitToField(const Variant& value, int32_t adoType);

} // namespace zolsdk::ado::detail::jet
