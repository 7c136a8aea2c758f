#pragma once
#include <vector>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// The platform's split: literal delimiter, empty items kept; an empty text
// gives no items at all. `ignoreCase` compares the delimiter case-blind.
std::vector<String> Split(StringView text, StringView delimiter, bool ignoreCase = false);
// Item i of a split, failing with 9 (subscript out of range) past the end.
const String& Piece(const std::vector<String>& items, size_t i);
String Join(const std::vector<String>& items, StringView delimiter);

} // namespace zolsdk
