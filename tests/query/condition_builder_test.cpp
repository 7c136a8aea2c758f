// The criteria visitor over a dialect that echoes what it is given: how
// groups fold, which value text reaches the dialect, and how a walk fails.
#include <gtest/gtest.h>

#include "dialects/mysql_sql_builder.hpp"
#include "query_test_support.hpp"
#include "zolsdk/platform/locale.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

namespace {

// alias.column=value; a binary column renders empty, as in the real dialects.
class EchoBuilder : public DbMySqlSQLBuilder {
public:
    std::vector<std::string> values;
    String CriteriaClause(const String& Alias, const String& psColumn, int32_t plDataType, int32_t,
                          const String& psValue) override {
        values.push_back(ToUtf8(psValue));
        return plDataType == dtBinaryBLOB ? String() : Alias + u"." + psColumn + u"=" + psValue;
    }
};

Ref<DbCondition> A() { return Cond(u"A", dtVarChar, dcoEqualto, u"1"); }
Ref<DbCondition> B() { return Cond(u"B", dtVarChar, dcoEqualto, u"2"); }
Ref<DbCondition> Blob() { return Cond(u"P", dtBinaryBLOB, dcoEqualto, u"x"); }

// The value text one condition sends; the second condition keeps the root
// from rendering empty when the first one does.
std::string Sent(const Ref<DbCondition>& c, const Ref<DbParameters>& params = Ref<DbParameters>::New()) {
    auto echo = Ref<EchoBuilder>::New();
    Render(echo, Group(dloAnd, {c, A()}), params);
    return echo->values.empty() ? "<none>" : echo->values.front();
}

} // namespace

TEST(ConditionBuilder, GroupsFoldWithTheirConnective) {
    auto echo = Ref<EchoBuilder>::New();
    EXPECT_EQ(Render(echo, Group(dloOr, {A(), B()})), " (t.A=1 OR t.B=2) ");
    EXPECT_EQ(Render(echo, Group(dloAnd, {A()})), " (t.A=1) ") << "a lone item is parenthesised too";
    EXPECT_EQ(Render(echo, Group(dloNot, {A(), B()})), " (t.A=1t.B=2) ") << "NOT joins with nothing";
    // Nested groups first; an empty nested group leaves no text or connective.
    EXPECT_EQ(Render(echo, Group(dloAnd, {A()}, {Group(dloOr, {B(), A()}), Group(dloOr, {})}), nullptr, u"o"),
              " ( (o.B=2 OR o.A=1)  AND o.A=1) ");
    EXPECT_EQ(Render(echo, Group(dloOr, {B()}, {Group(dloAnd, {A()}, {Group(dloOr, {A(), B()})})})),
              " ( ( (t.A=1 OR t.B=2)  AND t.A=1)  OR t.B=2) ");

    // Empty predicates are entries: in front of items they leave a bare
    // connective, last in a group they vanish, alone the group goes.
    EXPECT_EQ(Render(echo, Group(dloOr, {Blob(), Blob(), A()})), " ( OR  OR t.A=1) ");
    EXPECT_EQ(Render(echo, Group(dloAnd, {A(), Blob()}, {Group(dloOr, {Blob()})})), " (t.A=1) ");
}

TEST(ConditionBuilder, MissingAndEmptyTreesReuseAndGrowth) {
    auto echo = Ref<EchoBuilder>::New();
    auto visitor = Ref<DbConditionBuilder>::New();
    EXPECT_TRUE(visitor->ToString(echo, nullptr, nullptr, u"t").empty());
    EXPECT_TRUE(echo->values.empty()) << "no tree, no dialect call";

    // A root without content leaves only the bottom mark: the second pop
    // fails, also when the content rendered to nothing.
    for (auto root : {Ref<DbConditionExpression>::New(), Group(dloAnd, {Blob()})}) {
        DbError e = Failure([&] { visitor->ToString(echo, root, nullptr, u"t"); });
        EXPECT_EQ(e.Number(), err::SubscriptOutOfRange);
        EXPECT_EQ(ChainTail(e.Source(), 2),
                  (std::vector<std::string>{"DbConditionBuilder:Pop Ln ", "DbConditionBuilder:ToString Ln "}));
    }

    // The same object serves the next call; 120 entries outgrow the stack twice.
    auto wide = Group(dloOr, {});
    std::string expected;
    for (int i = 0; i < 120; ++i) {
        wide->Conditions()->Add(Cond(u"c", dtInteger, dcoEqualto, int32_t{i}));
        expected += (i ? " OR t.c=" : "t.c=") + std::to_string(i);
    }
    EXPECT_EQ(ToUtf8(visitor->ToString(echo, wide, nullptr, u"t")), " (" + expected + ") ");
}

