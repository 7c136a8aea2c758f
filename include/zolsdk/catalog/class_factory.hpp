#pragma once
// Creating the public classes by name, as an in-process component hands
// them out: CreateObject(u"DbCatalog"). Names are compared case-blind; an
// unknown name fails with 429 ("ActiveX component can't create object").
#include <vector>

#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

Ref<Object> CreateObject(StringView className);
// The names CreateObject knows, in a stable order.
std::vector<String> CreatableClassNames();

} // namespace zolsdk
