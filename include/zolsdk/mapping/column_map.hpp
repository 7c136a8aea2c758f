#pragma once
// Column maps of a mapped import: for each column of the target table,
// where its value comes from. One DbMap per target column, keyed by that
// column's name.
//
// MapFrom is the target column and MapTo the source of the value: the data
// goes from MapTo into MapFrom.
//
//   auto map = Ref<DbColumnMap>::New();
//   map->AddColumnMap(targetName, sourceName);      // copy a source column
//   map->AddConstantMap(targetOrigin, Variant(u"import"));
//   map->AddExpressionMap(targetTotal, totalExpression);
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/mapping/map_enum.hpp"
#include "zolsdk/mapping/map_expression.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk {

class ZOLSDK_API DbMap : public Object {
public:
    MapTypeEnum MapType() const { return m_eMapType; }
    void MapType(MapTypeEnum newVal);
    const Ref<DbColumn>& MapFrom() const { return m_oMapFrom; }
    // Also takes the column's type group: the target decides how a value is
    // rendered, whatever the source's type.
    void MapFrom(const Ref<DbColumn>& newVal);
    // By MapType: a source DbColumn, a constant (possibly an object) or a
    // DbMapExpression. Objects are kept by reference, anything else by value.
    const Variant& MapTo() const { return m_vMapTo; }
    void MapTo(const Variant& newVal) { m_vMapTo = newVal; }
    int32_t Position() const { return m_lPosition; }
    void Position(int32_t newVal) { m_lPosition = newVal; }
    DataTypeGroupEnum DataTypeGroup() const { return m_eDataTypeGroup; }
    // 256 when MapType has the bit 256 set (a computed map), else 0.
    int32_t MapFamily() const { return m_lMapFamily; }

private:
    int32_t m_lMapFamily = 0;
    MapTypeEnum m_eMapType = mtColumn;
    Ref<DbColumn> m_oMapFrom;
    Variant m_vMapTo;
    int32_t m_lPosition = 0;
    DataTypeGroupEnum m_eDataTypeGroup = dtUnknown;
};

class ZOLSDK_API DbColumnMap : public Object {
public:
    // Adds a map the caller built, under its MapFrom's name; Position is the
    // caller's business.
    void AddMap(const Ref<DbMap>& poMap);
    void AddExpressionMap(const Ref<DbColumn>& poFrom, const Ref<DbMapExpression>& poExpression);
    void AddConstantMap(const Ref<DbColumn>& poFrom, const Variant& pvConstant);
    void AddColumnMap(const Ref<DbColumn>& poFrom, const Ref<DbColumn>& poTo);
    bool Exist(const Variant& pvIndexKey);
    // A text is a target column's name, a number a 1-based position.
    Ref<DbMap> Item(const Variant& vntIndexKey);
    int32_t Count() const { return m_oCol.Count(); }
    Ref<DbMapEnum<DbMap>> NewEnum();

    using iterator = DbMapEnum<DbMap>::iterator;
    iterator begin() { return NewEnum()->begin(); }
    iterator end() { return iterator(); }

private:
    Collection m_oCol;

    Ref<DbMap> NewMap(MapTypeEnum type, const Ref<DbColumn>& poFrom, const Variant& to);
};

} // namespace zolsdk
