#pragma once
#include <vector>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// The platform's split: literal delimiter, empty items kept; an empty text
// gives no items at all. `ignoreCase` compares the delimiter case-blind.
std::vector<String> Split(StringView text, StringView delimiter, bool ignoreCase = false);
String Join(const std::vector<String>& items, StringView delimiter);

} // namespace zolsdk
