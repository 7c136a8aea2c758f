// Values and names never leave their quotes. Every statement is read back
// with a lexer that knows only the engine's quoting (fuzz/statement_tokens.hpp):
// it must give back exactly the names and values that went in, with a text
// value cut to its 255 escaped characters only between whole characters.
#include "../../fuzz/statement_tokens.hpp"
#include "common/hostile_values.hpp"
#include "dialect_test_support.hpp"
#include "support/replace_text.hpp"

#include <functional>

namespace zolsdk::testing_support {
namespace {

using statement_tokens::NameToken;
using statement_tokens::Quoting;
using statement_tokens::TextToken;
using zoltest::ExpectedHead;
using zoltest::HostileValues;
using statement_tokens::Token;

struct Engine {
    const char* name;
    DbSqlDialect* builder;
    Quoting quoting;
};

// The transfer form of a text value: "," travels as "%2C".
String Encoded(const String& v) { return ReplaceAll(v, u",", u"%2C"); }

class QuotingSafety : public DialectTest {
protected:
    DbMySqlSQLBuilder my_;
    DbMsSqlSQLBuilder ms_;
    DbMsAccessSQLBuilder ac_;
    std::vector<Engine> engines_ = {{"mysql", &my_, statement_tokens::kBacktickQuoting},
                                    {"mssql", &ms_, statement_tokens::kBracketQuoting},
                                    {"access", &ac_, statement_tokens::kBracketQuoting}};

