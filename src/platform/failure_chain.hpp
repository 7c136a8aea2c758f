#pragma once
// The trap-and-re-raise chain inside the library.
//
// A routine that traps declares its trace literal once with ZOL_ROUTINE,
// marks the statements it wants numbered with ZOL_LN, and ends its try block
// with ZOL_RERAISE. The line number in the chain is the source line of the
// last ZOL_LN passed (or of ZOL_ROUTINE when none was): a stable decimal
// number per statement.
#include "zolsdk/platform/error.hpp"

namespace zolsdk {

// The platform's own text for one of its failure numbers ("" if unknown).
String PlatformErrorText(int32_t number);

[[noreturn]] void RaisePlatformFrom(int32_t number, StringView source, StringView description);

// The per-routine mark of the chain.
struct RoutineMark {
    StringView literal;
    int line;
    // Re-raise the exception being handled with this routine's trace line.
    [[noreturn]] void Reraise() const;
};

} // namespace zolsdk

#define ZOL_ROUTINE(lit) ::zolsdk::RoutineMark zol_mark_{lit, __LINE__}
#define ZOL_LN (zol_mark_.line = __LINE__)
#define ZOL_RERAISE catch (...) { zol_mark_.Reraise(); }
