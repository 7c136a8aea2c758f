// Values and names into the statement builders of the three SQL engines;
// every statement must read back (statement_tokens.hpp) as exactly the names
// that went in and the values that went in, cut to 255 escaped characters
// between whole characters. A builder may refuse a name; it may not write one
// that reads back as something else.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "dialects/access_sql_builder.hpp"
#include "dialects/mssql_sql_builder.hpp"
#include "dialects/mysql_sql_builder.hpp"
#include "fuzz_input.hpp"
#include "statement_tokens.hpp"
#include "support/replace_text.hpp"

using namespace zolsdk;
using statement_tokens::NameToken;
using statement_tokens::TextToken;
using statement_tokens::Token;

namespace {

bool IsHigh(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLow(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

// What a text literal reads back as: a character 0 travels as the two
// characters "\0", and the cut keeps the longest head of whole pieces whose
// escaped length is within 255.
std::u16string ExpectedText(const std::u16string& value, bool backslashEscapes, bool cut) {
    const std::u16string text = ReplaceAll(value, std::u16string(1, u'\0'), u"\\0");
    if (!cut) return text;
    size_t used = 0, i = 0;
    while (i < text.size()) {
        const size_t piece = IsHigh(text[i]) && i + 1 < text.size() && IsLow(text[i + 1]) ? 2 : 1;
        const size_t cost = text[i] == u'\'' || (backslashEscapes && text[i] == u'\\') ? 2 : piece;
        if (used + cost > 255) break;
        used += cost;
        i += piece;
    }
    return text.substr(0, i);
}

[[noreturn]] void Fail(const char* what, const std::u16string& sql) {
    std::fprintf(stderr, "%s\n%s\n", what, ToUtf8(sql).c_str());
    std::abort();
}

void Expect(const std::u16string& sql, const statement_tokens::Quoting& q, const std::vector<Token>& expected) {
    auto tokens = statement_tokens::Read(sql, q);
    if (!tokens) Fail("a quote is left open", sql);
    if (*tokens != expected) Fail("the statement reads back as other names or values", sql);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzing::Input in(data, size);
    static DbMySqlSQLBuilder my;
    static DbMsSqlSQLBuilder ms;
    static DbMsAccessSQLBuilder ac;
    const struct {
        DbSqlDialect* builder;
        statement_tokens::Quoting quoting;
    } engines[] = {{&my, statement_tokens::kBacktickQuoting},
                   {&ms, statement_tokens::kBracketQuoting},
                   {&ac, statement_tokens::kBracketQuoting}};
    const auto& e = engines[in.Byte() % 3];
    const std::u16string table = in.Text(12);
    const std::u16string column = in.Text(12);
    const std::u16string value = in.Text(300, 2);
    const bool bs = e.quoting.backslashEscapes;
    // Commas travel as "%2C"; a value that holds the escape itself or the
    // word null is another story (the transfer form), left out here.
    if (value.find_first_of(u"%,") != std::u16string::npos) return 0;
    const std::u16string encoded = ReplaceAll(value, u",", u"%2C");
    if (EqualsNoCase(encoded, u"null")) return 0;
    try {
        Expect(e.builder->InsertSql(table, u"01" + column, encoded, u"="), e.quoting,
               {NameToken(table), NameToken(column), TextToken(ExpectedText(value, bs, true))});
        Expect(e.builder->UpdateByAttributeSql(table, u"02" + column, encoded, u"=", u"01" + column, encoded),
               e.quoting,
               {NameToken(table), NameToken(column), TextToken(ExpectedText(value, bs, false)), NameToken(column),
                TextToken(ExpectedText(value, bs, true))});
        Expect(e.builder->CriteriaClause(u"", column, dtVarChar, dcoEqualto, encoded), e.quoting,
               value.empty() ? std::vector<Token>{NameToken(column), TextToken(u""), NameToken(column)}
                             : std::vector<Token>{NameToken(column), TextToken(ExpectedText(value, bs, true))});
        for (const std::u16string& sql : {e.builder->DropTableSql(table), e.builder->DeleteSql(table),
                                          e.builder->CountSql(table), e.builder->DropIndexSql(column, table, 1)})
            Expect(sql, e.quoting, {NameToken(table)});
    } catch (const DbError&) {
        // A refused name (or a value the transfer form cannot carry) is a
        // clear failure, which is allowed.
    }
    return 0;
}
