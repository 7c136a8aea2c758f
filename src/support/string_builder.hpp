#pragma once
// CStringBuilder: a growable buffer of 16-bit characters kept as bytes.
// Sizes in bytes unless a member says characters. Failures are raised with
// number 0x80040200 and need no trap here.
#include <cstdint>
#include <vector>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class CStringBuilder {
public:
    CStringBuilder();

    int32_t BufferBump() const;           // bytes
    void BufferBump(int32_t newVal);
    int32_t Capacity() const;             // bytes
    void Capacity(int32_t newVal);
    String Chars(int32_t position) const; // character index from 0
    void Chars(int32_t position, StringView newVal);
    int32_t Length() const;               // characters
    void Length(int32_t newVal);
    int32_t SizingMethod() const;         // 0 fixed, 1 percent
    void SizingMethod(int32_t newVal);
    int32_t SizingPercent() const;
    void SizingPercent(int32_t newVal);

    CStringBuilder& Append(StringView text);
    int32_t EnsureCapacity(int32_t size); // bytes; returns the capacity
    CStringBuilder& Insert(int32_t position, StringView newText);
    CStringBuilder& Remove(int32_t startIndex, int32_t length);
    String ToString() const;

private:
    int32_t fixedBump_ = 2048;
    int32_t sizingPercent_ = 25;
    int32_t sizingMethod_ = 1;
    int32_t length_ = 0;   // bytes in use
    int32_t capacity_ = 8192;
    // The capacity is what the builder reports; memory is taken only as far
    // as the text has reached (what lies behind reads as 0), so a builder
    // made for one short record costs no 8 KiB of zeros.
    std::vector<uint8_t> buffer_, spare_;
    void Touch(int32_t bytes);
};

} // namespace zolsdk
