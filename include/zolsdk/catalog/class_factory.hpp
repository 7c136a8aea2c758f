#pragma once
// Creating the public classes by name, as an in-process component hands
// them out: CreateObject(u"DbCatalog"). Names are compared case-blind; an
// unknown name fails with 429 ("ActiveX component can't create object").
#include <vector>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

ZOLSDK_API Ref<Object> CreateObject(StringView className);
// The names CreateObject knows, in a stable order.
ZOLSDK_API std::vector<String> CreatableClassNames();
// The dbtype values an attribute string may name, in a stable order.
ZOLSDK_API std::vector<String> EngineTypeNames();

} // namespace zolsdk
