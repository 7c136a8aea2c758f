#pragma once
// The schema reader of the SQL Server engine, over the provider's schema
// rowsets.
#include "readers/schema_rowset_reader.hpp"

namespace zolsdk {

class DbMsSQLReader : public SchemaRowsetReader {
public:
    DbMsSQLReader();
    // The portable type group of a native ADO type number, with the size
    // (precision or length) that decides between text and long text.
    static int32_t GetDataTypeGroup(int32_t plDataType, int32_t plSize);
    // The server's product version, asked once; "8.00.2039" when the
    // server answers nothing. Nothing in the reader depends on it.
    String GetVersion();

protected:
    int32_t TypeGroup(int32_t plDataType, int32_t plSize) const override;

private:
    String msVersion;
};

} // namespace zolsdk
