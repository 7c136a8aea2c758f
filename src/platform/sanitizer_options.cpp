// Default options of the sanitizers, for builds made with ZOLSDK_SANITIZE.
// The Access provider's JVM handles SIGSEGV itself (implicit null checks,
// stack banging) and keeps memory the leak checker cannot see: the
// sanitizer must leave that signal to it and must not report leaks at exit.
// Options given in the environment are applied after these.
#if defined(ZOLSDK_SANITIZED)
extern "C" {
__attribute__((visibility("default"), used)) const char* __asan_default_options() {
    return "handle_segv=0:allow_user_segv_handler=1:detect_leaks=0";
}
__attribute__((visibility("default"), used)) const char* __ubsan_default_options() {
    return "halt_on_error=1:print_stacktrace=1";
}
}
#endif
