// ImportDataEx against the real server: column, constant, expression and
// pattern maps, by text in batches and by bound rows, judged by the target
// table.
#include "data/data_fixture.hpp"

namespace zolsdk::datatest {
namespace {

class MappedImport : public ::testing::Test {
protected:
    void SetUp() override {
        src_ = std::make_unique<ScratchDb>("map_src");
        dst_ = std::make_unique<ScratchDb>("map_dst");
        src_->Run(u"CREATE TABLE p (pid INT PRIMARY KEY, first VARCHAR(20), last VARCHAR(20), a INT, b INT,"
                  u" email VARCHAR(60), memo LONGTEXT, photo LONGBLOB)");
        src_->Run(u"INSERT INTO p VALUES (1, 'Ann', 'Lee', 2, 3, 'ann42@example.org', 'memo, one', UNHEX('0A0B0C')),"
                  u" (2, 'Bo', NULL, -5, 1, 'no digits', NULL, NULL), (3, 'Cy', 'Ng', 7, 0, NULL, 'm3', UNHEX('FF'))");
        dst_->Run(u"CREATE TABLE people (id INT PRIMARY KEY, full_name VARCHAR(80), total INT, price DECIMAL(10,2),"
                  u" origin VARCHAR(20) DEFAULT 'none', code VARCHAR(10), mail VARCHAR(60), note LONGTEXT,"
                  u" pic LONGBLOB)");
        dst_->Run(u"CREATE TABLE tags (n INT AUTO_INCREMENT PRIMARY KEY, origin VARCHAR(20), code INT, at DATE)");
        from_ = Catalog(*src_);
        to_ = Catalog(*dst_);
    }

    Ref<DbColumn> Source(const String& name) { return from_->Tables()->Item(Variant(u"p"))->Columns()->Item(Variant(name)); }
    Ref<DbColumn> Target(const String& table, const String& name) {
        return to_->Tables()->Item(Variant(table))->Columns()->Item(Variant(name));
    }
    static Ref<DbMapVariable> Var(MapVariableTypeEnum type, const Variant& value) {
        auto v = Ref<DbMapVariable>::New();
        v->VariableType(type);
        v->Value(value);
        return v;
    }
    static Ref<DbMapExpression> Expr(DbExpressionOperatorEnum op, std::initializer_list<Ref<DbMapVariable>> vars) {
        auto e = Ref<DbMapExpression>::New();
        e->ExpressionOperator(op);
        for (const auto& v : vars) e->Variables()->Add(v);
        return e;
    }

    // Every kind of map into `people`.
    Ref<DbColumnMap> PeopleMap() {
        auto map = Ref<DbColumnMap>::New();
        map->AddColumnMap(Target(u"people", u"id"), Source(u"pid"));
        // Text: the operands are joined whatever the operator.
        map->AddExpressionMap(Target(u"people", u"full_name"),
                              Expr(oAdd, {Var(mtColumnValue, Variant(Source(u"first"))), Var(mtConstantValue, Variant(u", ")),
                                          Var(mtColumnValue, Variant(Source(u"last")))}));
        map->AddExpressionMap(Target(u"people", u"total"),
                              Expr(oAdd, {Var(mtColumnValue, Variant(Source(u"a"))), Var(mtColumnValue, Variant(Source(u"b"))),
                                          Var(mtConstantValue, Variant(int32_t{100}))}));
        map->AddExpressionMap(Target(u"people", u"price"),
                              Expr(oSubtract, {Var(mtConstantValue, Variant(u"0.25")), Var(mtColumnValue, Variant(Source(u"a")))}));
        map->AddConstantMap(Target(u"people", u"origin"), Variant(u"crm,v2"));
        map->AddExpressionMap(Target(u"people", u"code"),
                              Expr(oRegx, {Var(mtConstantValue, Variant(u"[0-9]+")), Var(mtColumnValue, Variant(Source(u"email")))}));
        map->AddColumnMap(Target(u"people", u"mail"), Source(u"email"));
        map->AddColumnMap(Target(u"people", u"note"), Source(u"memo"));
        map->AddColumnMap(Target(u"people", u"pic"), Source(u"photo"));
        return map;
    }

    std::vector<std::string> People() {
        return Column(*dst_, u"SELECT CONCAT_WS('|', id, full_name, total, price, origin, code, COALESCE(mail, 'null'),"
                             u" COALESCE(note, 'null'), COALESCE(HEX(pic), 'null')) FROM people ORDER BY id");
    }

