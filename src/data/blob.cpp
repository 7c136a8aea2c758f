#include "zolsdk/data/blob.hpp"

#include <algorithm>

namespace zolsdk {

void DbBlob::text(StringView value) {
    size_ = static_cast<int32_t>(value.size());
    text_ = value.empty() ? String() : String(value);
    kind_ = 1;
}

String DbBlob::text() const {
    // The text is read through size: after a byte assignment this gives
    // size blanks, not the bytes.
    String out(static_cast<size_t>(std::max(size_, 0)), u' ');
    const size_t n = std::min(out.size(), text_.size());
    std::copy_n(text_.begin(), n, out.begin());
    return out;
}

void DbBlob::DataBytes(const Bytes& value) {
    if (value.empty()) {
        // No highest index to take: an empty blob.
        size_ = 0;
        bytes_.clear();
    } else {
        // size is the highest index, one less than the element count, and
        // only that many bytes are copied: the last place stays 0. Everything
        // that measures a blob counts with this size.
        size_ = static_cast<int32_t>(value.size() - 1);
        bytes_.assign(value.size(), 0);
        std::copy_n(value.begin(), static_cast<size_t>(size_), bytes_.begin());
    }
    kind_ = 2;
}

} // namespace zolsdk
