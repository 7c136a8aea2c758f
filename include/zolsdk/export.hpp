#pragma once
// What the shared library lets a client see. It is built with hidden
// visibility: only declarations marked ZOLSDK_API are exported, everything
// else (the engines' sessions, readers, dialects and providers) stays inside.
#if defined(_WIN32)
#define ZOLSDK_API
#define ZOLSDK_LOCAL
#else
#define ZOLSDK_API __attribute__((visibility("default")))
#define ZOLSDK_LOCAL __attribute__((visibility("hidden")))
#endif
