#pragma once
// Beginning a library failure: the message table and RaiseError.
#include <cstdint>
#include <vector>

#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/variant.hpp"

namespace zolsdk {

// The message template of a string-table id ("" for an unknown id).
String ErrorText(int32_t id);

// Raises DbError(id + 0x80040000, "ZolSDK", template with %0, %1, ...
// replaced by the arguments in turn). `routineText` names the caller in the
// code; it does not reach the failure, whose trace starts at the caller's
// own handler.
[[noreturn]] void RaiseError(int32_t id, StringView routineText, const std::vector<Variant>& arguments = {});

inline constexpr char16_t kLibrarySource[] = u"ZolSDK";

} // namespace zolsdk
