#include "platform/ado/jet/jet_sql.hpp"

#include <algorithm>
#include <cstdio>

namespace zolsdk::ado::detail::jet {

namespace {

// ---- tokens --------------------------------------------------------------------------

// Group: an operator already rewritten, standing as one operand.
enum class Tok { Space, Word, Number, Name, Text, Date, Punct, Group };

struct Token {
    Tok kind;
    String text;
};

bool IsWordStart(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c >= 0x80; }
bool IsWordChar(char16_t c) { return IsWordStart(c) || (c >= u'0' && c <= u'9') || c == u'$'; }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool IsSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

// Jet's lexical pieces: texts in single or double quotes (a doubled quote
// stays inside), names in brackets, dates between "#" marks. A piece that is
// never closed runs to the end.
std::vector<Token> Tokenize(StringView s) {
    std::vector<Token> out;
    size_t i = 0, n = s.size();
    while (i < n) {
        char16_t c = s[i];
        size_t start = i;
        Tok kind;
        if (IsSpace(c)) {
            while (i < n && IsSpace(s[i])) ++i;
            kind = Tok::Space;
        } else if (c == u'\'' || c == u'"') {
            ++i;
            while (i < n) {
                if (s[i] == c) {
                    if (i + 1 < n && s[i + 1] == c) { i += 2; continue; }
                    ++i;
                    break;
                }
                ++i;
            }
            kind = Tok::Text;
        } else if (c == u'[') {
            size_t e = s.find(u']', i + 1);
            i = e == StringView::npos ? n : e + 1;
            kind = Tok::Name;
        } else if (c == u'#') {
            size_t e = s.find(u'#', i + 1);
            i = e == StringView::npos ? n : e + 1;
            kind = Tok::Date;
        } else if (IsDigit(c) || (c == u'.' && i + 1 < n && IsDigit(s[i + 1]))) {
            while (i < n && (IsDigit(s[i]) || s[i] == u'.')) ++i;
            if (i < n && (s[i] == u'e' || s[i] == u'E')) {
                size_t j = i + 1;
                if (j < n && (s[j] == u'+' || s[j] == u'-')) ++j;
                if (j < n && IsDigit(s[j])) {
                    i = j;
                    while (i < n && IsDigit(s[i])) ++i;
                }
            }
            kind = Tok::Number;
        } else if (IsWordStart(c)) {
            while (i < n && IsWordChar(s[i])) ++i;
            kind = Tok::Word;
        } else {
            ++i;
            kind = Tok::Punct;
        }
        out.push_back({kind, String(s.substr(start, i - start))});
    }
    return out;
}

String Join(const std::vector<Token>& t, size_t from = 0, size_t to = String::npos) {
    String s;
    to = std::min(to, t.size());
    for (size_t i = from; i < to; ++i) s += t[i].text;
    return s;
}

bool IsWord(const Token& t, StringView w) { return t.kind == Tok::Word && EqualsNoCase(t.text, w); }
bool IsPunct(const Token& t, char16_t c) { return t.kind == Tok::Punct && t.text.size() == 1 && t.text[0] == c; }

// The index of the next token that is not blank, from `i` on (size() at the end).
size_t Next(const std::vector<Token>& t, size_t i) {
    while (i < t.size() && t[i].kind == Tok::Space) ++i;
    return i;
}
// The index of the token before `i` that is not blank (npos at the start).
size_t Prev(const std::vector<Token>& t, size_t i) {
    while (i > 0) {
        --i;
        if (t[i].kind != Tok::Space) return i;
    }
    return String::npos;
}

// The name a Name or Word token stands for.
String Unquote(const Token& t) {
    if (t.kind == Tok::Name && t.text.size() >= 2 && t.text.back() == u']') return t.text.substr(1, t.text.size() - 2);
    if (t.kind == Tok::Name) return t.text.substr(1);
    return t.text;
}

// ---- operators --------------------------------------------------------------------------

// Words after which a "-" is a sign and "mod" cannot be an operator.
bool IsKeyword(const Token& t) {
    static const char16_t* const kWords[] = {u"SELECT", u"WHERE", u"AND", u"OR", u"NOT", u"ON", u"BY", u"SET",
                                             u"VALUES", u"HAVING", u"WHEN", u"THEN", u"ELSE", u"CASE", u"AS",
                                             u"FROM", u"IN", u"LIKE", u"BETWEEN", u"IS", u"DISTINCT", u"TOP",
                                             u"RETURN", u"MOD", u"XOR", u"EQV", u"IMP"};
    if (t.kind != Tok::Word) return false;
    for (const char16_t* w : kWords)
        if (EqualsNoCase(t.text, w)) return true;
    return false;
}

bool EndsOperand(const Token& t) {
    if (t.kind == Tok::Name || t.kind == Tok::Number || t.kind == Tok::Text || t.kind == Tok::Date ||
        t.kind == Tok::Group)
        return true;
    if (t.kind == Tok::Word) return !IsKeyword(t);
    return IsPunct(t, u')');
}

// The start of the primary that ends at `end` (a name, a literal, a group
// in parentheses with the function name before it, a dotted name), with a
// sign in front of it when the sign cannot be a binary minus.
size_t PrimaryStart(const std::vector<Token>& t, size_t end) {
    size_t i = end;
    if (IsPunct(t[i], u')')) {
        int depth = 0;
        for (;; --i) {
            if (IsPunct(t[i], u')')) ++depth;
            else if (IsPunct(t[i], u'(') && --depth == 0) break;
            if (i == 0) return 0;
        }
        size_t before = Prev(t, i);
        if (before != String::npos && t[before].kind == Tok::Word && !IsKeyword(t[before])) i = before;
    }
    // Dotted names: [t].[c], t.c
    while (i >= 2 && IsPunct(t[i - 1], u'.') && (t[i - 2].kind == Tok::Name || t[i - 2].kind == Tok::Word)) i -= 2;
    size_t sign = Prev(t, i);
    if (sign != String::npos && (IsPunct(t[sign], u'-') || IsPunct(t[sign], u'+'))) {
        size_t before = Prev(t, sign);
        if (before == String::npos || !EndsOperand(t[before])) i = sign;
    }
    return i;
}

// The end (inclusive) of the primary that starts at `start`, sign included.
size_t PrimaryEnd(const std::vector<Token>& t, size_t start) {
    size_t i = start;
    if (IsPunct(t[i], u'-') || IsPunct(t[i], u'+')) i = Next(t, i + 1);
    if (i >= t.size()) return t.size() - 1;
    if (t[i].kind == Tok::Word) {
        size_t open = Next(t, i + 1);
        if (open < t.size() && IsPunct(t[open], u'(')) i = open;
    }
    if (IsPunct(t[i], u'(')) {
        int depth = 0;
        for (; i < t.size(); ++i) {
            if (IsPunct(t[i], u'(')) ++depth;
            else if (IsPunct(t[i], u')') && --depth == 0) break;
        }
        return std::min(i, t.size() - 1);
    }
    while (i + 2 < t.size() && IsPunct(t[i + 1], u'.') && (t[i + 2].kind == Tok::Name || t[i + 2].kind == Tok::Word))
        i += 2;
    return i;
}

bool IsTighter(const Token& t, bool includeIntDiv) {
    return IsPunct(t, u'*') || IsPunct(t, u'/') || IsPunct(t, u'^') || (includeIntDiv && IsPunct(t, u'\\'));
}

// The operand left of the operator at `op`: primaries joined by operators
// that bind tighter than it.
size_t LeftOperand(const std::vector<Token>& t, size_t op, bool includeIntDiv) {
    size_t end = Prev(t, op);
    size_t start = PrimaryStart(t, end);
    for (;;) {
        size_t before = Prev(t, start);
        if (before == String::npos || !IsTighter(t[before], includeIntDiv)) break;
        size_t prevEnd = Prev(t, before);
        if (prevEnd == String::npos || !EndsOperand(t[prevEnd])) break;
        start = PrimaryStart(t, prevEnd);
    }
    return start;
}

size_t RightOperand(const std::vector<Token>& t, size_t op, bool includeIntDiv) {
    size_t start = Next(t, op + 1);
    if (start >= t.size()) return t.size() - 1;
    size_t end = PrimaryEnd(t, start);
    for (;;) {
        size_t after = Next(t, end + 1);
        if (after >= t.size() || !IsTighter(t[after], includeIntDiv)) break;
        size_t nextStart = Next(t, after + 1);
        if (nextStart >= t.size()) break;
        end = PrimaryEnd(t, nextStart);
    }
    return end;
}

// An operand of \ or Mod: its text, and whether it is a whole number
// already (a plain integer, or the result of \ or Mod, in parentheses or not).
struct Operand {
    String text;
    bool whole = false;
};

Operand MakeOperand(const std::vector<Token>& t, size_t from, size_t to) {
    Operand o{Trim(Join(t, from, to)), false};
    std::vector<size_t> solid;
    for (size_t i = from; i < to; ++i)
        if (t[i].kind != Tok::Space) solid.push_back(i);
    size_t a = 0, b = solid.size();
    while (b - a >= 3 && IsPunct(t[solid[a]], u'(') && IsPunct(t[solid[b - 1]], u')')) {
        ++a;
        --b;
    }
    if (b - a == 1) {
        const Token& only = t[solid[a]];
        o.whole = only.kind == Tok::Group ||
                  (only.kind == Tok::Number && std::all_of(only.text.begin(), only.text.end(), IsDigit));
    }
    return o;
}

// An operand rounded to a whole number before dividing, as Jet does (the
// driver's ROUND refuses Null, so the rounding is FLOOR of x + 0.5; Jet
// rounds an exact half to even, this rounds it up).
String Whole(const Operand& o) { return o.whole ? o.text : u"CAST(FLOOR(" + o.text + u" + 0.5) AS BIGINT)"; }

// Rewrites every binary operator for which `isOp` holds, left to right, with
// `make(left, right)`; the result stands as one whole-number operand.
template <class IsOp, class Make>
void RewriteOperator(std::vector<Token>& t, bool includeIntDiv, IsOp isOp, Make make) {
    for (size_t i = 0; i < t.size(); ++i) {
        if (!isOp(t[i])) continue;
        size_t before = Prev(t, i);
        size_t after = Next(t, i + 1);
        if (before == String::npos || after >= t.size() || !EndsOperand(t[before])) continue;
        size_t l = LeftOperand(t, i, includeIntDiv);
        size_t r = RightOperand(t, i, includeIntDiv);
        Operand left = MakeOperand(t, l, before + 1);
        Operand right = MakeOperand(t, after, r + 1);
        Token merged{Tok::Group, make(left, right)};
        t.erase(t.begin() + static_cast<long>(l), t.begin() + static_cast<long>(r) + 1);
        t.insert(t.begin() + static_cast<long>(l), merged);
        i = l;
    }
}

// ---- types ------------------------------------------------------------------------------

// The type words of one column definition that starts at `i` (the first
// word of the type), rewritten where the driver reads them otherwise.
void TranslateType(std::vector<Token>& t, size_t i) {
    if (i >= t.size() || t[i].kind != Tok::Word) return;
    Token& w = t[i];
    if (EqualsNoCase(w.text, u"LONGTEXT")) w.text = u"MEMO";
    else if (EqualsNoCase(w.text, u"IMAGE")) w.text = u"OLE";
    else if (EqualsNoCase(w.text, u"MONEY")) w.text = u"CURRENCY";
    else if (EqualsNoCase(w.text, u"BIT")) w.text = u"YESNO";
    else if (EqualsNoCase(w.text, u"INTEGER")) w.text = u"LONG";
    else if (EqualsNoCase(w.text, u"REAL")) w.text = u"SINGLE";
    else if (EqualsNoCase(w.text, u"LONG")) {
        size_t next = Next(t, i + 1);
        if (next < t.size() && IsWord(t[next], u"INTEGER")) t.erase(t.begin() + static_cast<long>(i) + 1, t.begin() + static_cast<long>(next) + 1);
    }
}

// The index of the first type word of a column definition whose name
// token is at or after `i`.
size_t TypeAfterName(const std::vector<Token>& t, size_t i) {
    size_t name = Next(t, i);
    if (name >= t.size() || (t[name].kind != Tok::Name && t[name].kind != Tok::Word)) return t.size();
    return Next(t, name + 1);
}

void TranslateDdlTypes(std::vector<Token>& t) {
    size_t first = Next(t, 0);
    if (first >= t.size()) return;
    size_t second = Next(t, first + 1);
    if (second >= t.size() || !IsWord(t[second], u"TABLE")) return;
    if (IsWord(t[first], u"CREATE")) {
        // Column definitions follow "(" and each "," at the first depth.
        int depth = 0;
        for (size_t i = second; i < t.size(); ++i) {
            if (IsPunct(t[i], u'(')) {
                if (++depth == 1) {
                    size_t ty = TypeAfterName(t, i + 1);
                    size_t head = Next(t, i + 1);
                    if (head < t.size() && !IsWord(t[head], u"CONSTRAINT") && !IsWord(t[head], u"PRIMARY"))
                        TranslateType(t, ty);
                }
            } else if (IsPunct(t[i], u')')) {
                --depth;
            } else if (depth == 1 && IsPunct(t[i], u',')) {
                size_t head = Next(t, i + 1);
                if (head < t.size() && !IsWord(t[head], u"CONSTRAINT") && !IsWord(t[head], u"PRIMARY"))
                    TranslateType(t, TypeAfterName(t, i + 1));
            }
        }
    } else if (IsWord(t[first], u"ALTER")) {
        for (size_t i = second; i < t.size(); ++i) {
            if (IsWord(t[i], u"ADD")) {
                size_t next = Next(t, i + 1);
                if (next < t.size() && (IsWord(t[next], u"CONSTRAINT") || IsWord(t[next], u"PRIMARY"))) continue;
                if (next < t.size() && IsWord(t[next], u"COLUMN")) next = next + 1;
                TranslateType(t, TypeAfterName(t, next));
            } else if (IsWord(t[i], u"ALTER")) {
                size_t next = Next(t, i + 1);
                if (next < t.size() && IsWord(t[next], u"COLUMN")) TranslateType(t, TypeAfterName(t, next + 1));
            }
        }
    }
}

void TranslateOperators(std::vector<Token>& t) {
    RewriteOperator(t, false, [](const Token& k) { return IsPunct(k, u'\\'); },
                    [](const Operand& l, const Operand& r) { return u"(" + Whole(l) + u" / " + Whole(r) + u")"; });
    RewriteOperator(t, true, [](const Token& k) { return IsWord(k, u"MOD"); },
                    [](const Operand& l, const Operand& r) { return u"MOD(" + Whole(l) + u", " + Whole(r) + u")"; });
}

// The words of the statement that are not blank, for matching its form.
std::vector<size_t> Solid(const std::vector<Token>& t) {
    std::vector<size_t> idx;
    for (size_t i = 0; i < t.size(); ++i)
        if (t[i].kind != Tok::Space) idx.push_back(i);
    return idx;
}

JetStatement Refuse(StringView what, StringView why) {
    JetStatement s;
    s.kind = JetStatement::Kind::Refused;
    s.refusal = String(what) + u" is not possible on an Access file through this provider: " + String(why);
    return s;
}

// ---- values ------------------------------------------------------------------------------

// The value of a text literal, its quotes taken off and doubled quotes made one.
String TextLiteral(const String& token) {
    char16_t q = token[0];
    String out;
    for (size_t i = 1; i + 1 < token.size(); ++i) {
        out += token[i];
        if (token[i] == q && token[i + 1] == q) ++i;
    }
    return out;
}

JetValue ParamValue(int32_t i) {
    JetValue v;
    v.kind = JetValue::Kind::Param;
    v.param = i;
    return v;
}

JetValue TextValue(const String& token) {
    JetValue v;
    v.kind = JetValue::Kind::Text;
    v.text = TextLiteral(token);
    return v;
}

bool IsRowStatement(const std::vector<Token>& t) {
    size_t first = Next(t, 0);
    if (first >= t.size()) return false;
    return IsWord(t[first], u"SELECT") || IsWord(t[first], u"INSERT") || IsWord(t[first], u"UPDATE") ||
           IsWord(t[first], u"DELETE") || IsWord(t[first], u"TRANSFORM") || IsPunct(t[first], u'(');
}

// Takes the text literals out of a statement that reads or writes rows:
// each becomes a "?" mark bound to its value. The parameters of the marks
// already there keep their order among them.
void CutLiterals(JetStatement& p) {
    std::vector<Token> t = Tokenize(p.sql);
    if (!IsRowStatement(t)) return;
    std::vector<JetValue> bound;
    bool cut = false;
    int32_t mark = 0;
    for (Token& tok : t) {
        if (IsPunct(tok, u'?')) {
            bound.push_back(ParamValue(mark++));
        } else if (tok.kind == Tok::Text && tok.text.size() >= 2 && tok.text.back() == tok.text.front()) {
            bound.push_back(TextValue(tok.text));
            tok = Token{Tok::Punct, u"?"};
            cut = true;
        } else if (tok.kind == Tok::Number && tok.text.find_first_of(u"eE") != String::npos) {
            // The driver reads no exponent: the number goes as an exact decimal.
            JetValue v;
            v.kind = JetValue::Kind::Number;
            v.text = tok.text;
            bound.push_back(std::move(v));
            tok = Token{Tok::Punct, u"?"};
            cut = true;
        }
    }
    if (!cut) return;
    p.sql = Join(t);
    p.bound = std::move(bound);
}

bool IsNameToken(const Token& t) { return t.kind == Tok::Name || (t.kind == Tok::Word && !IsKeyword(t)); }

// "( a, b, ... )" from solid position k: the names, and k past the ")".
bool NameList(const std::vector<Token>& t, const std::vector<size_t>& s, size_t& k, std::vector<String>& names,
              std::vector<bool>* ascending = nullptr) {
    if (k >= s.size() || !IsPunct(t[s[k]], u'(')) return false;
    ++k;
    for (;;) {
        if (k >= s.size() || !IsNameToken(t[s[k]])) return false;
        names.push_back(Unquote(t[s[k]]));
        ++k;
        if (ascending) {
            // A key column may carry its direction.
            bool desc = k < s.size() && IsWord(t[s[k]], u"DESC");
            if (desc || (k < s.size() && IsWord(t[s[k]], u"ASC"))) ++k;
            ascending->push_back(!desc);
        }
        if (k < s.size() && IsPunct(t[s[k]], u',')) { ++k; continue; }
        if (k < s.size() && IsPunct(t[s[k]], u')')) { ++k; return true; }
        return false;
    }
}

bool AtEnd(const std::vector<Token>& t, const std::vector<size_t>& s, size_t k) {
    return k == s.size() || (k + 1 == s.size() && IsPunct(t[s[k]], u';'));
}

// INSERT INTO t [(columns)] VALUES (values)[, (values)]... with values that
// are literals, NULL, True, False or "?" marks.
bool ParseInsert(const std::vector<Token>& t, JetStatement& st) {
    std::vector<size_t> s = Solid(t);
    size_t k = 0;
    if (s.size() < 5 || !IsWord(t[s[0]], u"INSERT") || !IsWord(t[s[1]], u"INTO") || !IsNameToken(t[s[2]])) return false;
    st.table = Unquote(t[s[2]]);
    k = 3;
    if (k < s.size() && IsPunct(t[s[k]], u'(') && !NameList(t, s, k, st.columns)) return false;
    if (k >= s.size() || !IsWord(t[s[k]], u"VALUES")) return false;
    ++k;
    int32_t mark = 0;
    for (;;) {
        if (k >= s.size() || !IsPunct(t[s[k]], u'(')) return false;
        ++k;
        std::vector<JetValue> row;
        for (;;) {
            if (k >= s.size()) return false;
            const Token& tok = t[s[k]];
            JetValue v;
            String sign;
            if ((IsPunct(tok, u'-') || IsPunct(tok, u'+')) && k + 1 < s.size() && t[s[k + 1]].kind == Tok::Number &&
                s[k + 1] == s[k] + 1) {
                sign = tok.text == u"-" ? u"-" : u"";
                ++k;
            }
            const Token& val = t[s[k]];
            if (val.kind == Tok::Number) {
                v.kind = JetValue::Kind::Number;
                v.text = sign + val.text;
            } else if (!sign.empty()) {
                return false;
            } else if (val.kind == Tok::Text) {
                if (val.text.size() < 2 || val.text.back() != val.text.front()) return false;
                v = TextValue(val.text);
            } else if (IsPunct(val, u'?')) {
                v = ParamValue(mark++);
            } else if (IsWord(val, u"NULL")) {
                v.kind = JetValue::Kind::Null;
            } else if (IsWord(val, u"TRUE") || IsWord(val, u"FALSE")) {
                v.kind = JetValue::Kind::Boolean;
                v.truth = IsWord(val, u"TRUE");
            } else if (val.kind == Tok::Date && val.text.size() >= 2 && val.text.back() == u'#') {
                v.kind = JetValue::Kind::Date;
                v.text = val.text.substr(1, val.text.size() - 2);
                DateParts p;
                if (!ParseJetDate(v.text, p)) return false;
            } else {
                return false;
            }
            row.push_back(std::move(v));
            ++k;
            if (k < s.size() && IsPunct(t[s[k]], u',')) { ++k; continue; }
            if (k < s.size() && IsPunct(t[s[k]], u')')) { ++k; break; }
            return false;
        }
        if (!st.rows.empty() && row.size() != st.rows.front().size()) return false;
        if (!st.columns.empty() && row.size() != st.columns.size()) return false;
        st.rows.push_back(std::move(row));
        if (k < s.size() && IsPunct(t[s[k]], u',')) { ++k; continue; }
        return AtEnd(t, s, k);
    }
}

// SELECT * FROM t, SELECT a, b FROM t, SELECT COUNT(*) FROM t.
bool ParseWholeTableSelect(const std::vector<Token>& t, JetStatement& st) {
    std::vector<size_t> s = Solid(t);
    if (s.size() < 4 || !IsWord(t[s[0]], u"SELECT")) return false;
    size_t k = 1;
    if (IsPunct(t[s[1]], u'*')) {
        st.kind = JetStatement::Kind::SelectRows;
        k = 2;
    } else if (IsWord(t[s[1]], u"COUNT") && s.size() >= 7 && IsPunct(t[s[2]], u'(') && IsPunct(t[s[3]], u'*') &&
               IsPunct(t[s[4]], u')')) {
        st.kind = JetStatement::Kind::CountRows;
        k = 5;
    } else {
        st.kind = JetStatement::Kind::SelectRows;
        for (;;) {
            if (k >= s.size() || !IsNameToken(t[s[k]])) return false;
            st.columns.push_back(Unquote(t[s[k]]));
            ++k;
            if (k < s.size() && IsPunct(t[s[k]], u',')) { ++k; continue; }
            break;
        }
    }
    if (k + 1 >= s.size() || !IsWord(t[s[k]], u"FROM") || !IsNameToken(t[s[k + 1]])) return false;
    st.table = Unquote(t[s[k + 1]]);
    return AtEnd(t, s, k + 2);
}

// ALTER TABLE t ADD CONSTRAINT name PRIMARY KEY (column [ASC|DESC], ...)
bool ParsePrimaryKey(const std::vector<Token>& t, JetStatement& st) {
    std::vector<size_t> s = Solid(t);
    if (s.size() < 10 || !IsWord(t[s[0]], u"ALTER") || !IsWord(t[s[1]], u"TABLE") || !IsNameToken(t[s[2]]) ||
        !IsWord(t[s[3]], u"ADD") || !IsWord(t[s[4]], u"CONSTRAINT") || !IsNameToken(t[s[5]]) ||
        !IsWord(t[s[6]], u"PRIMARY") || !IsWord(t[s[7]], u"KEY"))
        return false;
    st.table = Unquote(t[s[2]]);
    st.name = Unquote(t[s[5]]);
    size_t k = 8;
    return NameList(t, s, k, st.columns, &st.ascending) && AtEnd(t, s, k);
}

} // namespace

String TranslateJetSql(StringView sql) {
    std::vector<Token> t = Tokenize(sql);
    TranslateDdlTypes(t);
    TranslateOperators(t);
    return Join(t);
}

int32_t CountJetParameterMarks(StringView sql) {
    int32_t n = 0;
    for (const Token& t : Tokenize(sql))
        if (IsPunct(t, u'?')) ++n;
    return n;
}

String JetFileType(StringView typeText) {
    std::vector<Token> t = Tokenize(typeText);
    std::vector<size_t> s = Solid(t);
    if (s.empty() || t[s[0]].kind != Tok::Word) return {};
    String word = UCase(t[s[0]].text);
    if (word == u"LONG" && s.size() > 1 && IsWord(t[s[1]], u"INTEGER")) word = u"LONG";
    std::vector<int32_t> args;
    for (size_t k = 1; k < s.size(); ++k)
        if (t[s[k]].kind == Tok::Number) args.push_back(static_cast<int32_t>(std::stol(ToUtf8(t[s[k]].text))));
    auto arg = [&](size_t i, int32_t fallback) { return i < args.size() ? args[i] : fallback; };
    if (word == u"VARCHAR" || word == u"TEXT" || word == u"CHAR" || word == u"NVARCHAR" || word == u"NCHAR" ||
        word == u"CHARACTER" || word == u"STRING")
        return u"TEXT:" + IntText(arg(0, 255)) + u":0:0";
    if (word == u"MEMO" || word == u"LONGTEXT" || word == u"NTEXT" || word == u"LONGCHAR") return u"MEMO:0:0:0";
    if (word == u"BYTE" || word == u"TINYINT") return u"BYTE:0:0:0";
    if (word == u"SMALLINT" || word == u"SHORT") return u"INT:0:0:0";
    if (word == u"LONG" || word == u"INTEGER" || word == u"INT" || word == u"COUNTER" || word == u"AUTOINCREMENT")
        return u"LONG:0:0:0";
    if (word == u"SINGLE" || word == u"REAL") return u"FLOAT:0:0:0";
    if (word == u"DOUBLE" || word == u"FLOAT" || word == u"NUMBER") return u"DOUBLE:0:0:0";
    if (word == u"CURRENCY" || word == u"MONEY") return u"MONEY:0:0:0";
    if (word == u"DATETIME" || word == u"DATE" || word == u"TIME" || word == u"TIMESTAMP") return u"SHORT_DATE_TIME:0:0:0";
    if (word == u"YESNO" || word == u"BIT" || word == u"LOGICAL" || word == u"BOOLEAN") return u"BOOLEAN:0:0:0";
    if (word == u"OLE" || word == u"IMAGE" || word == u"LONGBINARY" || word == u"OLEOBJECT") return u"OLE:0:0:0";
    if (word == u"BINARY" || word == u"VARBINARY") return u"BINARY:" + IntText(arg(0, 255)) + u":0:0";
    if (word == u"GUID" || word == u"UNIQUEIDENTIFIER") return u"GUID:0:0:0";
    if (word == u"DECIMAL" || word == u"NUMERIC" || word == u"DEC")
        return u"NUMERIC:0:" + IntText(arg(0, 18)) + u":" + IntText(arg(1, 0));
    return {};
}

bool ParseJetDate(StringView text, DateParts& p) {
    // m/d/yyyy, yyyy-m-d, either with h:n[:s] after a blank, or a time alone.
    std::string s = ToUtf8(Trim(String(text)));
    p = DateParts{};
    p.year = 1899;
    p.month = 12;
    p.day = 30;
    int a = 0, b = 0, c = 0, n = 0;
    char sep = 0;
    const char* cur = s.c_str();
    int used = 0;
    if (std::sscanf(cur, "%d%c%d", &a, &sep, &b) == 3 && (sep == '/' || sep == '-')) {
        char sep2 = 0;
        if (std::sscanf(cur, "%d%c%d%c%d%n", &a, &sep, &b, &sep2, &c, &used) != 5 || sep2 != sep) return false;
        if (sep == '/') {
            p.month = a;
            p.day = b;
            p.year = c;
        } else {
            p.year = a;
            p.month = b;
            p.day = c;
        }
        cur += used;
        while (*cur == ' ') ++cur;
    }
    if (*cur) {
        int h = 0, m = 0, sec = 0;
        n = std::sscanf(cur, "%d:%d%n:%d%n", &h, &m, &used, &sec, &used);
        if (n < 2) return false;
        if (n < 3) sec = 0;
        cur += used;
        if (*cur) return false;
        if (h < 0 || h > 23 || m < 0 || m > 59 || sec < 0 || sec > 59) return false;
        p.hour = h;
        p.minute = m;
        p.second = sec;
    }
    if (p.year < 100 || p.year > 9999 || p.month < 1 || p.month > 12 || p.day < 1 || p.day > 31) return false;
    return true;
}

JetStatement DriverForm(StringView sql) {
    JetStatement p;
    p.sql = TranslateJetSql(sql);
    std::vector<Token> t = Tokenize(sql);
    size_t first = Next(t, 0);
    p.changesTables = first < t.size() && (IsWord(t[first], u"CREATE") || IsWord(t[first], u"ALTER") || IsWord(t[first], u"DROP"));
    if (!p.changesTables) CutLiterals(p);
    return p;
}

JetStatement PrepareJetStatement(StringView sql) {
    std::vector<Token> t = Tokenize(sql);
    std::vector<size_t> s = Solid(t);
    auto at = [&](size_t k) -> const Token& {
        static const Token none{Tok::Space, String()};
        return k < s.size() ? t[s[k]] : none;
    };

    // DROP INDEX name [ON table]
    if (IsWord(at(0), u"DROP") && IsWord(at(1), u"INDEX"))
        return Refuse(u"DROP INDEX", u"its file layer cannot remove an index");

    if (IsWord(at(0), u"ALTER") && IsWord(at(1), u"TABLE")) {
        String table = Unquote(at(2));
        if (IsWord(at(3), u"DROP")) {
            if (IsWord(at(4), u"PRIMARY") && IsWord(at(5), u"KEY"))
                return Refuse(u"DROP PRIMARY KEY", u"its file layer cannot remove an index");
            if (IsWord(at(4), u"CONSTRAINT"))
                return Refuse(u"DROP CONSTRAINT", u"its file layer cannot remove an index or a relationship");
            return Refuse(u"DROP COLUMN", u"its file layer cannot remove a column from a table");
        }
        if (IsWord(at(3), u"ALTER") && IsWord(at(4), u"COLUMN")) {
            JetStatement a;
            a.kind = JetStatement::Kind::AlterColumn;
            a.table = table;
            a.name = Unquote(at(5));
            // The rest: the type, then NULL or NOT NULL.
            size_t end = s.size();
            if (end >= 6 && IsWord(at(end - 1), u"NULL")) {
                bool notNull = end >= 7 && IsWord(at(end - 2), u"NOT");
                a.required = notNull ? 1 : 0;
                end -= notNull ? 2 : 1;
            }
            String type = s.size() > 6 && end > 6 ? Join(t, s[6], s[end - 1] + 1) : String();
            a.fileType = JetFileType(type);
            if (!Trim(type).empty() && a.fileType.empty())
                return Refuse(u"ALTER COLUMN", u"the type " + Trim(type) + u" is unknown to it");
            return a;
        }
    }

    // CREATE [UNIQUE] INDEX name ON table (columns).
    size_t k = 0;
    if (IsWord(at(k), u"CREATE")) {
        ++k;
        bool unique = false;
        if (IsWord(at(k), u"UNIQUE")) { unique = true; ++k; }
        if (IsWord(at(k), u"INDEX") && IsWord(at(k + 2), u"ON") && IsPunct(at(k + 4), u'(')) {
            JetStatement c;
            c.kind = JetStatement::Kind::CreateIndex;
            c.unique = unique;
            c.name = Unquote(at(k + 1));
            c.table = Unquote(at(k + 3));
            bool descending = false, wellFormed = false;
            for (size_t j = k + 5; j < s.size(); ++j) {
                const Token& tok = at(j);
                if (tok.kind == Tok::Name || tok.kind == Tok::Word) {
                    if (IsWord(tok, u"DESC")) {
                        if (!c.ascending.empty()) c.ascending.back() = false;
                        descending = true;
                    } else if (!IsWord(tok, u"ASC")) {
                        c.columns.push_back(Unquote(tok));
                        c.ascending.push_back(true);
                    }
                } else if (IsPunct(tok, u')')) {
                    // Options behind the list (WITH PRIMARY ...) are the driver's to read.
                    wellFormed = j + 1 == s.size();
                    break;
                } else if (!IsPunct(tok, u',')) {
                    break;
                }
            }
            if (wellFormed && !c.columns.empty()) {
                c.descending = descending;
                c.sql = TranslateJetSql(sql);
                c.changesTables = true;
                return c;
            }
        }
    }

    JetStatement direct;
    if (IsWord(at(0), u"INSERT") && ParseInsert(t, direct)) {
        direct.kind = JetStatement::Kind::InsertRows;
        return direct;
    }
    if (IsWord(at(0), u"SELECT") && ParseWholeTableSelect(t, direct)) return direct;
    if (IsWord(at(0), u"ALTER") && ParsePrimaryKey(t, direct)) {
        direct.kind = JetStatement::Kind::PrimaryKey;
        direct.changesTables = true;
        return direct;
    }
    return DriverForm(sql);
}

} // namespace zolsdk::ado::detail::jet
