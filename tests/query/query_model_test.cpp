// The plain objects of the query model: defaults, the collections' rules,
// and the order in which a criteria tree is walked.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "query_test_support.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;

TEST(QueryObjects, DefaultsAndStoredValues) {
    auto q = Ref<DbQuery>::New();
    EXPECT_EQ(q->MaxRows(), -1);
    EXPECT_FALSE(q->Distinct());
    EXPECT_TRUE(q->Criteria().IsNothing());
    ASSERT_FALSE(q->OrderBy().IsNothing());
    EXPECT_EQ(q->OrderBy()->Count(), 0);
    ASSERT_FALSE(q->Parameters().IsNothing());
    EXPECT_EQ(q->Parameters()->Count(), 0);
    // Read-only collections are the query's own, not fresh ones per read.
    q->OrderBy()->Add(Ref<DbSortExpression>::New());
    EXPECT_EQ(q->OrderBy()->Count(), 1);

    q->ColumnSet(u"  id, name  ");
    EXPECT_EQ(ToUtf8(q->ColumnSet()), "id, name");
    q->TableName(u" orders ");
    EXPECT_EQ(ToUtf8(q->TableName()), " orders ");

    auto root = Ref<DbConditionExpression>::New();
    q->Criteria(root);
    EXPECT_TRUE(q->Criteria() == root);
    q->Criteria(nullptr);
    EXPECT_TRUE(q->Criteria().IsNothing());

    EXPECT_EQ(root->LogicalOperator(), dloAnd);
    EXPECT_EQ(root->Conditions()->Count(), 0);
    EXPECT_EQ(root->ConditionExpressions()->Count(), 0);

    auto c = Ref<DbCondition>::New();
    EXPECT_EQ(static_cast<int32_t>(c->Operator()), 0);
    EXPECT_EQ(c->AttributeDataType(), dtUnknown);
    EXPECT_EQ(c->ValueType(), dcvtConstant);
    EXPECT_TRUE(c->Value().IsEmpty());

    EXPECT_EQ(Ref<DbSortExpression>::New()->SortOrder(), soAscending);

    auto join = Ref<DbJoinExpression>::New();
    EXPECT_TRUE(join->Criteria().IsNothing());
    EXPECT_TRUE(join->Joins().IsNothing());
}

TEST(QueryObjects, ParameterValueState) {
    auto p = Ref<DbParameter>::New();
    EXPECT_FALSE(p->IsValueSet());
    EXPECT_FALSE(p->IsNullValue());

    // Marking a parameter null is not giving it a value.
    p->IsNullValue(true);
    EXPECT_FALSE(p->IsValueSet());

    p->Value(u"");
    EXPECT_TRUE(p->IsValueSet()) << "writing even an empty value counts";
    p->Value(u"42");
    EXPECT_EQ(ToUtf8(p->Value()), "42");

    p->ResetValue();
    EXPECT_FALSE(p->IsValueSet());
    EXPECT_FALSE(p->IsNullValue());
    EXPECT_TRUE(p->Value().empty());
}

TEST(QueryCollections, ParametersKeysPositionsAndFailures) {
    auto params = Ref<DbParameters>::New();
    auto a = Param(u"1");
    auto b = Param(u"2");
    params->Add(a, u"Start");
    params->Add(b, u"End");
    EXPECT_EQ(params->Count(), 2);

    EXPECT_TRUE(params->Item(u"start") == a) << "keys are case-blind";
    EXPECT_TRUE(params->Item(int32_t{2}) == b) << "positions are 1-based";
    EXPECT_TRUE(params->Exist(u"END"));
    EXPECT_FALSE(params->Exist(u"middle"));
    EXPECT_FALSE(params->Exist(int32_t{0}));
    EXPECT_FALSE(params->Exist(int32_t{3}));

    DbError dup = Failure([&] { params->Add(Param(u"3"), u"START"); });
    EXPECT_EQ(dup.Number(), err::DuplicateKey);
    EXPECT_EQ(ChainTail(dup.Source(), 1), std::vector<std::string>{"DbParameters:Add Ln "});
    EXPECT_EQ(params->Count(), 2);

    DbError unknown = Failure([&] { params->Item(u"middle"); });
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    EXPECT_EQ(ChainTail(unknown.Source(), 1), std::vector<std::string>{"DbParameters:Item Ln "});

    // Failures other than "not there" go through Exist, whose line reads
    // like Item's own.
    DbError null = Failure([&] { params->Exist(Variant::Null()); });
    EXPECT_EQ(null.Number(), err::InvalidUseOfNull);
    EXPECT_EQ(ChainTail(null.Source(), 2), (std::vector<std::string>{"DbParameters:Item Ln ", "DbParameters:Item Ln "}));

    params->Remove(u"start");
    EXPECT_EQ(params->Count(), 1);
    EXPECT_TRUE(params->Item(int32_t{1}) == b);
    EXPECT_FALSE(params->Exist(u"Start"));
}

