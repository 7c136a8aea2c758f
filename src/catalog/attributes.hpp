#pragma once
// Reading one value of an attribute string ("key=value;key=value").
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// The adaptor factory's reader: the key is found anywhere in the text, even
// inside a value or a longer key, and only the first hit is looked at.
String FactoryAttributeValue(StringView attributes, StringView key);

// The sessions' reader: looks for "key=" first, then "key ", then gives up.
String SessionAttributeValue(StringView attributes, StringView key);

} // namespace zolsdk
