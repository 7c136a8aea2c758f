// The criteria visitor over a stand-in dialect that echoes what it is
// given: how groups fold, which value text reaches the dialect, and how the
// walk fails.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "query_test_support.hpp"
#include "zolsdk/platform/locale.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

namespace {

// Renders a condition as alias.column=value, and a binary column as empty
// text, as the real dialects do.
class EchoBuilder : public IDbSqlBuilder {
public:
    struct Call {
        std::string alias, column, value;
        int32_t type, op;
    };
    std::vector<Call> calls;

    String CriteriaClause(const String& Alias, const String& psColumn, int32_t plDataType, int32_t plOperator,
                          const String& psValue) override {
        calls.push_back({ToUtf8(Alias), ToUtf8(psColumn), ToUtf8(psValue), plDataType, plOperator});
        if (plDataType == dtBinaryBLOB) return {};
        return Alias + u"." + psColumn + u"=" + psValue;
    }

    String CommandDelimiter() override { return {}; }
    String InlineCommentDelimiter() override { return {}; }
    String BlockCommentDelimiter() override { return {}; }
    String CreateTableSql(const String&, const String&, const String&) override { return {}; }
    String DropTableSql(const String&) override { return {}; }
    String CreateIndexSql(const String&, const String&, const String&, int32_t) override { return {}; }
    String DropIndexSql(const String&, const String&, int32_t) override { return {}; }
    String CreateKeySql() override { return {}; }
    String DropKeySql() override { return {}; }
    String SelectSql(const String&, const String&, const String&) override { return {}; }
    String SelectByAttributeSql(const String&, const String&, const String&, const String&) override { return {}; }
    String InsertSql(const String&, const String&, const String&, const String&) override { return {}; }
    String BulkInsertSql(const String&, const String&, const String&, const String&) override { return {}; }
    String UpdateSql(const String&, const String&, const String&, const String&) override { return {}; }
    String UpdateByAttributeSql(const String&, const String&, const String&, const String&, const String&,
                                const String&) override {
        return {};
    }
    String DeleteSql(const String&) override { return {}; }
    String CreateDBSql(const String&) override { return {}; }
    String DropDBSql(const String&) override { return {}; }
    String AlterColumnSql(const String&, const String&) override { return {}; }
    String AddColumnSql(const String&, const String&) override { return {}; }
    String DropColumnSql(const String&, const String&) override { return {}; }
    String CountSql(const String&) override { return {}; }
};

// The value text that one condition sends to the dialect. A second
// condition keeps the root from rendering empty when the first one does.
std::string SentValue(const Ref<DbCondition>& c, const Ref<DbParameters>& params = Ref<DbParameters>::New()) {
    auto echo = Ref<EchoBuilder>::New();
    Render(echo, Group(dloAnd, {c, Cond(u"other", dtVarChar, dcoEqualto, u"o")}), params);
    return echo->calls.empty() ? "<not called>" : echo->calls.front().value;
}

} // namespace

TEST(ConditionBuilder, GroupsFoldWithTheirConnective) {
    auto echo = Ref<EchoBuilder>::New();
    auto a = [] { return Cond(u"A", dtVarChar, dcoEqualto, u"1"); };
    auto b = [] { return Cond(u"B", dtVarChar, dcoEqualto, u"2"); };

    EXPECT_EQ(Render(echo, Group(dloOr, {a(), b()})), " (t.A=1 OR t.B=2) ");
    // Even a lone condition is parenthesised.
    EXPECT_EQ(Render(echo, Group(dloAnd, {a()})), " (t.A=1) ");
    // NOT and an unset operator join with nothing, and write no NOT.
    EXPECT_EQ(Render(echo, Group(dloNot, {a(), b()})), " (t.A=1t.B=2) ");
    EXPECT_EQ(Render(echo, Group(dloNotSet, {a()})), " (t.A=1) ");

    // The nested group comes first, whatever the order of adding.
    auto root = Group(dloAnd, {a()});
    root->ConditionExpressions()->Add(Group(dloOr, {b(), a()}));
    EXPECT_EQ(Render(echo, root), " ( (t.B=2 OR t.A=1)  AND t.A=1) ");

    // A nested group with no content leaves no text and no connective.
    auto withEmpty = Group(dloAnd, {a(), b()}, {Ref<DbConditionExpression>::New()});
    EXPECT_EQ(Render(echo, withEmpty), " (t.A=1 AND t.B=2) ");

    // Two levels down, with the alias handed to every condition.
    auto deep = Group(dloOr, {b()}, {Group(dloAnd, {a()}, {Group(dloOr, {a(), b()})})});
    auto visitor = Ref<DbConditionBuilder>::New();
    EXPECT_EQ(ToUtf8(visitor->ToString(echo, deep, Ref<DbParameters>::New(), u"orders")),
              " ( ( (orders.A=1 OR orders.B=2)  AND orders.A=1)  OR orders.B=2) ");
}

