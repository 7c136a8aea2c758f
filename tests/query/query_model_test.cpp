// The plain objects of the query model: defaults, the collections' rules,
// and the order in which a criteria tree is walked.
#include <gtest/gtest.h>

#include "query_test_support.hpp"

using namespace zolsdk;
using namespace zolsdk::testing;
using Lines = std::vector<std::string>;

TEST(QueryObjects, DefaultsAndStoredValues) {
    auto q = Ref<DbQuery>::New();
    EXPECT_EQ(q->MaxRows(), -1);
    EXPECT_TRUE(q->Criteria().IsNothing());
    EXPECT_EQ(q->OrderBy()->Count(), 0);
    q->OrderBy()->Add(Ref<DbSortExpression>::New());
    EXPECT_EQ(q->OrderBy()->Count(), 1) << "OrderBy is the query's own list, not a new one per read";
    q->ColumnSet(u"  id, name  ");
    q->TableName(u" orders ");
    EXPECT_EQ(ToUtf8(q->ColumnSet()), "id, name");
    EXPECT_EQ(ToUtf8(q->TableName()), " orders ");

    // Marking a parameter null is not giving it a value; writing one is,
    // even an empty one; ResetValue undoes all three.
    auto p = Ref<DbParameter>::New();
    p->IsNullValue(true);
    EXPECT_FALSE(p->IsValueSet());
    p->Value(u"");
    EXPECT_TRUE(p->IsValueSet());
    p->Value(u"42");
    p->ResetValue();
    EXPECT_FALSE(p->IsValueSet() || p->IsNullValue() || !p->Value().empty());
}

TEST(QueryCollections, KeysPositionsCountsAndFailures) {
    auto params = Ref<DbParameters>::New();
    auto a = Param(u"1"), b = Param(u"2");
    params->Add(a, u"Start");
    params->Add(b, u"End");
    EXPECT_TRUE(params->Item(u"start") == a) << "keys are case-blind";
    EXPECT_TRUE(params->Item(int32_t{2}) == b) << "positions are 1-based";
    EXPECT_TRUE(params->Exist(u"END"));
    EXPECT_FALSE(params->Exist(u"middle"));
    EXPECT_FALSE(params->Exist(int32_t{3}));

    DbError dup = Failure([&] { params->Add(Param(u"3"), u"START"); });
    EXPECT_EQ(dup.Number(), err::DuplicateKey);
    EXPECT_EQ(ChainTail(dup.Source(), 1), Lines{"DbParameters:Add Ln "});
    DbError unknown = Failure([&] { params->Item(u"middle"); });
    EXPECT_EQ(unknown.Number(), err::InvalidCall);
    EXPECT_EQ(ChainTail(unknown.Source(), 1), Lines{"DbParameters:Item Ln "});
    // Other failures go through Exist, whose line reads like Item's.
    DbError null = Failure([&] { params->Exist(Variant::Null()); });
    EXPECT_EQ(null.Number(), err::InvalidUseOfNull);
    EXPECT_EQ(ChainTail(null.Source(), 2), (Lines{"DbParameters:Item Ln ", "DbParameters:Item Ln "}));

    params->Remove(u"start");
    EXPECT_EQ(params->Count(), 1);
    EXPECT_TRUE(params->Item(int32_t{1}) == b);

    // Unkeyed collections keep insertion order; a walk is a snapshot that
    // items added during it neither extend nor break.
    auto conditions = Ref<DbConditions>::New();
    std::vector<Ref<DbCondition>> added, walked;
    for (int i = 0; i < 3; ++i) conditions->Add(added.emplace_back(Cond(u"c", dtInteger, dcoEqualto)));
    EXPECT_FALSE(conditions->Exist(u"c")) << "conditions carry no keys";
    for (const auto& c : conditions) {
        walked.push_back(c);
        if (walked.size() == 1) conditions->Add(Cond(u"late", dtInteger, dcoEqualto));
    }
    EXPECT_TRUE(walked == added);
    EXPECT_EQ(conditions->Count(), 4);
}

namespace {

// Writes down every call; refuses the enter or visit it is told to.
class TraceVisitor : public IVisitor {
public:
    Lines trace;
    std::string refuse;

    bool Visit(const Ref<ILeaf>& leaf) override { return Note("visit " + ToUtf8(leaf.As<DbCondition>()->AttributeName())); }
    bool VisitEnter(const Ref<IComposite>& node) override { return Note("enter " + Name(node)); }
    bool VisitLeave(const Ref<IComposite>& node) override { return Note("leave " + Name(node)), true; }

private:
    bool Note(const std::string& s) { return trace.push_back(s), s != refuse; }
    // A group is named after its first condition.
    static std::string Name(const Ref<IComposite>& node) {
        return "g" + ToUtf8(node.As<DbConditionExpression>()->Conditions()->Item(int32_t{1})->AttributeName());
    }
};

Lines Walk(const Ref<DbConditionExpression>& root, const std::string& refuse, bool expected) {
    auto v = Ref<TraceVisitor>::New();
    v->refuse = refuse;
    EXPECT_EQ(root->Accept(v), expected) << refuse;
    return v->trace;
}

} // namespace

TEST(CriteriaWalk, NestedFirstRefusalsAndFailures) {
    auto inner = Group(dloOr, {Cond(u"x", dtInteger, dcoEqualto), Cond(u"y", dtInteger, dcoEqualto)});
    auto root = Group(dloAnd, {Cond(u"a", dtInteger, dcoEqualto), Cond(u"b", dtInteger, dcoEqualto)});
    root->ConditionExpressions()->Add(inner); // added last, walked first

    EXPECT_EQ(Walk(root, "", true),
              (Lines{"enter ga", "enter gx", "visit x", "visit y", "leave gx", "visit a", "visit b", "leave ga"}));
    // A refused enter skips the children, not the leave.
    EXPECT_EQ(Walk(root, "enter gx", true),
              (Lines{"enter ga", "enter gx", "leave gx", "visit a", "visit b", "leave ga"}));
    // A refusing child ends the walk: no sibling, no leave of any group.
    EXPECT_EQ(Walk(root, "visit x", false), (Lines{"enter ga", "enter gx", "visit x"}));

    // A hole in the tree fails with 91; each Accept it leaves adds a line.
    inner->Conditions()->Add(nullptr);
    DbError e = Failure([&] { root->Accept(Ref<TraceVisitor>::New()); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    EXPECT_EQ(ChainTail(e.Source(), 2),
              Lines(2, "DbConditionExpression:IComposite_Accept Ln "));
}
