#pragma once
// Library failure numbers: a message id + 0x80040000.
#include <cstdint>

namespace zolsdk::errnum {

constexpr int32_t Base = static_cast<int32_t>(0x80040000u);

// Message ids.
constexpr int32_t ErrInvalidConditionOperator = 8192;   // 0x2000
constexpr int32_t ErrDbNotInitialized = 12288;          // 0x3000
constexpr int32_t ErrCreateDb = 61440;                  // 0xF000
constexpr int32_t ErrConnect = 61441;                   // 0xF001
constexpr int32_t ErrUnexpected = 65535;                // 0xFFFF

constexpr int32_t Number(int32_t id) { return static_cast<int32_t>(static_cast<uint32_t>(id) + 0x80040000u); }

constexpr int32_t InvalidConditionOperator = Number(ErrInvalidConditionOperator); // 0x80042000
constexpr int32_t DbNotInitialized = Number(ErrDbNotInitialized);                 // 0x80043000
constexpr int32_t CreateDbFailed = Number(ErrCreateDb);                           // 0x8004F000
constexpr int32_t ConnectFailed = Number(ErrConnect);                             // 0x8004F001
constexpr int32_t Unexpected = Number(ErrUnexpected);                             // 0x8004FFFF
constexpr int32_t StringBuilderRange = static_cast<int32_t>(0x80040200u);

} // namespace zolsdk::errnum