TEST(ConditionBuilder, ValuesTravelInTheTransferForm) {
    UserLocale::Set(UserLocale{u".", u",", 1});
    EXPECT_EQ(Sent(Cond(u"n", dtInteger, dcoGreaterThan, u" 0012")), "12");
    EXPECT_EQ(Sent(Cond(u"n", dtInteger, dcoIn, u"1, 2,3")), "1, 2,3") << "an IN list is the caller's own";
    EXPECT_EQ(Sent(Cond(u"d", dtDateTime, dcoEqualto, u"2024-02-29 10:05")), "20240229T100500");
    EXPECT_EQ(Sent(Cond(u"d", dtDate, dcoLastXDays, Variant::FromDate(3.0))), "19000102T000000");
    EXPECT_EQ(Sent(Cond(u"b", dtBoolean, dconotequalto, true)), "-1");
    EXPECT_EQ(Sent(Cond(u"x", dtDouble, dcoEqualto, u"12.50")), "12.5");
    EXPECT_EQ(Sent(Cond(u"x", dtDecimal, dcoEqualto, u"-3.125")), "-3.125");
    EXPECT_EQ(Sent(Cond(u"x", dtCurrency, dcoEqualto, u"1234.5678")), "1234.5678");
    EXPECT_EQ(Sent(Cond(u"s", dtVarChar, dcoContains, u"a,b")), "a,b") << "text is not escaped here";
    EXPECT_EQ(Sent(Blob()), "x");
    // NULL in any case is never converted; dcoNull always sends NULL.
    EXPECT_EQ(Sent(Cond(u"d", dtDate, dcoEqualto, u"null")), "null");
    EXPECT_EQ(Sent(Cond(u"n", dtInteger, dcoNull, u"5")), "NULL");
    // Under a decimal comma the client writes commas; the text sent is the same.
    UserLocale::Set(UserLocale{u",", u".", 1});
    EXPECT_EQ(Sent(Cond(u"x", dtDouble, dcoEqualto, u"1,5")), "1.5");
    UserLocale::Reset();
}

TEST(ConditionBuilder, ParametersAndBadValues) {
    auto params = Ref<DbParameters>::New();
    params->Add(Param(u"7"), u"limit");
    params->Add(Param(u"7", true), u"nullLimit");
    params->Add(Param(u"2024-01-31"), u"from");
    auto user = [](const Variant& key, DataTypeGroupEnum type = dtInteger) {
        return Cond(u"n", type, dcoEqualto, key, dcvtUserDefined);
    };
    EXPECT_EQ(Sent(user(u"LIMIT"), params), "7");
    EXPECT_EQ(Sent(user(u"nullLimit"), params), "NULL") << "IsNullValue wins over Value";
    EXPECT_EQ(Sent(user(u"from", dtDate), params), "20240131T000000");
    params->Item(u"limit")->Value(u"8");
    EXPECT_EQ(Sent(user(u"limit"), params), "8");

    auto fails = [&](const Ref<DbCondition>& c) { return Failure([&] { Render(Ref<EchoBuilder>::New(), Group(dloAnd, {c}), params); }); };
    DbError unknown = fails(user(u"nope"));
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    auto chain = ChainTail(unknown.Source(), 5);
    EXPECT_EQ(chain.front(), "DbParameters:Item Ln ");
    EXPECT_EQ(std::vector<std::string>(chain.begin() + 1, chain.end()), kVisitChain);

    // Relative operators need some date value, although they don't use it.
    DbError noDate = fails(Cond(u"d", dtDate, dcoNotNull));
    EXPECT_EQ(noDate.Number(), err::TypeMismatch);
    EXPECT_EQ(ChainTail(noDate.Source(), 4), kVisitChain);
    EXPECT_EQ(fails(Cond(u"s", dtVarChar, dcoEqualto, Variant::Null())).Number(), err::InvalidUseOfNull);
}
