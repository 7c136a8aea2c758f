#pragma once
// The query model: a table, a column set and a tree of criteria that a
// client builds instead of writing SQL. The objects only hold data and check
// nothing; what they do is walk the tree in a fixed order (Accept).
//
//   auto q = Ref<DbQuery>::New();
//   q->TableName(u"orders");
//   auto root = Ref<DbConditionExpression>::New();
//   auto c = Ref<DbCondition>::New();
//   c->AttributeName(u"qty"); c->AttributeDataType(dtInteger);
//   c->Operator(dcoGreaterThan); c->Value(int32_t{10});
//   root->Conditions()->Add(c);
//   q->Criteria(root);
#include <cstdint>
#include <iterator>
#include <memory>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/platform/snapshot_enum.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"
#include "zolsdk/query/visitor.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

class DbCondition;
class DbConditionExpression;
class DbJoinExpression;
class DbSortExpression;
class DbParameter;

// The walk of a query collection: a snapshot taken by NewEnum.
template <class T>
using DbItemEnum = SnapshotEnum<T>;

// The common frame of the query collections: an ordered, 1-based
// Collection of one kind of object. Item takes a position or a key; Exist
// turns "no such item" (5 or 9) into false. Range-for walks a snapshot in
// insertion order, both on the collection and on a Ref to it.
template <class T>
class ZOLSDK_API DbObjectList : public Object {
public:
    Ref<T> Item(const Variant& vntIndexKey) const;
    bool Exist(const Variant& vntIndexKey) const;
    int32_t Count() const { return items_.Count(); }
    Ref<DbItemEnum<T>> NewEnum() const;

    using iterator = typename DbItemEnum<T>::iterator;
    iterator begin() const { return NewEnum()->begin(); }
    iterator end() const { return iterator(); }

protected:
    // `className` starts every trace literal of the collection.
    explicit DbObjectList(StringView className);
    void AddItem(const Ref<T>& item, const String& key);
    void RemoveItem(const Variant& vntIndexKey);

private:
    Collection items_;
    String addLiteral_;
    String itemLiteral_;
};

class ZOLSDK_API DbConditions : public DbObjectList<DbCondition> {
public:
    DbConditions();
    void Add(const Ref<DbCondition>& poCondition);
};

class ZOLSDK_API DbConditionExpressions : public DbObjectList<DbConditionExpression> {
public:
    DbConditionExpressions();
    void Add(const Ref<DbConditionExpression>& poConditionExp);
    // For the library's own use: clients build trees, they don't prune them.
    void Remove(const Variant& vntIndexKey);
};

class ZOLSDK_API DbJoinExpressions : public DbObjectList<DbJoinExpression> {
public:
    DbJoinExpressions();
    void Add(const Ref<DbJoinExpression>& poJoinExp);
    void Remove(const Variant& vntIndexKey);
};

class ZOLSDK_API DbSortExpressionList : public DbObjectList<DbSortExpression> {
public:
    DbSortExpressionList();
    void Add(const Ref<DbSortExpression>& poOrderExp);
};

// The only keyed collection: a condition of value type dcvtUserDefined
// names its parameter by this key. A second parameter under the same key
// fails with the collection's own 457.
class ZOLSDK_API DbParameters : public DbObjectList<DbParameter> {
public:
    DbParameters();
    void Add(const Ref<DbParameter>& poParameter, const String& psKey);
    void Remove(const Variant& vntIndexKey);
};

// One comparison of the criteria tree. With dcvtConstant, Value is the
// value compared with; with dcvtUserDefined, it is the key of a parameter
// of the query.
class ZOLSDK_API DbCondition : public ILeaf {
public:
    DbConditionOperatorEnum Operator() const { return operator_; }
    void Operator(DbConditionOperatorEnum v) { operator_ = v; }
    const String& AttributeName() const { return attributeName_; }
    void AttributeName(const String& v) { attributeName_ = v; }
    DataTypeGroupEnum AttributeDataType() const { return attributeDataType_; }
    void AttributeDataType(DataTypeGroupEnum v) { attributeDataType_ = v; }
    DbConditionValueTypeEnum ValueType() const { return valueType_; }
    void ValueType(DbConditionValueTypeEnum v) { valueType_ = v; }
    const Variant& Value() const { return value_; }
    void Value(const Variant& v) { value_ = v; }

    // Answers what the visitor's Visit answers for this condition.
    bool Accept(const Ref<IVisitor>& poVisitor) override;

private:
    DbConditionOperatorEnum operator_ = static_cast<DbConditionOperatorEnum>(0);
    String attributeName_;
    DataTypeGroupEnum attributeDataType_ = dtUnknown;
    DbConditionValueTypeEnum valueType_ = dcvtConstant;
    Variant value_;
};

// An inner node: its nested expressions and its conditions, joined by one
// logical operator.
class ZOLSDK_API DbConditionExpression : public IComposite {
public:
    DbConditionExpression();

