#pragma once
// Expressions that compute one value from a source row during a mapped
// import: a small tree of child expressions and variables folded by one
// operator into the type group the caller asks for.
//
//   auto e = Ref<DbMapExpression>::New();             // operator oAdd
//   auto a = Ref<DbMapVariable>::New();
//   a->VariableType(mtColumnValue); a->Value(qtyColumn);
//   e->Variables()->Add(a);
//   Variant v = e->GetValue(row, dtInteger);
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/data/data_row.hpp"
#include "zolsdk/mapping/map_enum.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

class DbMapExpression;

// A constant, or (mtColumnValue) a DbColumn whose cell is read from the row.
class ZOLSDK_API DbMapVariable : public Object {
public:
    MapVariableTypeEnum VariableType() const { return m_eVariableType; }
    void VariableType(MapVariableTypeEnum newVal) { m_eVariableType = newVal; }
    // Objects are kept by reference, anything else by value.
    const Variant& Value() const { return m_vValue; }
    void Value(const Variant& newVal) { m_vValue = newVal; }

private:
    MapVariableTypeEnum m_eVariableType = mtConstantValue;
    Variant m_vValue;
};

// The variables of an expression, without keys. Item takes a number as a
// 0-based position.
class ZOLSDK_API DbMapVariables : public Object {
public:
    void Add(const Ref<DbMapVariable>& poVariable);
    bool Exist(const Variant& vntIndexKey);
    Ref<DbMapVariable> Item(const Variant& vntIndexKey);
    int32_t Count() const { return m_oCol.Count(); }
    Ref<DbMapEnum<DbMapVariable>> NewEnum() const { return Ref<DbMapEnum<DbMapVariable>>::New(m_oCol); }

    using iterator = DbMapEnum<DbMapVariable>::iterator;
    iterator begin() const { return NewEnum()->begin(); }
    iterator end() const { return iterator(); }

private:
    Collection m_oCol;
};

// The child expressions of an expression, without keys. Item takes a number
// as a 1-based position.
class ZOLSDK_API DbMapExpressions : public Object {
public:
    void Add(const Ref<DbMapExpression>& poMapExpression);
    bool Exist(const Variant& vntIndexKey);
    Ref<DbMapExpression> Item(const Variant& vntIndexKey);
    int32_t Count() const { return m_oCol.Count(); }
    Ref<DbMapEnum<DbMapExpression>> NewEnum() const { return Ref<DbMapEnum<DbMapExpression>>::New(m_oCol); }

    using iterator = DbMapEnum<DbMapExpression>::iterator;
    iterator begin() const { return NewEnum()->begin(); }
    iterator end() const { return iterator(); }

private:
    Collection m_oCol;
};

class ZOLSDK_API DbMapExpression : public Object {
public:
    DbMapExpression();

    const Ref<DbMapVariables>& Variables() const { return m_oVariables; }
    const Ref<DbMapExpressions>& MapExpressions() const { return m_oMapExpressions; }
    DbExpressionOperatorEnum ExpressionOperator() const { return m_eOperator; }
    void ExpressionOperator(DbExpressionOperatorEnum newVal) { m_eOperator = newVal; }

    // The value of the expression over one row, in the type of the group:
    // text (oRegx: the first match of a pattern), a new DbBlob for
    // dtCharBLOB, Long, date, boolean, Double, Single, decimal or currency;
    // Null for dtBinaryBLOB and unknown groups. Children are asked first,
    // variables after, each in the order of adding, and the accumulator
    // starts at 0: oSubtract over 5 and 3 gives -8, oMultiply gives 0.
    Variant GetValue(const Ref<DbDataRow>& poDataRow, DataTypeGroupEnum peDataTypeGroup);

private:
    Ref<DbMapVariables> m_oVariables;
    Ref<DbMapExpressions> m_oMapExpressions;
    DbExpressionOperatorEnum m_eOperator = oAdd;

    bool GetBooleanValue(const Ref<DbDataRow>& poDataRow);
    String GetSearchString(const Ref<DbDataRow>& poDataRow);
    String GetStringValue(const Ref<DbDataRow>& poDataRow);
    Currency GetCurrencyValue(const Ref<DbDataRow>& poDataRow);
    Decimal GetDecimalValue(const Ref<DbDataRow>& poDataRow);
    double GetDoubleValue(const Ref<DbDataRow>& poDataRow);
    int32_t GetIntegerValue(const Ref<DbDataRow>& poDataRow);
    float GetSingleValue(const Ref<DbDataRow>& poDataRow);
    double GetDateValue(const Ref<DbDataRow>& poDataRow);
};

} // namespace zolsdk
