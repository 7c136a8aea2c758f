#include "support/split.hpp"

#include "zolsdk/platform/error.hpp"

namespace zolsdk {

std::vector<String> Split(StringView text, StringView delimiter, bool ignoreCase) {
    std::vector<String> out;
    if (text.empty()) return out;
    if (delimiter.empty()) {
        out.emplace_back(text);
        return out;
    }
    size_t from = 0;
    for (;;) {
        int32_t p = InStr(static_cast<int32_t>(from) + 1, text, delimiter, ignoreCase);
        if (p == 0) break;
        size_t at = static_cast<size_t>(p - 1);
        out.emplace_back(text.substr(from, at - from));
        from = at + delimiter.size();
    }
    out.emplace_back(text.substr(from));
    return out;
}

const String& Piece(const std::vector<String>& items, size_t i) {
    if (i >= items.size()) RaisePlatform(err::SubscriptOutOfRange);
    return items[i];
}

String Join(const std::vector<String>& items, StringView delimiter) {
    String out;
    for (size_t i = 0; i < items.size(); ++i) {
        if (i) out += delimiter;
        out += items[i];
    }
    return out;
}

} // namespace zolsdk
