#pragma once
// Integer text and the user's number separators.
#include <cstdint>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

String NumberToText(int32_t value);
// One character, from the user's locale; "" when it has none.
String GetDecimalSeparator();
// Always "": the routine asks with a buffer it never allocates, and the
// callers' removal of thousands separators therefore removes nothing.
String GetThousandSeparator();

} // namespace zolsdk
