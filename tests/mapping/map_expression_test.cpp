#include <gtest/gtest.h>

#include "mapping/mapping_fixture.hpp"
#include "zolsdk/data/blob.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

namespace {
Ref<DbDataRow> PlainRow() {
    auto row = Ref<DbDataRow>::New();
    row->Init(u"03id,01name,05born");
    row->LetItem(Variant(u"id"), Variant(int32_t{42}));
    row->LetItem(Variant(u"name"), Variant(u"order 4711 shipped"));
    return row;
}

Ref<DbDataRow> BlobRow() {
    auto row = Ref<DbDataRow>::New();
    row->Init(u"03id,01name,05born,02notes,10photo");
    row->LetItem(Variant(u"name"), Variant(u"h\u00e9llo"));
    auto notes = Ref<DbBlob>::New();
    notes->text(u"ref: AB-17 (urgent)");
    row->SetItem(Variant(u"notes"), Variant(notes));
    return row;
}

Variant Ints(DbExpressionOperatorEnum op, int32_t a, int32_t b, DataTypeGroupEnum group = dtInteger) {
    return Expression(op, {Constant(Variant(a)), Constant(Variant(b))})->GetValue(PlainRow(), group);
}

bool Bools(DbExpressionOperatorEnum op, std::initializer_list<Ref<DbMapVariable>> vars) {
    return Expression(op, vars)->GetValue(PlainRow(), dtBoolean).ToBoolean();
}

// An operand that fails the moment it is read: its column is not in the row.
Ref<DbMapVariable> Unreadable() { return ColumnVariable(Variant(Column(u"no_such_column", dtBoolean))); }
} // namespace

TEST(MapExpression, EmptyExpressionGivesTheNeutralValueOfEachGroup) {
    auto e = Ref<DbMapExpression>::New();
    auto row = PlainRow();
    EXPECT_EQ(e->ExpressionOperator(), oAdd);
    EXPECT_EQ(e->GetValue(row, dtInteger), Variant(int32_t{0}));
    EXPECT_EQ(e->GetValue(row, dtCurrency), Variant(Currency()));
    EXPECT_EQ(e->GetValue(row, dtVarChar), Variant(u""));
    EXPECT_EQ(e->GetValue(row, dtBoolean), Variant(false));
    EXPECT_TRUE(e->GetValue(row, dtBinaryBLOB).IsNull());
}

TEST(MapExpression, NumericFoldStartsAtZero) {
    EXPECT_EQ(Ints(oAdd, 2, 3), Variant(int32_t{5}));
    EXPECT_EQ(Ints(oSubtract, 2, 3), Variant(int32_t{-5}));
    EXPECT_EQ(Ints(oSubtract, 5, 3), Variant(int32_t{-8}));
    EXPECT_EQ(Ints(oMultiply, 2, 3), Variant(int32_t{0}));
    EXPECT_EQ(Ints(static_cast<DbExpressionOperatorEnum>(4), 2, 3), Variant(int32_t{0}));
    EXPECT_EQ(Ints(oSubtract, 2, 3, dtDecimal).ToDecimal(), Decimal::FromInt64(-5));
    EXPECT_EQ(Ints(oAdd, 2, 3, dtCurrency).ToCurrency().raw, 50000);

    auto money = Expression(oAdd, {Constant(Variant(1.5)), Constant(Variant(2.25))});
    EXPECT_EQ(money->GetValue(PlainRow(), dtDouble), Variant(3.75));

    // Children come before variables: 0 - (2 + 3) - 10.
    auto parent = Expression(oSubtract, {Constant(Variant(int32_t{10}))});
    parent->MapExpressions()->Add(Expression(oAdd, {Constant(Variant(int32_t{2})), Constant(Variant(int32_t{3}))}));
    EXPECT_EQ(parent->GetValue(PlainRow(), dtInteger), Variant(int32_t{-15}));

    // A column variable reads the row's cell.
    auto fromRow = Expression(oAdd, {ColumnVariable(Variant(Column(u"id", dtInteger))), Constant(Variant(int32_t{1}))});
    EXPECT_EQ(fromRow->GetValue(PlainRow(), dtInteger), Variant(int32_t{43}));

    auto overflow = Failure([] { Ints(oAdd, 2147483647, 1); });
    EXPECT_EQ(overflow.Number(), err::Overflow);
    EXPECT_TRUE(HasTrace(overflow, u"DbMapExpression:GetIntegerValue Ln "));
    EXPECT_EQ(Failure([] { Expression(oAdd, {Constant(Variant(1e308)), Constant(Variant(1e308))})
                               ->GetValue(PlainRow(), dtDouble); }).Number(),
              err::Overflow);
}