TEST(ConditionBuilder, EmptyPredicatesCountAsEntries) {
    auto echo = Ref<EchoBuilder>::New();
    auto a = Cond(u"A", dtVarChar, dcoEqualto, u"1");
    auto blob = [] { return Cond(u"Pic", dtBinaryBLOB, dcoEqualto, u"x"); };

    // In front of an item it leaves a bare connective; last, it vanishes.
    EXPECT_EQ(Render(echo, Group(dloAnd, {blob(), a})), " ( AND t.A=1) ");
    EXPECT_EQ(Render(echo, Group(dloAnd, {a, blob()})), " (t.A=1) ");
    EXPECT_EQ(Render(echo, Group(dloOr, {blob(), blob(), a})), " ( OR  OR t.A=1) ");

    // A nested group of nothing but empty text disappears.
    EXPECT_EQ(Render(echo, Group(dloAnd, {a}, {Group(dloOr, {blob()})})), " (t.A=1) ");

    // A root whose content renders to nothing is as empty as no content.
    DbError e = Failure([&] { Render(echo, Group(dloAnd, {blob()})); });
    EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
}

TEST(ConditionBuilder, MissingAndEmptyTreesAndReuse) {
    auto echo = Ref<EchoBuilder>::New();
    auto visitor = Ref<DbConditionBuilder>::New();

    // No tree: no filter, and the dialect is never asked.
    EXPECT_TRUE(visitor->ToString(echo, nullptr, Ref<DbParameters>::New(), u"t").empty());
    EXPECT_TRUE(echo->calls.empty());

    // An empty root leaves only the bottom mark: the second pop fails.
    DbError e = Failure([&] { visitor->ToString(echo, Ref<DbConditionExpression>::New(), nullptr, u"t"); });
    EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
    EXPECT_EQ(ChainTail(e.Source(), 2),
              (std::vector<std::string>{"DbConditionBuilder:Pop Ln ", "DbConditionBuilder:ToString Ln "}));

    // The same object serves the next call from a clean stack.
    EXPECT_EQ(ToUtf8(visitor->ToString(echo, Group(dloAnd, {Cond(u"A", dtVarChar, dcoEqualto, u"z")}),
                                       Ref<DbParameters>::New(), u"t")),
              " (t.A=z) ");

    // More entries than the first 51 places, twice over.
    auto wide = Ref<DbConditionExpression>::New();
    wide->LogicalOperator(dloOr);
    std::string expected = " (";
    for (int i = 0; i < 120; ++i) {
        wide->Conditions()->Add(Cond(u"c", dtInteger, dcoEqualto, int32_t{i}));
        expected += (i ? " OR t.c=" : "t.c=") + std::to_string(i);
    }
    expected += ") ";
    EXPECT_EQ(ToUtf8(visitor->ToString(echo, wide, nullptr, u"t")), expected);
}

