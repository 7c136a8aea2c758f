#pragma once
#include <cstdint>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// Literal text replacement from a 1-based start, at most `count` hits
// (0: no limit). `count` is also an output: it receives the number of hits
// when there were any, so a caller reusing the variable must reset it.
// The text before `start` is kept as it is.
String ReplaceText(StringView text, StringView find, StringView replacement, int32_t start, int32_t& count,
                   bool ignoreCase = false);

// The common call: from the first character, every hit, case-sensitive.
String ReplaceAll(StringView text, StringView find, StringView replacement);
// The same on a text the caller gives away: with no hit it comes back as it
// is, without a copy (the common case on the copy path).
String ReplaceAll(String&& text, StringView find, StringView replacement);
inline String ReplaceAll(const char16_t* text, StringView find, StringView replacement) {
    return ReplaceAll(StringView(text), find, replacement);
}


} // namespace zolsdk