TEST(MapExpression, BooleansShortCutAndTheLastOperandOfNot) {
    const Variant T(true), F(false);
    EXPECT_FALSE(Bools(oAnd, {Constant(T), Constant(F), Unreadable()}));
    EXPECT_TRUE(Bools(oOr, {Constant(F), Constant(T), Unreadable()}));
    // Without the stop the unreadable operand is read and fails.
    auto read = Failure([&] { Bools(oAnd, {Constant(T), Constant(T), Unreadable()}); });
    EXPECT_EQ(read.Number(), err::InvalidCall);
    EXPECT_TRUE(HasTrace(read, u"DbMapExpression:GetBooleanValue Ln "));

    EXPECT_FALSE(Bools(oXor, {Constant(T), Constant(T)}));
    EXPECT_TRUE(Bools(oXor, {Constant(T), Constant(F)}));
    EXPECT_TRUE(Bools(oNot, {Constant(T), Constant(F)}));
    EXPECT_FALSE(Bools(oNot, {Constant(F), Constant(T)}));
    // The default operator, and every other, stops at once with false.
    EXPECT_FALSE(Bools(oAdd, {Constant(T), Unreadable()}));
    EXPECT_FALSE(Bools(static_cast<DbExpressionOperatorEnum>(5), {Constant(T)}));
    EXPECT_FALSE(Bools(oOr, {}));
}

TEST(MapExpression, TextConcatenatesWhateverTheOperator) {
    EXPECT_EQ(Expression(oAdd, {Constant(Variant(u"ab")), Constant(Variant(u"cd"))})->GetValue(PlainRow(), dtVarChar),
              Variant(u"abcd"));
    auto mixed = Expression(static_cast<DbExpressionOperatorEnum>(4),
                            {Constant(Variant(int32_t{7})), ColumnVariable(Variant(Column(u"name", dtVarChar)))});
    mixed->MapExpressions()->Add(Expression(oAdd, {Constant(Variant(u"#"))}));
    EXPECT_EQ(mixed->GetValue(PlainRow(), dtVarChar), Variant(u"#7order 4711 shipped"));

    auto blobRow = BlobRow();
    auto notes = Expression(oAdd, {ColumnVariable(Variant(Column(u"notes", dtCharBLOB)))});
    EXPECT_EQ(notes->GetValue(blobRow, dtVarChar), Variant(u"ref: AB-17 (urgent)"));
    auto noBlob = Failure([&] {
        Expression(oAdd, {ColumnVariable(Variant(Column(u"photo", dtBinaryBLOB)))})->GetValue(blobRow, dtVarChar);
    });
    EXPECT_EQ(noBlob.Number(), err::ObjectNotSet);
    EXPECT_TRUE(HasTrace(noBlob, u"DbMapExpression:GetStringValue Ln "));
}

