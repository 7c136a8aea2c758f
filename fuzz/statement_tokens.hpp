#pragma once
// A reader of statement text that knows nothing but quoting: it walks a
// statement the way the engine's lexer does and hands back, in order, the
// names between name quotes and the texts between string quotes, unescaped.
// A statement whose every value and name stayed inside its quotes reads back
// as exactly the names and values that went in; one that broke out reads
// back as something else, or leaves a quote open.
#include <optional>
#include <string>
#include <vector>

namespace zolsdk::statement_tokens {

struct Quoting {
    char16_t nameOpen;
    char16_t nameClose;
    bool backslashEscapes; // "\" escapes the next character inside a text
};

inline constexpr Quoting kBacktickQuoting{u'`', u'`', true}; // MySQL
inline constexpr Quoting kBracketQuoting{u'[', u']', false}; // SQL Server, Access

struct Token {
    enum Kind { Name, Text } kind;
    std::u16string value;
    bool operator==(const Token&) const = default;
};

// The quoted pieces of `sql`, or nothing when a quote is left open.
inline std::optional<std::vector<Token>> Read(const std::u16string& sql, const Quoting& q) {
    std::vector<Token> out;
    size_t i = 0;
    const size_t n = sql.size();
    while (i < n) {
        const char16_t c = sql[i];
        if (c == q.nameOpen) {
            std::u16string name;
            ++i;
            for (;;) {
                if (i >= n) return std::nullopt;
                if (sql[i] == q.nameClose) {
                    if (i + 1 < n && sql[i + 1] == q.nameClose) {
                        name += q.nameClose;
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                name += sql[i++];
            }
            out.push_back({Token::Name, std::move(name)});
        } else if (c == u'\'') {
            std::u16string text;
            ++i;
            for (;;) {
                if (i >= n) return std::nullopt;
                const char16_t t = sql[i];
                if (q.backslashEscapes && t == u'\\') {
                    if (i + 1 >= n) return std::nullopt;
                    const char16_t e = sql[i + 1];
                    switch (e) {
                    case u'0': text += u'\0'; break;
                    case u'n': text += u'\n'; break;
                    case u'r': text += u'\r'; break;
                    case u't': text += u'\t'; break;
                    case u'b': text += u'\b'; break;
                    case u'Z': text += u'\x1A'; break;
                    case u'%':
                    case u'_': text += u'\\'; text += e; break; // kept whole, as the engine keeps them
                    default: text += e;
                    }
                    i += 2;
                    continue;
                }
                if (t == u'\'') {
                    if (i + 1 < n && sql[i + 1] == u'\'') {
                        text += u'\'';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                text += t;
                ++i;
            }
            out.push_back({Token::Text, std::move(text)});
        } else {
            ++i;
        }
    }
    return out;
}

inline Token NameToken(std::u16string v) { return {Token::Name, std::move(v)}; }
inline Token TextToken(std::u16string v) { return {Token::Text, std::move(v)}; }

} // namespace zolsdk::statement_tokens
