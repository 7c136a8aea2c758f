#pragma once
// Turning fuzz bytes into the library's inputs: texts drawn from an
// alphabet of the characters that matter to quoting, so that few executions
// are spent on letters.
#include <cstddef>
#include <cstdint>
#include <string>

namespace zolsdk::fuzzing {

class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool Empty() const { return at_ >= size_; }
    uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }

    // A text of up to `longest` characters; its length is the next byte,
    // times `scale`.
    std::u16string Text(size_t longest, size_t scale = 1) {
        static constexpr char16_t kAlphabet[] = {u'\'', u'\\', u'`',    u']',  u'[', u'x', u' ', u',',
                                                 u'"',  u';',  0xD83D, 0xDE00, u'\0', u'-', u'#', u'y'};
        size_t n = Byte() * scale;
        if (n > longest) n = longest;
        std::u16string s;
        for (size_t i = 0; i < n && !Empty(); ++i) s += kAlphabet[Byte() % 16];
        return s;
    }

    // The rest of the input as UTF-16 units, two bytes each.
    std::u16string Rest() {
        std::u16string s;
        while (at_ + 1 < size_) {
            s += static_cast<char16_t>(data_[at_] | (data_[at_ + 1] << 8));
            at_ += 2;
        }
        at_ = size_;
        return s;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

} // namespace zolsdk::fuzzing