TEST(MapExpression, RegexCutsTheFirstMatch) {
    auto search = [](const String& pattern, const Variant& subject, const Ref<DbDataRow>& row) {
        return Expression(oRegx, {Constant(Variant(pattern)), Constant(subject)})->GetValue(row, dtVarChar);
    };
    EXPECT_EQ(search(u"[0-9]+", Variant(u"name"), PlainRow()), Variant(u"4711"));
    EXPECT_EQ(search(u"^x", Variant(u"name"), PlainRow()), Variant(u""));
    EXPECT_EQ(search(u"", Variant(u"name"), PlainRow()), Variant(u""));
    // Positions are characters of the subject, past a non-ASCII one too.
    EXPECT_EQ(search(u"l+o", Variant(u"name"), BlobRow()), Variant(u"llo"));
    // On a row with blobs a column variable reads the blob's text.
    auto notes = Expression(oRegx, {Constant(Variant(u"[A-Z]+-[0-9]+")),
                                    ColumnVariable(Variant(Column(u"notes", dtCharBLOB)))});
    EXPECT_EQ(notes->GetValue(BlobRow(), dtVarChar), Variant(u"AB-17"));
    EXPECT_EQ(notes->GetValue(BlobRow(), dtCharBLOB).As<DbBlob>()->text(), u"AB-17");
    // Other groups fold with it as with any operator they do not know.
    EXPECT_EQ(Ints(oRegx, 2, 3), Variant(int32_t{0}));
    EXPECT_FALSE(Bools(oRegx, {Constant(Variant(true))}));

    auto single = Failure([] { Expression(oRegx, {Constant(Variant(u"a"))})->GetValue(PlainRow(), dtVarChar); });
    EXPECT_EQ(single.Number(), err::SubscriptOutOfRange);
    EXPECT_TRUE(HasTrace(single, u"DbMapVariables:Item Ln "));
    EXPECT_TRUE(HasTrace(single, u"DbMapExpression:GetSearchString Ln "));

    auto malformed = Failure([&] { search(u"(ab", Variant(u"name"), PlainRow()); });
    EXPECT_EQ(malformed.Number(), err::InvalidCall);
    EXPECT_NE(malformed.Description().find(u"offset 3"), String::npos);
}

TEST(MapExpression, DateTimeDropsTheTimeAndDateKeepsIt) {
    const double day = DateSerial(2026, 11, 15);
    auto e = Expression(oAdd, {Constant(Variant::FromDate(day)), Constant(Variant(0.5))});
    auto row = PlainRow();
    EXPECT_EQ(e->GetValue(row, dtDate), Variant::FromDate(day + 0.5));
    EXPECT_EQ(e->GetValue(row, dtDateTime), Variant::FromDate(day));
    EXPECT_EQ(e->GetValue(row, dtTime), Variant::FromDate(0.5));

    // A child is asked for a date and time, so its half day is lost; the
    // variable's quarter is kept.
    auto parent = Expression(oAdd, {Constant(Variant(0.25))});
    parent->MapExpressions()->Add(e);
    EXPECT_EQ(parent->GetValue(row, dtDate), Variant::FromDate(day + 0.25));
}

TEST(MapExpression, VariablesCountFromZeroExpressionsFromOne) {
    auto e = Expression(oAdd, {Constant(Variant(u"first")), Constant(Variant(u"second"))});
    EXPECT_EQ(e->Variables()->Item(Variant(int32_t{0}))->Value(), Variant(u"first"));
    EXPECT_EQ(e->Variables()->Item(Variant(1.0))->Value(), Variant(u"second"));
    EXPECT_FALSE(e->Variables()->Exist(Variant(int32_t{2})));
    // No variable has a key.
    EXPECT_EQ(Failure([&] { e->Variables()->Item(Variant(u"first")); }).Number(), err::InvalidCall);
    EXPECT_FALSE(e->Variables()->Exist(Variant(u"first")));

    auto child = Ref<DbMapExpression>::New();
    e->MapExpressions()->Add(child);
    EXPECT_EQ(e->MapExpressions()->Item(Variant(int32_t{1})).get(), child.get());
    EXPECT_FALSE(e->MapExpressions()->Exist(Variant(int32_t{0})));
    auto zero = Failure([&] { e->MapExpressions()->Item(Variant(int32_t{0})); });
    EXPECT_EQ(zero.Number(), err::SubscriptOutOfRange);
    EXPECT_TRUE(HasTrace(zero, u"DbMapExpressions:Item Ln "));
}
