#pragma once
// Reading one value of an attribute string ("key=value;key=value").
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// The adaptor factory's reader: the key is found anywhere in the text, even
// inside a value or a longer key, and only the first hit is looked at.
String FactoryAttributeValue(StringView attributes, StringView key);

// The sessions' reader: looks for "key=" first, then "key ", then gives up.
String SessionAttributeValue(StringView attributes, StringView key);

// Refuses (platform failure 5) a value of `key` that the readers above
// would hand out shortened without a word: one that holds a second "="
// (the reader stops there), a character 0 (C text stops there), or one
// followed by a piece without "=" (a ";" inside the value, where the
// reader stopped). The readers themselves keep their documented results;
// the sessions call this before a name or password goes to an engine.
void CheckWholeAttribute(StringView attributes, StringView key);

} // namespace zolsdk
