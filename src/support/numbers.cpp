#include "support/numbers.hpp"

#include "zolsdk/platform/locale.hpp"

namespace zolsdk {

String NumberToText(int32_t value) { return IntText(value); }

String GetDecimalSeparator() {
    try {
        // The host is asked with room for one character: a longer separator
        // comes back cut to its first one.
        const String& sep = UserLocale::Current().decimalSeparator;
        return sep.empty() ? String() : String(1, sep[0]);
    } catch (...) {
        return {};
    }
}

String GetThousandSeparator() {
    // The question goes out with a buffer that was never allocated, so the
    // answer is empty on every locale; callers stripping thousands
    // separators therefore strip nothing.
    return {};
}

} // namespace zolsdk
