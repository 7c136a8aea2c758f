#pragma once
// Builders shared by the mapping tests: real columns, rows and expressions.
#include <functional>

#include "common/failure.hpp"
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/mapping/column_map.hpp"
#include "zolsdk/mapping/map_expression.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/schema/column.hpp"

namespace zolsdk::testing {

inline Ref<DbColumn> Column(const String& name, int32_t group) {
    auto col = Ref<DbColumn>::New();
    col->Init(u"target", name, 1, 0, group, false, u"", 0, 0, 0, true);
    return col;
}

inline Ref<DbMapVariable> Variable(MapVariableTypeEnum type, const Variant& value) {
    auto v = Ref<DbMapVariable>::New();
    v->VariableType(type);
    v->Value(value);
    return v;
}
inline Ref<DbMapVariable> Constant(const Variant& value) { return Variable(mtConstantValue, value); }
inline Ref<DbMapVariable> ColumnVariable(const Variant& column) { return Variable(mtColumnValue, column); }

inline Ref<DbMapExpression> Expression(DbExpressionOperatorEnum op, std::initializer_list<Ref<DbMapVariable>> vars) {
    auto e = Ref<DbMapExpression>::New();
    e->ExpressionOperator(op);
    for (const auto& v : vars) e->Variables()->Add(v);
    return e;
}

using zoltest::Failure;

using zoltest::HasTrace;

} // namespace zolsdk::testing
