#include "zolsdk/mapping/column_map.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

void DbMap::MapType(MapTypeEnum newVal) {
    m_eMapType = newVal;
    m_lMapFamily = (static_cast<int32_t>(newVal) & mtExpression) ? mtExpression : 0;
}

void DbMap::MapFrom(const Ref<DbColumn>& newVal) {
    m_oMapFrom = newVal;
    m_eDataTypeGroup = static_cast<DataTypeGroupEnum>(newVal->DataTypeGroup());
}

Ref<DbMap> DbColumnMap::NewMap(MapTypeEnum type, const Ref<DbColumn>& poFrom, const Variant& to) {
    auto map = Ref<DbMap>::New();
    map->MapType(type);
    map->MapFrom(poFrom);
    map->MapTo(to);
    map->Position(m_oCol.Count() + 1);
    return map;
}

void DbColumnMap::AddMap(const Ref<DbMap>& poMap) {
    ZOL_ROUTINE(u"DbColumnMap:AddMap Ln ");
    try {
        ZOL_LN; const String key = poMap->MapFrom()->ColumnName();
        ZOL_LN; m_oCol.Add(Variant(poMap), key);
    } ZOL_RERAISE
}

void DbColumnMap::AddExpressionMap(const Ref<DbColumn>& poFrom, const Ref<DbMapExpression>& poExpression) {
    ZOL_ROUTINE(u"DbColumnMap:AddExpressionMap Ln ");
    try {
        ZOL_LN; Ref<DbMap> map = NewMap(mtExpression, poFrom, Variant(poExpression));
        ZOL_LN; m_oCol.Add(Variant(map), poFrom->ColumnName());
    } ZOL_RERAISE
}

void DbColumnMap::AddConstantMap(const Ref<DbColumn>& poFrom, const Variant& pvConstant) {
    ZOL_ROUTINE(u"DbColumnMap:AddConstantMap Ln ");
    try {
        ZOL_LN; Ref<DbMap> map = NewMap(mtConstant, poFrom, pvConstant);
        ZOL_LN; m_oCol.Add(Variant(map), poFrom->ColumnName());
    } ZOL_RERAISE
}

void DbColumnMap::AddColumnMap(const Ref<DbColumn>& poFrom, const Ref<DbColumn>& poTo) {
    ZOL_ROUTINE(u"DbColumnMap:AddColumnMap Ln ");
    try {
        ZOL_LN; Ref<DbMap> map = NewMap(mtColumn, poFrom, Variant(poTo));
        ZOL_LN; m_oCol.Add(Variant(map), poFrom->ColumnName());
    } ZOL_RERAISE
}

bool DbColumnMap::Exist(const Variant& pvIndexKey) {
    ZOL_ROUTINE(u"DbColumnMap:Exist Ln ");
    try {
        ZOL_LN; return !Item(pvIndexKey).IsNothing();
    } catch (const DbError& e) {
        // An unknown name or a position out of range is an answer here.
        if (e.Number() == err::InvalidCall || e.Number() == err::SubscriptOutOfRange) return false;
        zol_mark_.Reraise();
    } ZOL_RERAISE
}

Ref<DbMap> DbColumnMap::Item(const Variant& vntIndexKey) {
    ZOL_ROUTINE(u"DbColumnMap:Item Ln");
    try {
        ZOL_LN; return m_oCol.Item(vntIndexKey).As<DbMap>();
    } ZOL_RERAISE
}

Ref<DbMapEnum<DbMap>> DbColumnMap::NewEnum() {
    ZOL_ROUTINE(u"DbColumnMap:NewEnum Ln ");
    try {
        ZOL_LN; return Ref<DbMapEnum<DbMap>>::New(m_oCol);
    } ZOL_RERAISE
}

} // namespace zolsdk
