#include "query/condition_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

// The stack's marks. Rendered predicates never equal either of them.
constexpr char16_t kBottomMark[] = u"$";
constexpr char16_t kGroupMark[] = u" (";

constexpr int32_t kGrowth = 50;

} // namespace

DbConditionBuilder::DbConditionBuilder() {
    ResizeArray();
    top_ = 0;
}

String DbConditionBuilder::ToString(const Ref<IDbSqlBuilder>& builder, const Ref<IComposite>& criteria,
                                    const Ref<DbParameters>& parameters, const String& alias) {
    ZOL_ROUTINE(u"DbConditionBuilder:ToString Ln ");
    try {
        ZOL_LN;
        if (criteria.IsNothing()) return {};
        builder_ = builder;
        criteria_ = criteria;
        parameters_ = parameters;
        alias_ = alias;
        top_ = 0;
        ZOL_LN;
        Push(kBottomMark);
        String result;
        ZOL_LN;
        if (criteria_->Accept(SelfRef<IVisitor>(this))) {
            ZOL_LN;
            result = Pop();
            // Anything but the bottom mark under the result means the marks
            // did not balance; no half-built filter goes out.
            ZOL_LN;
            if (Pop() != kBottomMark) result.clear();
        }
        criteria_.Release();
        return result;
    }
    ZOL_RERAISE
}

bool DbConditionBuilder::VisitEnter(const Ref<IComposite>&) {
    ZOL_ROUTINE(u"DbConditionBuilder:IVisitor_VisitEnter Ln ");
    try {
        ZOL_LN;
        Push(kGroupMark);
        return true;
    }
    ZOL_RERAISE
}

bool DbConditionBuilder::VisitLeave(const Ref<IComposite>& poComposite) {
    ZOL_ROUTINE(u"DbConditionBuilder:IVisitor_VisitLeave Ln ");
    try {
        ZOL_LN;
        Ref<DbConditionExpression> expression = poComposite.As<DbConditionExpression>();
        if (expression.IsNothing() && !poComposite.IsNothing()) RaisePlatform(err::TypeMismatch);
        // NOT and an unset operator join with nothing at all.
        String connective;
        ZOL_LN;
        switch (expression->LogicalOperator()) {
        case dloAnd: connective = u" AND "; break;
        case dloOr: connective = u" OR "; break;
        default: break;
        }
        // Entries come off last first; prepending restores their order. An
        // empty predicate counts as an entry: last in a group it vanishes,
        // with items behind it it leaves a bare connective in front.
        String folded;
        for (;;) {
            ZOL_LN;
            String entry = Pop();
            if (entry == kBottomMark || entry == kGroupMark) break;
            folded = folded.empty() ? std::move(entry) : entry + connective + folded;
        }
        // An empty group leaves nothing behind, not even "()".
        if (!folded.empty()) {
            ZOL_LN;
            Push(kGroupMark + folded + u") ");
        }
        return true;
    }
    ZOL_RERAISE
}

bool DbConditionBuilder::Visit(const Ref<ILeaf>& poLeaf) {
    ZOL_ROUTINE(u"DbConditionBuilder:IVisitor_Visit Ln ");
    try {
        ZOL_LN;
        Ref<DbCondition> condition = poLeaf.As<DbCondition>();
        if (condition.IsNothing() && !poLeaf.IsNothing()) RaisePlatform(err::TypeMismatch);
        ZOL_LN;
        String value = ValueText(*condition);
        ZOL_LN;
        String clause = builder_->CriteriaClause(alias_, condition->AttributeName(), condition->AttributeDataType(),
                                                 condition->Operator(), value);
        ZOL_LN;
        Push(clause);
        return true;
    }
    ZOL_RERAISE
}

// The client's text goes through its typed value into the transfer form
// that the dialect decodes again; that round trip is what normalises it
// (" 007" becomes "7", "yes" fails for an integer column). "NULL" in any
// case is left for the dialect to recognise.
String DbConditionBuilder::ValueText(const DbCondition& condition) {
    String text;
    if (condition.ValueType() == dcvtUserDefined) {
        Ref<DbParameter> parameter = parameters_->Item(condition.Value());
        text = parameter->IsNullValue() ? String(u"NULL") : parameter->Value();
    } else {
        text = condition.Operator() == dcoNull ? String(u"NULL") : condition.Value().ToString();
    }
    if (EqualsNoCase(text, u"NULL")) return text;

    const Variant value(text);
    switch (condition.AttributeDataType()) {
    case dtInteger:
    case dtUnsignedInteger:
        // An IN list is the caller's own text, handed on untouched.
        if (condition.Operator() == dcoIn) return text;
        return IntText(value.ToLong());
    case dtDate:
    case dtTime:
    case dtDateTime: return encoder_.EncodeDate(value.ToDate());
    case dtBoolean: return encoder_.EncodeBoolean(value.ToBoolean());
    case dtDouble: return encoder_.EncodeDouble(value.ToDouble());
    case dtSingle: return encoder_.EncodeSingle(value.ToSingle());
    case dtDecimal: return encoder_.EncodeDecimal(value);
    case dtCurrency: return encoder_.EncodeCurrency(value.ToCurrency());
    default: return text; // text groups, binary and unknown groups
    }
}

void DbConditionBuilder::Push(const String& text) {
    ZOL_ROUTINE(u"DbConditionBuilder:Push Ln ");
    try {
        ZOL_LN;
        if (capacity_ < top_) ResizeArray();
        ZOL_LN;
        if (top_ < 0) RaisePlatform(err::SubscriptOutOfRange);
        stack_[static_cast<size_t>(top_)] = text;
        ++top_;
    }
    ZOL_RERAISE
}

String DbConditionBuilder::Pop() {
    ZOL_ROUTINE(u"DbConditionBuilder:Pop Ln ");
    try {
        ZOL_LN;
        --top_;
        // Popping an empty stack leaves top at -1 and fails here.
        if (top_ < 0 || top_ > capacity_) RaisePlatform(err::SubscriptOutOfRange);
        String entry = std::move(stack_[static_cast<size_t>(top_)]);
        stack_[static_cast<size_t>(top_)].clear();
        return entry;
    }
    ZOL_RERAISE
}

void DbConditionBuilder::ResizeArray() {
    const int line = __LINE__;
    try {
        // The capacity moves only once the array really has the places.
        int32_t capacity = capacity_ + kGrowth;
        stack_.resize(static_cast<size_t>(capacity) + 1);
        capacity_ = capacity;
    } catch (...) {
        // This routine's chain line has its own shape: "(" number ")".
        DbError e = CurrentFailure();
        e.AppendTrace(u"DbConditionBuilder: ResizeArray Sub (", line);
        e.Source(e.Source() + u")");
        throw e;
    }
}

} // namespace zolsdk