TEST(QueryCollections, UnkeyedCollectionsKeepOrderAndWalk) {
    auto conditions = Ref<DbConditions>::New();
    std::vector<Ref<DbCondition>> added;
    for (int i = 0; i < 3; ++i) {
        added.push_back(Cond(u"c" + IntText(i), dtInteger, dcoEqualto, int32_t{i}));
        conditions->Add(added.back());
    }
    EXPECT_FALSE(conditions->Exist(u"c0")) << "conditions carry no keys";
    EXPECT_EQ(ChainTail(Failure([&] { conditions->Item(int32_t{4}); }).Source(), 1),
              std::vector<std::string>{"DbConditions:Item Ln "});

    std::vector<Ref<DbCondition>> walked;
    for (const auto& c : conditions) walked.push_back(c);
    EXPECT_TRUE(walked == added);

    // A walk is a snapshot: adding during it neither extends nor breaks it.
    walked.clear();
    for (const auto& c : *conditions) {
        walked.push_back(c);
        if (walked.size() == 1) conditions->Add(Cond(u"late", dtInteger, dcoEqualto));
    }
    EXPECT_EQ(walked.size(), 3u);
    EXPECT_EQ(conditions->Count(), 4);

    auto joins = Ref<DbJoinExpressions>::New();
    auto j1 = Ref<DbJoinExpression>::New();
    auto j2 = Ref<DbJoinExpression>::New();
    joins->Add(j1);
    joins->Add(j2);
    joins->Remove(int32_t{1});
    ASSERT_EQ(joins->Count(), 1);
    EXPECT_TRUE(joins->Item(int32_t{1}) == j2);
    EXPECT_EQ(Failure([&] { joins->Remove(int32_t{5}); }).Number(), err::SubscriptOutOfRange);

    // An empty collection walks zero times, through the enumerator too.
    auto sorts = Ref<DbSortExpressionList>::New();
    int steps = 0;
    for (const auto& s : sorts) {
        (void)s;
        ++steps;
    }
    EXPECT_EQ(steps, 0);
    EXPECT_EQ(sorts->NewEnum()->Count(), 0);
}

namespace {

// Writes down every call; answers what the test tells it to.
class TraceVisitor : public IVisitor {
public:
    std::vector<std::string> trace;
    std::string refuseEnterOf, refuseVisitOf;

    bool Visit(const Ref<ILeaf>& leaf) override {
        std::string name = ToUtf8(leaf.As<DbCondition>()->AttributeName());
        trace.push_back("visit " + name);
        return name != refuseVisitOf;
    }
    bool VisitEnter(const Ref<IComposite>& node) override {
        std::string name = NameOf(node);
        trace.push_back("enter " + name);
        return name != refuseEnterOf;
    }
    bool VisitLeave(const Ref<IComposite>& node) override {
        trace.push_back("leave " + NameOf(node));
        return true;
    }

    // A group is named after its first condition.
    static std::string NameOf(const Ref<IComposite>& node) {
        auto e = node.As<DbConditionExpression>();
        return e->Conditions()->Count() ? "g" + ToUtf8(e->Conditions()->Item(int32_t{1})->AttributeName()) : "g?";
    }
};

} // namespace

TEST(CriteriaWalk, NestedFirstRefusalsAndFailures) {
    auto inner = Group(dloOr, {Cond(u"x", dtInteger, dcoEqualto), Cond(u"y", dtInteger, dcoEqualto)});
    auto root = Group(dloAnd, {Cond(u"a", dtInteger, dcoEqualto), Cond(u"b", dtInteger, dcoEqualto)});
    // Added after the conditions, walked before them.
    root->ConditionExpressions()->Add(inner);

    auto v = Ref<TraceVisitor>::New();
    EXPECT_TRUE(root->Accept(v));
    EXPECT_EQ(v->trace, (std::vector<std::string>{"enter ga", "enter gx", "visit x", "visit y", "leave gx",
                                                   "visit a", "visit b", "leave ga"}));

    // A refused enter skips the children, not the leave.
    v = Ref<TraceVisitor>::New();
    v->refuseEnterOf = "gx";
    EXPECT_TRUE(root->Accept(v));
    EXPECT_EQ(v->trace, (std::vector<std::string>{"enter ga", "enter gx", "leave gx", "visit a", "visit b",
                                                   "leave ga"}));

    // A refusing child ends the walk: no sibling, no leave of any group.
    v = Ref<TraceVisitor>::New();
    v->refuseVisitOf = "x";
    EXPECT_FALSE(root->Accept(v));
    EXPECT_EQ(v->trace, (std::vector<std::string>{"enter ga", "enter gx", "visit x"}));

    // A condition answers what Visit answers.
    v = Ref<TraceVisitor>::New();
    v->refuseVisitOf = "a";
    EXPECT_FALSE(root->Conditions()->Item(int32_t{1})->Accept(v));
    EXPECT_TRUE(root->Conditions()->Item(int32_t{2})->Accept(v));

    // A hole in the tree fails with 91, and each Accept it leaves adds its line.
    inner->Conditions()->Add(nullptr);
    DbError e = Failure([&] { root->Accept(Ref<TraceVisitor>::New()); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(ChainTail(e.Source(), 2), (std::vector<std::string>{"DbConditionExpression:IComposite_Accept Ln ",
                                                                   "DbConditionExpression:IComposite_Accept Ln "}));
    DbError noVisitor = Failure([&] { root->Conditions()->Item(int32_t{1})->Accept(nullptr); });
    EXPECT_EQ(noVisitor.Number(), err::ObjectNotSet);
    EXPECT_EQ(ChainTail(noVisitor.Source(), 1), std::vector<std::string>{"DbCondition:ILeaf_Accept Ln "});
}