    static std::vector<Token> Read(const Engine& e, const String& sql) {
        auto tokens = statement_tokens::Read(sql, e.quoting);
        EXPECT_TRUE(tokens.has_value()) << e.name << ": a quote is left open in " << N(sql);
        return tokens.value_or(std::vector<Token>{});
    }
};

TEST_F(QuotingSafety, EveryTextValueClosesOnEveryRoad) {
    const std::vector<String> values = HostileValues();
    ASSERT_GT(values.size(), 400u);
    for (const Engine& e : engines_) {
        const bool bs = e.quoting.backslashEscapes;
        for (const String& v : values) {
            const String head = ExpectedHead(v, bs);
            SCOPED_TRACE(std::string(e.name) + " value of " + std::to_string(v.size()) + ": " + N(v));
            // Row, and bound (the same literal with "?" for the large column).
            for (const char16_t* mark : {u"=", u"?"}) {
                const String sql = e.builder->InsertSql(u"t", u"01txt,03id,02memo", Encoded(v) + u",7,m", mark);
                std::vector<Token> expected = {NameToken(u"t"), NameToken(u"txt"), NameToken(u"id"),
                                               NameToken(u"memo"), TextToken(head)};
                if (String(mark) == u"=") expected.push_back(TextToken(u"m")); // "?" stands for the bound one
                EXPECT_EQ(Read(e, sql), expected);
                EXPECT_NE(sql.find(u",7,"), String::npos) << N(sql);
            }
            // Batched: the value's row and the row behind it both arrive.
            if (e.builder != &ac_) {
                const String sql = e.builder->BulkInsertSql(u"t", u"01txt,03id", Encoded(v) + u",1%3Bnext,2", u"=");
                EXPECT_EQ(Read(e, sql), (std::vector<Token>{NameToken(u"t"), NameToken(u"txt"), NameToken(u"id"),
                                                            TextToken(head), TextToken(u"next")}));
            }
            // Update: the value as the new text and as the match.
            const String update = e.builder->UpdateByAttributeSql(u"t", u"01txt", Encoded(v), u"=", u"01txt",
                                                                  Encoded(v));
            EXPECT_EQ(Read(e, update), (std::vector<Token>{NameToken(u"t"), NameToken(u"txt"), TextToken(head),
                                                           NameToken(u"txt"), TextToken(head)}));
            // Criteria: equality, and a pattern that carries the value inside.
            EXPECT_EQ(Read(e, e.builder->CriteriaClause(u"a", u"txt", dtVarChar, dcoEqualto, Encoded(v))),
                      (std::vector<Token>{NameToken(u"txt"), TextToken(head)}));
            EXPECT_EQ(Read(e, e.builder->CriteriaClause(u"a", u"txt", dtVarChar, dcoDoesNotContain, Encoded(v))),
                      (std::vector<Token>{NameToken(u"txt"), TextToken(ExpectedHead(u"%" + v + u"%", bs)),
                                          NameToken(u"txt")}));
        }
    }
}

TEST_F(QuotingSafety, AQuoteOrBackslashCutInHalfNeverLeavesTheLiteralOpen) {
    // The documented cut: 254 letters and a quote lose the quote; 253 keep it.
    EXPECT_EQ(my_.DBString(String(254, u'x') + u"'", false, 255), u"'" + String(254, u'x') + u"'");
    EXPECT_EQ(my_.DBString(String(253, u'x') + u"'", false, 255), u"'" + String(253, u'x') + u"'''");
    // An odd run of quotes at the cut used to keep one quote too many, and a
    // backslash cut from its pair escaped the closing quote.
    EXPECT_EQ(my_.DBString(String(252, u'x') + u"''", false, 255), u"'" + String(252, u'x') + u"'''");
    EXPECT_EQ(my_.DBString(String(254, u'x') + u"\\", false, 255), u"'" + String(254, u'x') + u"'");
    EXPECT_EQ(ms_.DBString(String(254, u'x') + u"\\", false, 255), u"N'" + String(254, u'x') + u"\\'");
    // Half a surrogate pair is never kept.
    EXPECT_EQ(ac_.DBString(String(254, u'x') + u"\U0001F600", false, 255), u"'" + String(254, u'x') + u"'");
    // Large text is never cut, whatever it holds.
    const String big = String(300, u'\\') + u"'";
    EXPECT_EQ(Read(engines_[0], my_.DBString(big, true, 255)), std::vector<Token>{TextToken(big)});
}

TEST_F(QuotingSafety, NamesStayInsideTheirQuotesOrAreRefused) {
    const std::vector<String> names = {u"plain", u"a`b", u"x` -- ", u"a]b", u"x]; DROP TABLE y; --", u"a'b",
                                       u"[x", u"`", u"]", u"a.b", u"na\u00efve \u00e9t\u00e9"};
    for (const Engine& e : engines_) {
        const bool jet = e.builder == &ac_;
        for (const String& name : names) {
            SCOPED_TRACE(std::string(e.name) + " name " + N(name));
            const bool jetRefuses = jet && name.find_first_of(u"`[].!") != String::npos;
            // Every statement that writes the name between quotes.
            const std::vector<std::pair<String, std::function<String()>>> statements = {
                {u"drop", [&] { return e.builder->DropTableSql(name); }},
                {u"delete", [&] { return e.builder->DeleteSql(name); }},
                {u"count", [&] { return e.builder->CountSql(name); }},
                {u"select", [&] { return e.builder->SelectSql(name, u"", u""); }},
                {u"insert", [&] { return e.builder->InsertSql(name, u"03" + name, u"1", u"="); }},
                {u"update", [&] { return e.builder->UpdateByAttributeSql(name, u"03" + name, u"1", u"=", u"03" + name, u"2"); }},
                {u"alter", [&] { return e.builder->AlterColumnSql(name, u"t," + name + u",1,3,3,0,,10,0,0,True"); }},
                {u"drop key", [&] { return e.builder->DropIndexSql(u"", name, 1); }},
                {u"criteria", [&] { return e.builder->CriteriaClause(u"", name, dtInteger, dcoEqualto, u"5"); }},
            };
            for (const auto& [what, build] : statements) {
                SCOPED_TRACE(N(what));
                if (jetRefuses) {
                    EXPECT_THROW(build(), DbError);
                    continue;
                }
                const std::vector<Token> tokens = Read(e, build());
                ASSERT_FALSE(tokens.empty());
                for (const Token& t : tokens) EXPECT_EQ(t, NameToken(name));
                if (what == u"criteria") {
                    EXPECT_EQ(tokens.size(), 1u);
                }
            }
            // Places that write a name without quotes take one word only.
            const bool word = name == u"plain";
            const auto bare = [&] {
                e.builder->DropIndexSql(name, u"t", 0); // the index name quoted, the table bare
                return e.builder->CreateIndexSql(u"i", name, u"c<", 1);
            };
            if (word) {
                EXPECT_NO_THROW(bare());
            } else if (name.find_first_of(u" ;-'`[]") != String::npos) {
                try {
                    bare();
                    ADD_FAILURE() << "an unquoted name that could end early was written";
                } catch (const DbError& failure) {
                    EXPECT_EQ(failure.Number(), err::InvalidCall);
                    EXPECT_NE(failure.Description().find(name), String::npos);
                }
            }
        }
    }
    // MySQL writes database names between back-ticks; SQL Server takes one word.
    EXPECT_EQ(Read(engines_[0], my_.DropDBSql(u"rel_canary` -- ")), std::vector<Token>{NameToken(u"rel_canary` -- ")});
    EXPECT_THROW(ms_.DropDBSql(u"shop; DROP DATABASE x"), DbError);
    EXPECT_EQ(N(ms_.CreateDBSql(u"[my shop]")), "CREATE DATABASE [my shop]");
    // An index column list keeps each name whole, directions after it.
    EXPECT_EQ(N(my_.CreateIndexSql(u"i", u"t", u"a`b<,c>", 0)), " CREATE  INDEX `i` ON t (`a``b` ASC,`c` DESC)");
}

TEST_F(QuotingSafety, IntegersMustBeNumbersBecauseTheyStandUnquoted) {
    EXPECT_EQ(N(my_.GetValue(u" -12", dtInteger, u"=")), " -12");
    EXPECT_EQ(N(my_.GetValue(u"1.5e3", dtUnsignedInteger, u"=")), "1.5e3");
    EXPECT_EQ(N(ms_.CriteriaClause(u"a", u"n", dtInteger, dcoIn, u"1, 2,3")), "(a.[n] IN (1, 2,3))");
    for (const char16_t* bad : {u"1) OR (1=1", u"1; DROP TABLE t", u"1 -- ", u"", u"0x10", u"1,2"})
        EXPECT_THROW(my_.GetValue(bad, dtInteger, u"="), DbError) << N(bad);
    EXPECT_THROW(ms_.CriteriaClause(u"a", u"n", dtInteger, dcoEqualto, u"1 OR 1=1"), DbError);
}

} // namespace
} // namespace zolsdk::testing_support
