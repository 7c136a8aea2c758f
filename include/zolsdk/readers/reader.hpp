#pragma once
// The contract of a schema reader: an engine's catalog as the canonical
// rowsets (tables, columns, indexes, index columns, keys).
#include "zolsdk/export.hpp"
#include "zolsdk/platform/ado/recordset.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

class IDBSession;

class ZOLSDK_API IDBReader : public Object {
public:
    virtual Ref<ado::Recordset> Tables() = 0;
    virtual Ref<ado::Recordset> TableColumns(const String& psTableName) = 0;
    virtual Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) = 0;
    virtual Ref<ado::Recordset> Indexes(const String& psTableName) = 0;
    virtual Ref<ado::Recordset> Keys(const String& psTableName) = 0;
    // Forgets whatever the reader has cached; always answers Empty.
    virtual Variant Refresh() = 0;
    virtual void Init(const Ref<IDBSession>& poSession) = 0;
};

} // namespace zolsdk