    std::unique_ptr<ScratchDb> src_, dst_;
    Ref<DbCatalog> from_, to_;
};

TEST_F(MappedImport, EveryKindOfMapInBatchesOfText) {
    EXPECT_TRUE(to_->ImportDataEx(u"people", from_->ExportData(u"p"), PeopleMap()));
    // By the design of the mapping: a null cell renders as its reset value
    // (an empty text, 0) since the row's null marks are not consulted; the
    // fold starts at 0, so a subtraction also negates its first operand; and
    // a null long text is an empty blob reference, which the text way
    // writes as an empty text; and a binary column map in the text way writes
    // its mark, which is NULL.
    EXPECT_EQ(People(), (std::vector<std::string>{
                            "1|Ann, Lee|105|-2.25|crm,v2|42|ann42@example.org|memo, one|null",
                            "2|Bo, |96|4.75|crm,v2||no digits||null",
                            "3|Cy, Ng|107|-7.25|crm,v2|||m3|null",
                        }));
    EXPECT_FALSE(BracketOpen(to_));
}

TEST_F(MappedImport, BoundRowsBindLargeValuesUnderTheSourceColumnsNames) {
    auto ds = Ref<DbDataSet>::New();
    ds->Init(from_, u"p", u"", u"");
    ASSERT_EQ(ds->Rows()->Mode(), 1);
    EXPECT_TRUE(to_->ImportDataEx(u"people", ds, PeopleMap()));
    // Bound, the bytes arrive less the last one; a null large value binds a
    // null, while the null text cell still renders as an empty text.
    EXPECT_EQ(People(), (std::vector<std::string>{
                            "1|Ann, Lee|105|-2.25|crm,v2|42|ann42@example.org|memo, one|0A0B00",
                            "2|Bo, |96|4.75|crm,v2||no digits|null|null",
                            "3|Cy, Ng|107|-7.25|crm,v2|||m3|null",
                        }));
}

TEST_F(MappedImport, ConstantsOnlyWriteOneRowPerSourceRow) {
    auto map = Ref<DbColumnMap>::New();
    map->AddConstantMap(Target(u"tags", u"origin"), Variant(u"batch"));
    map->AddConstantMap(Target(u"tags", u"code"), Variant(u"7"));
    map->AddConstantMap(Target(u"tags", u"at"), Variant::FromDate(DateSerial(2026, 1, 31)));
    EXPECT_TRUE(to_->ImportDataEx(u"tags", from_->ExportData(u"p"), map));
    EXPECT_EQ(Column(*dst_, u"SELECT CONCAT_WS('|', n, origin, code, at) FROM tags ORDER BY n"),
              (std::vector<std::string>{"1|batch|7|2026-01-31", "2|batch|7|2026-01-31", "3|batch|7|2026-01-31"}));

    // The same map over an empty set writes nothing.
    src_->Run(u"DELETE FROM p");
    EXPECT_TRUE(to_->ImportDataEx(u"tags", from_->ExportData(u"p"), map));
    EXPECT_EQ(RowCount(*dst_, u"tags"), 3);
}

TEST_F(MappedImport, FailingMapsEndTheRunAndTheBracket) {
    // Integer overflow in the fold is a failure, not a wrap: row 1 is fine,
    // row 2 overflows.
    src_->Run(u"UPDATE p SET a = 2147483647 WHERE pid = 2");
    auto map = Ref<DbColumnMap>::New();
    map->AddColumnMap(Target(u"people", u"id"), Source(u"pid"));
    map->AddExpressionMap(Target(u"people", u"total"),
                          Expr(oAdd, {Var(mtColumnValue, Variant(Source(u"a"))), Var(mtColumnValue, Variant(Source(u"b")))}));
    DbError e = Failure([&] { to_->ImportDataEx(u"people", from_->ExportData(u"p"), map); });
    EXPECT_EQ(e.Number(), err::Overflow);
    EXPECT_TRUE(HasTrace(e, u"DbMapExpression:GetIntegerValue Ln "));
    EXPECT_TRUE(HasTrace(e, u"basUtility:MappedValueString Ln "));
    EXPECT_TRUE(HasTrace(e, u"DbCatalog:ImportDataEx Ln "));
    EXPECT_FALSE(BracketOpen(to_));
    EXPECT_EQ(RowCount(*dst_, u"people"), 0) << "the failure came before the batch was sent";

    // A map of no entries fails on its first row.
    DbError empty = Failure([&] { to_->ImportDataEx(u"people", from_->ExportData(u"p"), Ref<DbColumnMap>::New()); });
    EXPECT_EQ(empty.Number(), errnum::StringBuilderRange);
    EXPECT_FALSE(BracketOpen(to_));
}

} // namespace
} // namespace zolsdk::datatest
