#include "zolsdk/platform/text.hpp"
#include <charconv>

namespace zolsdk {

String FromUtf8(std::string_view s) {
    String out;
    out.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        char32_t cp;
        size_t n;
        if (c < 0x80) { cp = c; n = 1; }
        else if ((c & 0xE0) == 0xC0) { cp = c & 0x1F; n = 2; }
        else if ((c & 0xF0) == 0xE0) { cp = c & 0x0F; n = 3; }
        else if ((c & 0xF8) == 0xF0) { cp = c & 0x07; n = 4; }
        else { out.push_back(u'\uFFFD'); ++i; continue; }
        if (i + n > s.size()) { out.push_back(u'\uFFFD'); break; }
        bool ok = true;
        for (size_t k = 1; k < n; ++k) {
            unsigned char cc = static_cast<unsigned char>(s[i + k]);
            if ((cc & 0xC0) != 0x80) { ok = false; break; }
            cp = (cp << 6) | (cc & 0x3F);
        }
        if (!ok) { out.push_back(u'\uFFFD'); ++i; continue; }
        i += n;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
    }
    return out;
}

std::string ToUtf8(StringView s) {
    // At most three bytes a unit (a pair of units makes four): written in
    // place, then cut to the length reached. Statements of half a MiB pass
    // here, so no byte is appended one at a time.
    std::string out(s.size() * 3, '\0');
    char* o = out.data();
    for (size_t i = 0; i < s.size(); ++i) {
        char32_t cp = s[i];
        if (cp < 0x80) {
            *o++ = static_cast<char>(cp);
            continue;
        }
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (s[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x800) {
            *o++ = static_cast<char>(0xC0 | (cp >> 6));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            *o++ = static_cast<char>(0xE0 | (cp >> 12));
            *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            *o++ = static_cast<char>(0xF0 | (cp >> 18));
            *o++ = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *o++ = static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    out.resize(static_cast<size_t>(o - out.data()));
    return out;
}

String Ascii(std::string_view s) { return String(s.begin(), s.end()); }

char16_t LowerChar(char16_t c) {
    if (c >= u'A' && c <= u'Z') return static_cast<char16_t>(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
    return c;
}

char16_t UpperChar(char16_t c) {
    if (c >= u'a' && c <= u'z') return static_cast<char16_t>(c - 32);
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 32);
    return c;
}

String LCase(StringView s) {
    String r(s);
    for (auto& c : r) c = LowerChar(c);
    return r;
}

String UCase(StringView s) {
    String r(s);
    for (auto& c : r) c = UpperChar(c);
    return r;
}

bool EqualsNoCase(StringView a, StringView b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (LowerChar(a[i]) != LowerChar(b[i])) return false;
    return true;
}

int32_t InStr(int32_t start, StringView text, StringView find, bool ignoreCase) {
    if (start < 1) start = 1;
    size_t from = static_cast<size_t>(start - 1);
    if (from > text.size()) return 0;
    if (find.empty()) return start;
    if (!ignoreCase) {
        size_t p = text.find(find, from);
        return p == StringView::npos ? 0 : static_cast<int32_t>(p + 1);
    }
    if (find.size() > text.size()) return 0;
    for (size_t i = from; i + find.size() <= text.size(); ++i) {
        size_t k = 0;
        while (k < find.size() && LowerChar(text[i + k]) == LowerChar(find[k])) ++k;
        if (k == find.size()) return static_cast<int32_t>(i + 1);
    }
    return 0;
}

String Trim(StringView s) {
    size_t b = 0, e = s.size();
    while (b < e && s[b] == u' ') ++b;
    while (e > b && s[e - 1] == u' ') --e;
    return String(s.substr(b, e - b));
}

String IntText(int64_t v) {
    char buf[24];
    const char* end = std::to_chars(buf, buf + sizeof buf, v).ptr;
    return String(static_cast<const char*>(buf), end);
}

} // namespace zolsdk
