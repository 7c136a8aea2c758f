#pragma once
// The system's text is UTF-16: every length, position and byte count in the
// library is in 16-bit code units, so it is exact by construction.
// UTF-8 appears only at the edges (files, libxml2, the terminal).
#include <cstdint>
#include <string>
#include <string_view>
#include "zolsdk/export.hpp"

namespace zolsdk {

using String = std::u16string;
using StringView = std::u16string_view;

// UTF-8 <-> UTF-16. Malformed input is replaced by U+FFFD rather than failing:
// these sit at edges where the text comes from outside.
ZOLSDK_API String FromUtf8(std::string_view s);
ZOLSDK_API std::string ToUtf8(StringView s);

// Plain-ASCII literal helper for places that build text from narrow constants.
ZOLSDK_API String Ascii(std::string_view s);

// Case folding as the system does it for keys and comparisons: the ASCII
// letters and the Latin-1 letters; other characters stay as they are.
ZOLSDK_API char16_t LowerChar(char16_t c);
ZOLSDK_API char16_t UpperChar(char16_t c);
ZOLSDK_API String LCase(StringView s);
ZOLSDK_API String UCase(StringView s);
ZOLSDK_API bool EqualsNoCase(StringView a, StringView b);

// 1-based search as the platform has it: the position of the first hit at or
// after `start`, or 0. An empty `find` gives `start` when start <= len + 1.
ZOLSDK_API int32_t InStr(int32_t start, StringView text, StringView find, bool ignoreCase = false);

ZOLSDK_API String Trim(StringView s);

// Decimal text of an integer (no separators, "-" for negatives).
ZOLSDK_API String IntText(int64_t v);

} // namespace zolsdk
