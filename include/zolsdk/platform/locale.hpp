#pragma once
// Stand-ins for what the host system tells about the user: number separators,
// the first day of the week, and the clock. Read once from the process
// locale; tests (and embedding programs) may set them.
#include <optional>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

struct ZOLSDK_API UserLocale {
    String decimalSeparator = u".";
    String thousandSeparator = u",";
    int firstDayOfWeek = 1; // 1 Sunday ... 7 Saturday

    // The locale in force: the process locale as read at first use, or what
    // Set put in its place.
    static const UserLocale& Current();
    static void Set(const UserLocale& l);
    static void Reset(); // back to the process locale
};

struct ZOLSDK_API Clock {
    // Local date and time as a date value, or the fixed value from Set.
    static double Now();
    static void Set(std::optional<double> fixedNow);
};

} // namespace zolsdk