TEST(ConditionBuilder, ValuesTravelInTheTransferForm) {
    UserLocale::Set(UserLocale{u".", u",", 1});

    // Integers are normalised, except an IN list, which is the caller's.
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoGreaterThan, u" 0012")), "12");
    EXPECT_EQ(SentValue(Cond(u"n", dtUnsignedInteger, dcoEqualto, 2.5)), "2");
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoIn, u"1, 2,3")), "1, 2,3");

    // Dates go out as yyyymmddThhnnss, whatever form the client used.
    EXPECT_EQ(SentValue(Cond(u"d", dtDateTime, dcoEqualto, u"2024-02-29 10:05")), "20240229T100500");
    EXPECT_EQ(SentValue(Cond(u"d", dtTime, dcoEqualto, u"07:08:09")), "18991230T070809");
    // The count of a relative operator rides in as a date serial.
    EXPECT_EQ(SentValue(Cond(u"d", dtDate, dcoLastXDays, Variant::FromDate(3.0))), "19000102T000000");

    EXPECT_EQ(SentValue(Cond(u"b", dtBoolean, dconotequalto, true)), "-1");
    EXPECT_EQ(SentValue(Cond(u"b", dtBoolean, dcoEqualto, u"False")), "0");
    EXPECT_EQ(SentValue(Cond(u"x", dtDouble, dcoEqualto, u"12.50")), "12.5");
    EXPECT_EQ(SentValue(Cond(u"x", dtSingle, dcoEqualto, 0.25)), "0.25");
    EXPECT_EQ(SentValue(Cond(u"x", dtDecimal, dcoEqualto, u"-3.125")), "-3.125");
    EXPECT_EQ(SentValue(Cond(u"x", dtCurrency, dcoEqualto, u"1234.5678")), "1234.5678");

    // Text is not escaped here: the comma travels as it is.
    EXPECT_EQ(SentValue(Cond(u"s", dtVarChar, dcoContains, u"a,b")), "a,b");
    EXPECT_EQ(SentValue(Cond(u"s", dtBinaryBLOB, dcoEqualto, u"raw")), "raw");

    // NULL in any case is never converted; dcoNull always sends NULL.
    EXPECT_EQ(SentValue(Cond(u"d", dtDate, dcoEqualto, u"null")), "null");
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoNull, u"5")), "NULL");

    // Under a decimal comma the client writes commas; the text sent is
    // the same as under a decimal point.
    UserLocale::Set(UserLocale{u",", u".", 1});
    EXPECT_EQ(SentValue(Cond(u"x", dtDouble, dcoEqualto, u"1,5")), "1.5");
    EXPECT_EQ(SentValue(Cond(u"x", dtCurrency, dcoEqualto, u"2,25")), "2.25");
    UserLocale::Reset();
}

TEST(ConditionBuilder, ParametersAndBadValues) {
    auto params = Ref<DbParameters>::New();
    params->Add(Param(u"7"), u"limit");
    params->Add(Param(u"7", true), u"nullLimit");
    params->Add(Param(u"2024-01-31"), u"from");

    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoEqualto, u"LIMIT", dcvtUserDefined), params), "7");
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoEqualto, u"nullLimit", dcvtUserDefined), params), "NULL");
    EXPECT_EQ(SentValue(Cond(u"d", dtDate, dcoOnOrAfter, u"from", dcvtUserDefined), params), "20240131T000000");
    // By position, as a collection key may be.
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoEqualto, int32_t{1}, dcvtUserDefined), params), "7");
    // A later reset value is what the next rendering sends.
    params->Item(u"limit")->Value(u"8");
    EXPECT_EQ(SentValue(Cond(u"n", dtInteger, dcoEqualto, u"limit", dcvtUserDefined), params), "8");

    auto echo = Ref<EchoBuilder>::New();
    const std::vector<std::string> visitChain = {"DbConditionBuilder:IVisitor_Visit Ln ",
                                                 "DbCondition:ILeaf_Accept Ln ",
                                                 "DbConditionExpression:IComposite_Accept Ln ",
                                                 "DbConditionBuilder:ToString Ln "};

    DbError unknown = Failure(
        [&] { Render(echo, Group(dloAnd, {Cond(u"n", dtInteger, dcoEqualto, u"nope", dcvtUserDefined)}), params); });
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    auto chain = ChainTail(unknown.Source(), 5);
    EXPECT_EQ(chain.front(), "DbParameters:Item Ln ");
    EXPECT_EQ(std::vector<std::string>(chain.begin() + 1, chain.end()), visitChain);

    // A relative operator still needs some date to convert.
    DbError noDate = Failure([&] { Render(echo, Group(dloAnd, {Cond(u"d", dtDate, dcoNotNull)})); });
    EXPECT_EQ(noDate.Number(), err::TypeMismatch);
    EXPECT_EQ(ChainTail(noDate.Source(), 4), visitChain);
    EXPECT_EQ(Failure([&] { Render(echo, Group(dloAnd, {Cond(u"d", dtDateTime, dcoToday)})); }).Number(),
              err::TypeMismatch);

    EXPECT_EQ(Failure([&] { Render(echo, Group(dloAnd, {Cond(u"n", dtInteger, dcoEqualto, u"ten")})); }).Number(),
              err::TypeMismatch);
    EXPECT_EQ(Failure([&] { Render(echo, Group(dloAnd, {Cond(u"s", dtVarChar, dcoEqualto, Variant::Null())})); })
                  .Number(),
              err::InvalidUseOfNull);
    // None of the failed conditions reached the dialect.
    EXPECT_TRUE(echo->calls.empty());
}
