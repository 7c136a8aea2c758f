#include "transfer/identifiers.hpp"

namespace zolsdk::transfer {

String QuoteName(Engine e, StringView name) {
    char16_t open = e == Engine::MySql ? u'`' : u'[';
    char16_t close = e == Engine::MySql ? u'`' : u']';
    String s(1, open);
    for (char16_t c : name) {
        s += c;
        if (c == close) s += c;
    }
    s += close;
    return s;
}

String QuoteList(Engine e, const std::vector<String>& names) {
    String s;
    for (const String& n : names) {
        if (!s.empty()) s += u", ";
        s += QuoteName(e, n);
    }
    return s;
}

String FitName(StringView name, size_t limit) {
    if (name.size() <= limit) return String(name);
    // Keep the head and tell names apart by a short hash of the whole.
    uint32_t h = 2166136261u;
    for (char16_t c : name) h = (h ^ c) * 16777619u;
    String tail = u"_" + IntText(h % 1000000);
    return String(name.substr(0, limit - tail.size())) + tail;
}

} // namespace zolsdk::transfer
