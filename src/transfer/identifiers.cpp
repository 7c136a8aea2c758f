#include "transfer/identifiers.hpp"

#include "dialects/name_quoting.hpp"

namespace zolsdk::transfer {

String QuoteName(Engine e, StringView name) {
    // The engines' one quoting rule, shared with the library's dialects.
    return QuotedName(name, e == Engine::MySql ? kBacktickQuotes : kBracketQuotes);
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
