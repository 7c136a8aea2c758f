#pragma once
// The canonical rowsets that readers fill and collections read: new, empty,
// open, client-side, with fields of fixed names, types and sizes.
#include "zolsdk/platform/ado/recordset.hpp"

namespace zolsdk {

Ref<ado::Recordset> TableRS();
Ref<ado::Recordset> ColumnRS();
Ref<ado::Recordset> IndexRS();
Ref<ado::Recordset> IdxColumnRS();
Ref<ado::Recordset> KeyRS();
Ref<ado::Recordset> DataColumnRS();

} // namespace zolsdk
