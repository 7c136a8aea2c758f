// Whole criteria trees rendered by each engine's dialect, on a fixed clock.
#include <gtest/gtest.h>

#include "query_test_support.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

namespace {

constexpr int32_t kAccess = 0, kSqlServer = 1, kMySql = 2, kXml = 3;

class CriteriaRender : public ::testing::Test {
protected:
    void SetUp() override {
        UserLocale::Set(UserLocale{u".", u",", 1});
        Clock::Set(DateSerial(2024, 2, 29) + TimeSerial(15, 30, 0)); // a Thursday
    }
    void TearDown() override {
        Clock::Set(std::nullopt);
        UserLocale::Reset();
    }
};

} // namespace

TEST_F(CriteriaRender, NestedTreeInEveryDialect) {
    // (qty > 12 OR status = the null parameter OR price <= the parameter)
    // AND NOT(active <> true) AND name begins with O'Br AND created today
    // AND shipped in the last 3 days.
    auto q = Ref<DbQuery>::New();
    q->TableName(u"orders");
    q->Parameters()->Add(Param(u"Open", true), u"pStatus");
    q->Parameters()->Add(Param(u"12.50"), u"pPrice");
    auto root = Group(dloAnd, {Cond(u"Name", dtVarChar, dcoBeginsWith, u"O'Br"),
                               Cond(u"Created", dtDateTime, dcoToday, u"2020-01-01"),
                               Cond(u"Shipped", dtDate, dcoLastXDays, Variant::FromDate(3.0))});
    root->ConditionExpressions()->Add(Group(dloOr, {Cond(u"Qty", dtInteger, dcoGreaterThan, u" 0012"),
                                                    Cond(u"Status", dtVarChar, dcoEqualto, u"pStatus", dcvtUserDefined),
                                                    Cond(u"Price", dtDouble, dcoLessThanEqualTo, u"pPrice", dcvtUserDefined)}));
    root->ConditionExpressions()->Add(Group(dloNot, {Cond(u"Active", dtBoolean, dconotequalto, true)}));
    q->Criteria(root);
    auto render = [&](int32_t id) { return Render(NewSqlBuilder(id), q->Criteria(), q->Parameters(), q->TableName()); };

    EXPECT_EQ(render(kMySql),
              " ( (orders.`Qty` > 12 OR orders.`Status` = 'NULL' OR orders.`Price` <= 12.5) "
              " AND  (orders.`Active`<> True) "
              " AND orders.`Name` LIKE 'O''Br%'"
              " AND orders.`Created` BETWEEN  '2024-02-29 00:00:00'  AND  '2024-02-29 23:59:59' "
              " AND orders.`Shipped` BETWEEN  '2024-02-26'  AND  '2024-02-29' ) ");
    EXPECT_EQ(render(kSqlServer),
              " ( (orders.[Qty] > 12 OR orders.[Status] = N'NULL' OR orders.[Price] <= 12.5) "
              " AND  (orders.[Active]<> True) "
              " AND orders.[Name] LIKE N'O''Br%'"
              " AND orders.[Created] BETWEEN  '02/29/2024 00:00:00'  AND  '02/29/2024 23:59:59' "
              " AND orders.[Shipped] BETWEEN  '02/26/2024'  AND  '02/29/2024' ) ");
    const std::string jet = " ( (orders.[Qty] > 12 OR orders.[Status] = 'NULL' OR orders.[Price] <= 12.5) "
                            " AND  (orders.[Active]<> True) "
                            " AND orders.[Name] LIKE 'O''Br%'"
                            " AND orders.[Created] BETWEEN  #02/29/2024 00:00:00#  AND  #02/29/2024 23:59:59# "
                            " AND orders.[Shipped] BETWEEN  #02/26/2024#  AND  #02/29/2024# ) ";
    EXPECT_EQ(render(kAccess), jet);
    EXPECT_EQ(render(kXml), jet);
}

TEST_F(CriteriaRender, NullConditionsDifferByType) {
    // dcoNull sends NULL: text compares with '' or NULL, a date tests for
    // NULL, an integer refuses it.
    auto names = Group(dloOr, {Cond(u"Name", dtVarChar, dcoNull), Cond(u"Shipped", dtDate, dcoNull, u"x")});
    EXPECT_EQ(Render(NewSqlBuilder(kMySql), names), " ((t.`Name` = '' OR t.`Name` IS NULL)  OR t.`Shipped` IS NULL ) ");
    EXPECT_EQ(Render(NewSqlBuilder(kSqlServer), names),
              " ((t.[Name] = N'' OR t.[Name] IS NULL)  OR t.[Shipped] IS NULL ) ");
    auto params = Ref<DbParameters>::New();
    params->Add(Param(u"", true), u"p");
    EXPECT_EQ(Render(NewSqlBuilder(kAccess), Group(dloAnd, {Cond(u"Qty", dtInteger, dcoEqualto, u"p", dcvtUserDefined)}),
                     params),
              " (t.[Qty] IS NULL ) ");

    const char* const classes[] = {"DbMsAccessSQLBuilder", "DbMsSqlSQLBuilder", "DbMySqlSQLBuilder", "DbMsXMLSQLBuilder"};
    for (int32_t id : {kAccess, kSqlServer, kMySql, kXml}) {
        DbError e = Failure([&] { Render(NewSqlBuilder(id), Group(dloAnd, {Cond(u"Qty", dtInteger, dcoNull)})); });
        EXPECT_EQ(e.Number(), errnum::InvalidConditionOperator);
        EXPECT_EQ(ToUtf8(e.Description()), "Condition operator '14' is not valid for attrribute 'Qty'.");
        EXPECT_EQ(ToUtf8(e.Source()).rfind(std::string("ZolSDK => \r\n") + classes[id] + ":GetIntegerCondition method (", 0), 0u);
        EXPECT_EQ(ChainTail(e.Source(), 4), kVisitChain);
    }
}

TEST_F(CriteriaRender, RelativeDatesFollowTheClock) {
    EXPECT_EQ(Render(NewSqlBuilder(kMySql), Group(dloAnd, {Cond(u"Due", dtDateTime, dcoThisWeek, u"2000-01-01")})),
              " (t.`Due` BETWEEN  '2024-02-25 00:00:00'  AND  '2024-03-02 23:59:59' ) ");
    // On the first of a month, last month ends on the day before.
    Clock::Set(DateSerial(2024, 3, 1) + TimeSerial(8, 0, 0));
    EXPECT_EQ(Render(NewSqlBuilder(kAccess), Group(dloAnd, {Cond(u"Due", dtDateTime, dcoLastMonth, u"2000-01-01")})),
              " (t.[Due] BETWEEN  #02/01/2024 00:00:00#  AND  #02/29/2024 23:59:59# ) ");
    // The count of hours travels as a date serial: 6 hours back.
    EXPECT_EQ(Render(NewSqlBuilder(kSqlServer), Group(dloAnd, {Cond(u"At", dtDateTime, dcoLastXHours, Variant::FromDate(6.0))})),
              " (t.[At] BETWEEN  '03/01/2024 02:00:00'  AND  '03/01/2024 08:00:00' ) ");
}
