#pragma once
// The system's text is UTF-16: every length, position and byte count in the
// library is in 16-bit code units, so it is exact by construction.
// UTF-8 appears only at the edges (files, libxml2, the terminal).
#include <cstdint>
#include <string>
#include <string_view>

namespace zolsdk {

using String = std::u16string;
using StringView = std::u16string_view;

// UTF-8 <-> UTF-16. Malformed input is replaced by U+FFFD rather than failing:
// these sit at edges where the text comes from outside.
String FromUtf8(std::string_view s);
std::string ToUtf8(StringView s);

// Plain-ASCII literal helper for places that build text from narrow constants.
String Ascii(std::string_view s);

// Case folding as the system does it for keys and comparisons: the ASCII
// letters and the Latin-1 letters; other characters stay as they are.
char16_t LowerChar(char16_t c);
char16_t UpperChar(char16_t c);
String LCase(StringView s);
String UCase(StringView s);
bool EqualsNoCase(StringView a, StringView b);

// 1-based search as the platform has it: the position of the first hit at or
// after `start`, or 0. An empty `find` gives `start` when start <= len + 1.
int32_t InStr(int32_t start, StringView text, StringView find, bool ignoreCase = false);

String Trim(StringView s);

// Decimal text of an integer (no separators, "-" for negatives).
String IntText(int64_t v);

} // namespace zolsdk
