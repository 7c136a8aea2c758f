#pragma once
// The schema reader of the Access engine, over the provider's schema
// rowsets.
#include "readers/schema_rowset_reader.hpp"

namespace zolsdk {

class DbMsAccessReader : public SchemaRowsetReader {
public:
    DbMsAccessReader();
    // The portable type group of a native ADO type number, with the size
    // (precision or length) that decides between text and long text.
    static int32_t GetDataTypeGroup(int32_t plDataType, int32_t plSize);

protected:
    int32_t TypeGroup(int32_t plDataType, int32_t plSize) const override;
};

} // namespace zolsdk
