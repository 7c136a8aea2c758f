#pragma once
// How each engine writes a name into a statement, in one place for every
// road that composes statements (the dialects and the copy layer alike).
//
// A name between quotes never ends its quotes early: a closing quote inside
// it is doubled, the engine's own escape. Where an engine has no escape
// (Jet's forbidden characters, an XPath literal holding both quote kinds) or
// a statement writes a name without quotes, a name that could end early is
// refused with a platform failure 5 before any statement is composed.
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

struct NameQuotes {
    char16_t open;
    char16_t close;
};

inline constexpr NameQuotes kBacktickQuotes{u'`', u'`'}; // MySQL
inline constexpr NameQuotes kBracketQuotes{u'[', u']'};  // SQL Server, Access

// What stands between the quotes: the name with every closing quote doubled.
String EscapedName(StringView name, NameQuotes quotes);
// The name between the quotes, escaped.
String QuotedName(StringView name, NameQuotes quotes);

// A name that a statement compares as text ("... WHERE key_name = 'x'"):
// what stands between the single quotes, every quote doubled, and with
// `backslashEscapes` (MySQL) every backslash doubled too.
String EscapedText(StringView text, bool backslashEscapes);

// A name that a statement writes without quotes must be one word (letters of
// any script, digits, "_", "$", "#", "@") or a name already whole between the
// engine's quotes with its closing quotes doubled; anything else is refused.
// `what` says which name it is ("table name").
void CheckBareName(StringView name, NameQuotes quotes, StringView what);

// Jet cannot hold ".", "!", "`", "[", "]" or a control character in a name,
// nor a leading blank; such a name is refused rather than half written.
void CheckJetName(StringView name, StringView what);

// The text as an XPath 1.0 string literal: between double quotes, or single
// quotes when it holds a double one. XPath has no escape, so a text that
// holds both is refused.
String XPathLiteral(StringView text, StringView what);

} // namespace zolsdk
