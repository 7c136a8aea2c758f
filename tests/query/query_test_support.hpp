#pragma once
// Small builders for criteria trees, and a reader for failure chains.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/failure.hpp"
#include "query/condition_builder.hpp"

namespace zolsdk::testing {

using zoltest::Failure;

inline Ref<DbCondition> Cond(const String& name, DataTypeGroupEnum type, DbConditionOperatorEnum op,
                             const Variant& value = {}, DbConditionValueTypeEnum valueType = dcvtConstant) {
    auto c = Ref<DbCondition>::New();
    c->AttributeName(name), c->AttributeDataType(type), c->Operator(op), c->ValueType(valueType), c->Value(value);
    return c;
}

inline Ref<DbConditionExpression> Group(DbLogicalOperatorEnum op, std::vector<Ref<DbCondition>> conditions,
                                        std::vector<Ref<DbConditionExpression>> nested = {}) {
    auto e = Ref<DbConditionExpression>::New();
    e->LogicalOperator(op);
    for (const auto& c : conditions) e->Conditions()->Add(c);
    for (const auto& n : nested) e->ConditionExpressions()->Add(n);
    return e;
}

inline Ref<DbParameter> Param(const String& value, bool isNull = false) {
    auto p = Ref<DbParameter>::New();
    p->Value(value), p->IsNullValue(isNull);
    return p;
}

// The last `count` trace literals of a Source, line numbers taken off:
// "... => \r\nDbQuery:Criteria Ln 12" ends with "DbQuery:Criteria Ln ".
inline std::vector<std::string> ChainTail(const String& source, size_t count) {
    std::vector<std::string> out;
    std::string s = ToUtf8(source);
    for (size_t at; out.size() < count && (at = s.rfind(" => \r\n")) != std::string::npos; s.erase(at)) {
        std::string line = s.substr(at + 6);
        if (!line.empty() && line.back() == ')') line.pop_back();
        while (!line.empty() && line.back() >= '0' && line.back() <= '9') line.pop_back();
        out.insert(out.begin(), line);
    }
    return out;
}

inline std::string Render(const Ref<IDbSqlBuilder>& builder, const Ref<IComposite>& root,
                          const Ref<DbParameters>& parameters = Ref<DbParameters>::New(), const String& alias = u"t") {
    return ToUtf8(Ref<DbConditionBuilder>::New()->ToString(builder, root, parameters, alias));
}

// The chain that a failure inside one condition gains on its way out.
inline const std::vector<std::string> kVisitChain = {
    "DbConditionBuilder:IVisitor_Visit Ln ", "DbCondition:ILeaf_Accept Ln ",
    "DbConditionExpression:IComposite_Accept Ln ", "DbConditionBuilder:ToString Ln "};

} // namespace zolsdk::testing
