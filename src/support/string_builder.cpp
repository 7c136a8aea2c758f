#include "support/string_builder.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/error.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
constexpr int32_t kSizingFixed = 0;
constexpr int32_t kSizingPercent = 1;

// Sizes are 32-bit: a sum or product that leaves that range is an overflow,
// not a silent wrap into a negative size.
int32_t Checked(int64_t v) {
    if (v > INT32_MAX || v < INT32_MIN) RaisePlatform(err::Overflow);
    return static_cast<int32_t>(v);
}

[[noreturn]] void RaiseRange(const char16_t* member, const char16_t* description) {
    String source = u"CStringBuilder";
    source += member;
    RaisePlatformFrom(errnum::StringBuilderRange, source, description);
}
} // namespace

CStringBuilder::CStringBuilder() = default;

void CStringBuilder::Touch(int32_t bytes) {
    if (bytes > 0 && buffer_.size() < static_cast<size_t>(bytes)) buffer_.resize(static_cast<size_t>(bytes));
}

int32_t CStringBuilder::BufferBump() const {
    if (sizingMethod_ == kSizingPercent)
        return static_cast<int32_t>(static_cast<int64_t>(capacity_) * sizingPercent_ / 100);
    return fixedBump_;
}

void CStringBuilder::BufferBump(int32_t newVal) {
    if (sizingMethod_ != kSizingFixed || newVal <= 0) return;
    // Keep the step a whole number of characters.
    fixedBump_ = newVal % 2 ? Checked(static_cast<int64_t>(newVal) + 1) : newVal;
}

int32_t CStringBuilder::Capacity() const { return capacity_; }

void CStringBuilder::Capacity(int32_t newVal) {
    if (newVal <= 0) return;
    const int32_t bump = BufferBump();
    // Remembered so that switching to fixed mode later goes on with the
    // step last used.
    fixedBump_ = bump;
    if (bump == 0) RaisePlatform(err::DivisionByZero);
    const int32_t newCapacity = Checked((static_cast<int64_t>(newVal) + bump - 1) / bump * bump);
    if (newCapacity < length_) length_ = newCapacity;
    // Shrinking drops what lies behind the new end; growing takes nothing yet.
    if (buffer_.size() > static_cast<size_t>(newCapacity)) buffer_.resize(static_cast<size_t>(newCapacity));
    if (spare_.size() > static_cast<size_t>(newCapacity)) spare_.resize(static_cast<size_t>(newCapacity));
    capacity_ = newCapacity;
}

String CStringBuilder::Chars(int32_t position) const {
    // The position is in characters but compared with the length in bytes:
    // the callers only read inside the text, and the check stays as loose as
    // they know it.
    if (position < 0 || position >= length_) RaiseRange(u".Chars", u"Tried reading character past end of buffer.");
    const size_t offset = static_cast<size_t>(position) * 2;
    char16_t c = 0;
    // What lies past the allocation reads as 0 rather than as foreign memory.
    if (offset + 2 <= buffer_.size()) std::memcpy(&c, buffer_.data() + offset, 2);
    return String(1, c);
}

void CStringBuilder::Chars(int32_t position, StringView newVal) {
    if (position < 0 || position >= length_) RaiseRange(u".Chars", u"Tried assigning character past end of buffer.");
    if (newVal.empty()) RaisePlatform(err::InvalidCall); // there is no first character to take
    const size_t offset = static_cast<size_t>(position) * 2;
    // A write past the capacity is dropped instead of corrupting memory.
    if (offset + 2 > static_cast<size_t>(capacity_)) return;
    Touch(static_cast<int32_t>(offset + 2));
    std::memcpy(buffer_.data() + offset, newVal.data(), 2);
}

int32_t CStringBuilder::Length() const { return length_ / 2; }

void CStringBuilder::Length(int32_t newVal) {
    if (newVal < 0) return;
    const int32_t bytes = Checked(static_cast<int64_t>(newVal) * 2);
    if (bytes > capacity_) Capacity(bytes);
    // Lengthening exposes whatever the buffer held there.
    Touch(bytes);
    length_ = bytes;
}

int32_t CStringBuilder::SizingMethod() const { return sizingMethod_; }

void CStringBuilder::SizingMethod(int32_t newVal) {
    if (newVal == kSizingFixed || newVal == kSizingPercent) sizingMethod_ = newVal;
}

int32_t CStringBuilder::SizingPercent() const { return sizingPercent_; }

void CStringBuilder::SizingPercent(int32_t newVal) {
    if (newVal >= 1 && newVal <= 100) sizingPercent_ = newVal;
}

CStringBuilder& CStringBuilder::Append(StringView text) {
    if (text.empty()) return *this;
    const int32_t size = Checked(static_cast<int64_t>(text.size()) * 2);
    EnsureCapacity(Checked(static_cast<int64_t>(length_) + size));
    Touch(length_ + size);
    std::memcpy(buffer_.data() + length_, text.data(), static_cast<size_t>(size));
    length_ += size;
    return *this;
}

int32_t CStringBuilder::EnsureCapacity(int32_t size) {
    if (size > capacity_) Capacity(size);
    return capacity_;
}

CStringBuilder& CStringBuilder::Insert(int32_t position, StringView newText) {
    const int64_t pos64 = static_cast<int64_t>(position) * 2;
    // Checked against the capacity, not the length: a position behind the
    // text is accepted. A negative one never is.
    if (pos64 < 0 || pos64 > capacity_) RaiseRange(u".Insert", u"Argument(s) out of range.");
    if (newText.empty()) return *this;
    const int32_t pos = static_cast<int32_t>(pos64);
    const int32_t size = Checked(static_cast<int64_t>(newText.size()) * 2);
    // Room for the text where it lands, also when that is behind the length.
    const int32_t end = Checked(static_cast<int64_t>(std::max(length_, pos)) + size);
    EnsureCapacity(end);
    Touch(end);
    if (spare_.size() < buffer_.size()) spare_.resize(buffer_.size());

    uint8_t* dst = spare_.data();
    std::memcpy(dst, buffer_.data(), static_cast<size_t>(pos));
    std::memcpy(dst + pos, newText.data(), static_cast<size_t>(size));
    if (length_ > pos) std::memcpy(dst + pos + size, buffer_.data() + pos, static_cast<size_t>(length_ - pos));
    // Exchange the buffers instead of copying back: the old one becomes the
    // next Insert's scratch space.
    std::swap(buffer_, spare_);
    length_ += size;
    return *this;
}

CStringBuilder& CStringBuilder::Remove(int32_t startIndex, int32_t length) {
    const int64_t start = static_cast<int64_t>(startIndex) * 2;
    const int64_t count = static_cast<int64_t>(length) * 2;
    if (start < 0 || count < 0 || start + count > length_) RaiseRange(u".Remove", u"Argument(s) out of range.");
    const int64_t tail = length_ - (start + count);
    if (count > 0 && tail > 0)
        std::memmove(buffer_.data() + start, buffer_.data() + start + count, static_cast<size_t>(tail));
    length_ -= static_cast<int32_t>(count);
    return *this;
}

String CStringBuilder::ToString() const {
    if (length_ <= 0) return {};
    String out(static_cast<size_t>(length_ / 2), u'\0');
    std::memcpy(out.data(), buffer_.data(), out.size() * 2);
    return out;
}

} // namespace zolsdk