    const Ref<DbConditions>& Conditions() const { return conditions_; }
    const Ref<DbConditionExpressions>& ConditionExpressions() const { return conditionExpressions_; }
    DbLogicalOperatorEnum LogicalOperator() const { return logicalOperator_; }
    void LogicalOperator(DbLogicalOperatorEnum v) { logicalOperator_ = v; }

    // Enter, then the nested expressions, then the conditions, then leave.
    // Nested expressions come first whatever the order they were added in.
    // A refused enter skips the children but not the leave; a refusing child
    // ends the walk at once, without the leave.
    bool Accept(const Ref<IVisitor>& poVisitor) override;

private:
    Ref<DbConditions> conditions_;
    Ref<DbConditionExpressions> conditionExpressions_;
    DbLogicalOperatorEnum logicalOperator_ = dloAnd;
};

// A join between two entities. Nothing creates its Criteria or Joins: both
// start as nothing, and Joins cannot be set.
class ZOLSDK_API DbJoinExpression : public Object {
public:
    const Ref<DbConditionExpression>& Criteria() const { return criteria_; }
    void Criteria(const Ref<DbConditionExpression>& v) { criteria_ = v; }
    const Ref<DbJoinExpressions>& Joins() const { return joins_; }
    const String& PrimaryAttributeName() const { return primaryAttributeName_; }
    void PrimaryAttributeName(const String& v) { primaryAttributeName_ = v; }
    const String& PrimaryEntityName() const { return primaryEntityName_; }
    void PrimaryEntityName(const String& v) { primaryEntityName_ = v; }
    const String& RelatedAttributeName() const { return relatedAttributeName_; }
    void RelatedAttributeName(const String& v) { relatedAttributeName_ = v; }
    const String& RelatedEntityName() const { return relatedEntityName_; }
    void RelatedEntityName(const String& v) { relatedEntityName_ = v; }

private:
    Ref<DbConditionExpression> criteria_;
    Ref<DbJoinExpressions> joins_;
    String primaryAttributeName_;
    String primaryEntityName_;
    String relatedAttributeName_;
    String relatedEntityName_;
};

class ZOLSDK_API DbSortExpression : public Object {
public:
    const String& AttributeName() const { return attributeName_; }
    void AttributeName(const String& v) { attributeName_ = v; }
    SortOrderEnum SortOrder() const { return sortOrder_; }
    void SortOrder(SortOrderEnum v) { sortOrder_ = v; }

private:
    String attributeName_;
    SortOrderEnum sortOrder_ = soAscending;
};

// A value supplied at run time for a user-defined condition. IsValueSet
// tells whether Value was ever written; IsNullValue makes the condition
// compare with NULL whatever Value says.
class ZOLSDK_API DbParameter : public Object {
public:
    const String& Name() const { return name_; }
    void Name(const String& v) { name_ = v; }
    const String& DisplayName() const { return displayName_; }
    void DisplayName(const String& v) { displayName_ = v; }
    const String& Value() const { return value_; }
    void Value(const String& v) {
        value_ = v;
        isValueSet_ = true;
    }
    void ResetValue() {
        value_.clear();
        isValueSet_ = false;
        isNullValue_ = false;
    }
    bool IsValueSet() const { return isValueSet_; }
    bool IsNullValue() const { return isNullValue_; }
    void IsNullValue(bool v) { isNullValue_ = v; }
    DataTypeGroupEnum ParameterDataType() const { return parameterDataType_; }
    void ParameterDataType(DataTypeGroupEnum v) { parameterDataType_ = v; }

private:
    String name_;
    String displayName_;
    String value_;
    bool isValueSet_ = false;
    bool isNullValue_ = false;
    DataTypeGroupEnum parameterDataType_ = dtUnknown;
};

// What to export: a table, a column set and the criteria. Criteria starts
// as nothing: a query without criteria selects every row.
class ZOLSDK_API DbQuery : public Object {
public:
    DbQuery();

    const String& ColumnSet() const { return columnSet_; }
    // Stored without blanks at either end.
    void ColumnSet(const String& v);
    Ref<DbConditionExpression> Criteria() const;
    void Criteria(const Ref<DbConditionExpression>& v);
    Ref<DbSortExpressionList> OrderBy() const;
    bool Distinct() const { return distinct_; }
    void Distinct(bool v) { distinct_ = v; }
    // -1: no limit set.
    int32_t MaxRows() const { return maxRows_; }
    void MaxRows(int32_t v) { maxRows_ = v; }
    // Kept as given, blanks included.
    const String& TableName() const { return tableName_; }
    void TableName(const String& v) { tableName_ = v; }
    Ref<DbParameters> Parameters() const;

private:
    String columnSet_;
    String tableName_;
    Ref<DbConditionExpression> criteria_;
    Ref<DbSortExpressionList> orderBy_;
    bool distinct_ = false;
    int32_t maxRows_ = -1;
    // Held for joined queries; nothing reads it yet.
    Ref<DbJoinExpressions> joins_;
    Ref<DbParameters> parameters_;
};

} // namespace zolsdk
