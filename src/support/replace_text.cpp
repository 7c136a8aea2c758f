#include "support/replace_text.hpp"

#include <vector>

namespace zolsdk {

String ReplaceText(StringView text, StringView find, StringView replacement, int32_t start, int32_t& count,
                   bool ignoreCase) {
    if (text.empty()) return {};
    if (find.empty()) return String(text);

    String lowerText, lowerFind;
    StringView hay = text, needle = find;
    if (ignoreCase) {
        lowerText = LCase(text);
        lowerFind = LCase(find);
        hay = lowerText;
        needle = lowerFind;
    }

    // Hit positions. Most calls find nothing, so nothing is allocated until
    // the first hit; the list then grows as the hits arrive.
    size_t from = start < 1 ? 0 : static_cast<size_t>(start - 1);
    if (from > hay.size() || hay.find(needle, from) == StringView::npos) return String(text);
    std::vector<size_t> hits;
    while (from <= hay.size()) {
        size_t p = hay.find(needle, from);
        if (p == StringView::npos) break;
        hits.push_back(p);
        if (static_cast<int64_t>(hits.size()) == count) break;
        from = p + needle.size();
    }
    if (hits.empty()) return String(text);
    count = static_cast<int32_t>(hits.size());
    if (!ignoreCase && replacement == find) return String(text);

    // One allocation at the final length, then block copies.
    String out;
    out.reserve(text.size() + hits.size() * replacement.size() - hits.size() * find.size() + 1);
    size_t prev = 0;
    for (size_t h : hits) {
        out.append(text.substr(prev, h - prev));
        out.append(replacement);
        prev = h + find.size();
    }
    out.append(text.substr(prev));
    return out;
}

String ReplaceAll(StringView text, StringView find, StringView replacement) {
    int32_t count = 0;
    return ReplaceText(text, find, replacement, 1, count, false);
}

String ReplaceAll(String&& text, StringView find, StringView replacement) {
    if (find.empty() || text.find(find) == String::npos) return std::move(text);
    int32_t count = 0;
    return ReplaceText(text, find, replacement, 1, count, false);
}

} // namespace zolsdk
