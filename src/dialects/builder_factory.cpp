#include "zolsdk/dialects/sql_builder.hpp"

namespace zolsdk {

// The dialect classes register here as they are written.
Ref<IDbSqlBuilder> NewSqlBuilder(int32_t) { return nullptr; }

} // namespace zolsdk
