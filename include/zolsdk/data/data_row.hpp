#pragma once
// One row as a typed buffer: a cell per column with a null mark, read and
// written by column name or position.
#include <cstdint>
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/data/blob.hpp"
#include "zolsdk/platform/collection.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class ZOLSDK_API DbDataRow : public Object {
public:
    DbDataRow();
    ~DbDataRow() override;
    // psColumnSet: "03id,01name,10photo" (two-digit type group + name).
    void Init(const String& psColumnSet);
    bool HasBlob() const { return m_bHasBlob; }
    bool IsNullValue(const Variant& psIndexKey);
    // By the cell's type group; a null cell gives its slot's reset value.
    Variant Item(const Variant& psIndexKey);
    // Assigns a value, converted to the cell's type (blob cells ignore it).
    void LetItem(const Variant& psIndexKey, const Variant& value);
    // As LetItem, but a blob cell takes a DbBlob reference.
    void SetItem(const Variant& psIndexKey, const Variant& value);
    // The row as one record of encoded values for the SQL builders.
    String GetString(const String& psColumnDelimiter, const String& psBlobValueSubstibute);

    int32_t CellCount() const { return static_cast<int32_t>(cells_.size()); }
    // The position of the cell a key reaches (a name, or a number that is
    // a position); fails as the other accessors do for an unknown name.
    int32_t CellIndex(const Variant& psIndexKey) { return static_cast<int32_t>(GetIndex(psIndexKey)); }

private:
    struct RowCell {
        String name;
        int32_t group = 0;
        bool isNull = true;
        String text;
        int32_t integer = 0;
        double date = 0;
        bool boolean = false;
        double dbl = 0;
        float sng = 0;
        Variant decimal = Variant(int16_t{0});
        Currency currency;
        Ref<DbBlob> blob;
    };
    std::vector<RowCell> cells_;
    int32_t m_lHighIndex = 0;
    bool m_bHasBlob = false;
    Ref<Collection> m_oIndex;

    size_t GetIndex(const Variant& key);
    RowCell& Cell(size_t i);
    void Assign(RowCell& c, const Variant& value, bool asObject);
};

} // namespace zolsdk
