#pragma once
// Small builders for criteria trees, and a reader for failure chains.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "query/condition_builder.hpp"
#include "zolsdk/platform/error.hpp"
#include "zolsdk/query/query.hpp"

namespace zolsdk::testing {

inline Ref<DbCondition> Cond(const String& name, DataTypeGroupEnum type, DbConditionOperatorEnum op,
                             const Variant& value = {}, DbConditionValueTypeEnum valueType = dcvtConstant) {
    auto c = Ref<DbCondition>::New();
    c->AttributeName(name);
    c->AttributeDataType(type);
    c->Operator(op);
    c->ValueType(valueType);
    c->Value(value);
    return c;
}

inline Ref<DbConditionExpression> Group(DbLogicalOperatorEnum op, std::initializer_list<Ref<DbCondition>> conditions,
                                        std::initializer_list<Ref<DbConditionExpression>> nested = {}) {
    auto e = Ref<DbConditionExpression>::New();
    e->LogicalOperator(op);
    for (const auto& c : conditions) e->Conditions()->Add(c);
    for (const auto& n : nested) e->ConditionExpressions()->Add(n);
    return e;
}

inline Ref<DbParameter> Param(const String& value, bool isNull = false) {
    auto p = Ref<DbParameter>::New();
    p->Value(value);
    p->IsNullValue(isNull);
    return p;
}

// The trace literals of a failure's Source, head first, each with its line
// number taken off: "A => \r\nB Ln 12" gives {"A", "B Ln "}. A line of the
// form "X (12)" gives "X (".
inline std::vector<std::string> ChainLiterals(const String& source) {
    std::vector<std::string> out;
    const std::string s = ToUtf8(source);
    const std::string joint = " => \r\n";
    size_t start = 0;
    for (;;) {
        size_t at = s.find(joint, start);
        std::string piece = s.substr(start, at == std::string::npos ? std::string::npos : at - start);
        if (!out.empty()) {
            if (!piece.empty() && piece.back() == ')') piece.pop_back();
            while (!piece.empty() && piece.back() >= '0' && piece.back() <= '9') piece.pop_back();
        }
        out.push_back(piece);
        if (at == std::string::npos) break;
        start = at + joint.size();
    }
    return out;
}

// The chain's last literals, for failures whose head lies in other code.
inline std::vector<std::string> ChainTail(const String& source, size_t count) {
    auto all = ChainLiterals(source);
    if (all.size() < count) return all;
    return std::vector<std::string>(all.end() - static_cast<std::ptrdiff_t>(count), all.end());
}

// Runs `f`, which must fail, and hands back the failure.
template <class F>
DbError Failure(F&& f) {
    try {
        f();
    } catch (const DbError& e) {
        return e;
    }
    ADD_FAILURE() << "no failure was raised";
    return DbError(0, {}, {});
}

inline std::string Render(const Ref<IDbSqlBuilder>& builder, const Ref<IComposite>& root,
                          const Ref<DbParameters>& parameters = Ref<DbParameters>::New(), const String& alias = u"t") {
    auto visitor = Ref<DbConditionBuilder>::New();
    return ToUtf8(visitor->ToString(builder, root, parameters, alias));
}

} // namespace zolsdk::testing
