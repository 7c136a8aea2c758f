#pragma once
// The frame shared by DbTables, DbColumns, DbIndexes and DbIdxColumns: a
// thin view over one canonical rowset, asked for once at Init. Items are
// made from the current row when requested; enumeration reuses one item.
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/schema/enumerable.hpp"

namespace zolsdk {

template <class T>
class ZOLSDK_API SchemaCollection : public IVBEnumerable {
public:
    ~SchemaCollection() override;

    bool Exist(const Variant& pvIndexKey);
    // By text: the row whose key field equals it, case-blind. By number:
    // that many rows on from the first (so from 0). Nothing when no row.
    Ref<T> Item(const Variant& vntIndexKey);
    int32_t Count() const { return m_oRS->RecordCount(); }
    Ref<DbEnumerator<T>> NewEnum();
    // Every field of every row; the last character is cut, whatever the
    // length of the row delimiter.
    String GetString(const String& psColumnDelimiter, const String& psRowDelimiter);

    int32_t GetNext(Variant& value) override;
    int32_t Reset() override;
    int32_t Skip(int32_t count) override;

protected:
    // `className` prefixes the trace literals; `keyField` is the field that
    // a text key is compared with.
    SchemaCollection(StringView className, StringView keyField);
    // Fills an item from the current row of m_oRS.
    virtual void Fill(T& item) = 0;

    Ref<ado::Recordset> m_oRS;
    Ref<T> m_oItem;
    int32_t m_lStatus = 0;

private:
    String keyField_;
    String litExist_, litItem_, litNewEnum_, litGetString_, litGetNext_, litReset_, litSkip_;
};

} // namespace zolsdk
