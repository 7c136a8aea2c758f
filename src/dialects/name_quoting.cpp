#include "dialects/name_quoting.hpp"

#include "zolsdk/platform/error.hpp"

namespace zolsdk {

namespace {

[[noreturn]] void Refuse(StringView what, StringView name, StringView why) {
    String detail(what);
    detail += u" '";
    detail += name;
    detail += u"' ";
    detail += why;
    RaisePlatform(err::InvalidCall, detail);
}

bool WordCharacter(char16_t c) {
    if (c >= 0x80) return true; // letters of other scripts; no ASCII punctuation lies above
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' ||
           c == u'$' || c == u'#' || c == u'@';
}

// Whole between the quotes, every closing quote inside doubled.
bool WhollyQuoted(StringView name, NameQuotes q) {
    if (name.size() < 2 || name.front() != q.open || name.back() != q.close) return false;
    const StringView body = name.substr(1, name.size() - 2);
    for (size_t i = 0; i < body.size(); ++i) {
        if (body[i] != q.close) continue;
        if (i + 1 >= body.size() || body[i + 1] != q.close) return false;
        ++i;
    }
    return true;
}

} // namespace

String EscapedName(StringView name, NameQuotes quotes) {
    String s;
    s.reserve(name.size());
    for (char16_t c : name) {
        s += c;
        if (c == quotes.close) s += c;
    }
    return s;
}

String QuotedName(StringView name, NameQuotes quotes) {
    String s(1, quotes.open);
    s += EscapedName(name, quotes);
    s += quotes.close;
    return s;
}

String EscapedText(StringView text, bool backslashEscapes) {
    String s;
    s.reserve(text.size());
    for (char16_t c : text) {
        s += c;
        if (c == u'\'' || (backslashEscapes && c == u'\\')) s += c;
    }
    return s;
}

void CheckBareName(StringView name, NameQuotes quotes, StringView what) {
    if (WhollyQuoted(name, quotes)) return;
    for (char16_t c : name)
        if (!WordCharacter(c)) Refuse(what, name, u"cannot stand unquoted in a statement");
}

void CheckJetName(StringView name, StringView what) {
    if (!name.empty() && name.front() == u' ') Refuse(what, name, u"begins with a blank, which Jet does not allow");
    for (char16_t c : name) {
        if (c < 0x20 || c == u'.' || c == u'!' || c == u'`' || c == u'[' || c == u']')
            Refuse(what, name, u"holds a character that Jet does not allow in a name (. ! ` [ ] or a control character)");
    }
}

String XPathLiteral(StringView text, StringView what) {
    const char16_t q = text.find(u'"') == StringView::npos ? u'"' : u'\'';
    if (q == u'\'' && text.find(u'\'') != StringView::npos)
        Refuse(what, text, u"holds both kinds of quote, which an XPath expression cannot hold");
    String s(1, q);
    s += text;
    s += q;
    return s;
}

} // namespace zolsdk
