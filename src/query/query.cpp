#include "zolsdk/query/query.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

// ---------------------------------------------------------------------------
// The collection frame

template <class T>
DbObjectList<T>::DbObjectList(StringView className)
    : addLiteral_(String(className) + u":Add Ln "), itemLiteral_(String(className) + u":Item Ln ") {}

template <class T>
void DbObjectList<T>::AddItem(const Ref<T>& item, const String& key) {
    ZOL_ROUTINE(addLiteral_);
    try {
        ZOL_LN;
        items_.Add(Variant(item), key);
    }
    ZOL_RERAISE
}

template <class T>
Ref<T> DbObjectList<T>::Item(const Variant& vntIndexKey) const {
    ZOL_ROUTINE(itemLiteral_);
    try {
        ZOL_LN;
        const Variant& v = items_.Item(vntIndexKey);
        ZOL_LN;
        if (v.IsNothing()) return nullptr;
        return v.template As<T>();
    }
    ZOL_RERAISE
}

template <class T>
bool DbObjectList<T>::Exist(const Variant& vntIndexKey) const {
    // This handler has always carried Item's literal; callers who parse the
    // chain see two Item lines for a failure that came through Exist.
    ZOL_ROUTINE(itemLiteral_);
    try {
        ZOL_LN;
        return !Item(vntIndexKey).IsNothing();
    } catch (const DbError& e) {
        if (e.Number() == err::InvalidCall || e.Number() == err::SubscriptOutOfRange) return false;
        zol_mark_.Reraise();
    } catch (...) {
        zol_mark_.Reraise();
    }
}

template <class T>
Ref<DbItemEnum<T>> DbObjectList<T>::NewEnum() const {
    std::vector<Ref<T>> items;
    items.reserve(static_cast<size_t>(Count()));
    for (const Variant& v : items_) items.push_back(v.IsNothing() ? Ref<T>() : v.template As<T>());
    return Ref<DbItemEnum<T>>::New(std::move(items));
}

template <class T>
void DbObjectList<T>::RemoveItem(const Variant& vntIndexKey) {
    items_.Remove(vntIndexKey);
}

template class DbObjectList<DbCondition>;
template class DbObjectList<DbConditionExpression>;
template class DbObjectList<DbJoinExpression>;
template class DbObjectList<DbSortExpression>;
template class DbObjectList<DbParameter>;

DbConditions::DbConditions() : DbObjectList(u"DbConditions") {}
void DbConditions::Add(const Ref<DbCondition>& poCondition) { AddItem(poCondition, {}); }

DbConditionExpressions::DbConditionExpressions() : DbObjectList(u"DbConditionExpressions") {}
void DbConditionExpressions::Add(const Ref<DbConditionExpression>& poConditionExp) { AddItem(poConditionExp, {}); }
void DbConditionExpressions::Remove(const Variant& vntIndexKey) { RemoveItem(vntIndexKey); }

DbJoinExpressions::DbJoinExpressions() : DbObjectList(u"DbJoinExpressions") {}
void DbJoinExpressions::Add(const Ref<DbJoinExpression>& poJoinExp) { AddItem(poJoinExp, {}); }
void DbJoinExpressions::Remove(const Variant& vntIndexKey) { RemoveItem(vntIndexKey); }

DbSortExpressionList::DbSortExpressionList() : DbObjectList(u"DbSortExpressionList") {}
void DbSortExpressionList::Add(const Ref<DbSortExpression>& poOrderExp) { AddItem(poOrderExp, {}); }

DbParameters::DbParameters() : DbObjectList(u"DbParameters") {}
void DbParameters::Add(const Ref<DbParameter>& poParameter, const String& psKey) { AddItem(poParameter, psKey); }
void DbParameters::Remove(const Variant& vntIndexKey) { RemoveItem(vntIndexKey); }

// ---------------------------------------------------------------------------
// The criteria tree

bool DbCondition::Accept(const Ref<IVisitor>& poVisitor) {
    ZOL_ROUTINE(u"DbCondition:ILeaf_Accept Ln ");
    try {
        ZOL_LN;
        return poVisitor->Visit(SelfRef<ILeaf>(this));
    }
    ZOL_RERAISE
}

DbConditionExpression::DbConditionExpression()
    : conditions_(Ref<DbConditions>::New()), conditionExpressions_(Ref<DbConditionExpressions>::New()) {}

bool DbConditionExpression::Accept(const Ref<IVisitor>& poVisitor) {
    ZOL_ROUTINE(u"DbConditionExpression:IComposite_Accept Ln ");
    try {
        Ref<IComposite> self = SelfRef<IComposite>(this);
        ZOL_LN;
        if (poVisitor->VisitEnter(self)) {
            // The walks run over snapshots, so a visitor that edits the
            // tree it walks cannot pull items from under the loop.
            ZOL_LN;
            for (const Ref<DbConditionExpression>& expression : conditionExpressions_) {
                ZOL_LN;
                if (!expression->Accept(poVisitor)) return false;
            }
            ZOL_LN;
            for (const Ref<DbCondition>& condition : conditions_) {
                ZOL_LN;
                if (!condition->Accept(poVisitor)) return false;
            }
        }
        ZOL_LN;
        return poVisitor->VisitLeave(self);
    }
    ZOL_RERAISE
}

// ---------------------------------------------------------------------------
// The query

DbQuery::DbQuery()
    : orderBy_(Ref<DbSortExpressionList>::New()), joins_(Ref<DbJoinExpressions>::New()),
      parameters_(Ref<DbParameters>::New()) {}

void DbQuery::ColumnSet(const String& v) { columnSet_ = Trim(v); }

Ref<DbConditionExpression> DbQuery::Criteria() const {
    ZOL_ROUTINE(u"DbQuery:Criteria Ln ");
    try {
        ZOL_LN;
        return criteria_;
    }
    ZOL_RERAISE
}

void DbQuery::Criteria(const Ref<DbConditionExpression>& v) {
    ZOL_ROUTINE(u"DbQuery:Criteria Ln ");
    try {
        ZOL_LN;
        criteria_ = v;
    }
    ZOL_RERAISE
}

Ref<DbSortExpressionList> DbQuery::OrderBy() const {
    ZOL_ROUTINE(u"DbQuery:OrderBy Ln ");
    try {
        ZOL_LN;
        return orderBy_;
    }
    ZOL_RERAISE
}

Ref<DbParameters> DbQuery::Parameters() const {
    ZOL_ROUTINE(u"DbQuery:Parameters Ln ");
    try {
        ZOL_LN;
        return parameters_;
    }
    ZOL_RERAISE
}

} // namespace zolsdk
