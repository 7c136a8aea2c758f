// Default options of the sanitizers, for builds made with ZOLSDK_SANITIZE.
// The Access provider's JVM threads fault under the leak tracer at exit, so
// leaks are not checked by default; the JVM's own SIGSEGV handling works
// with the sanitizer's. Options given in the environment are applied after
// these (the test script turns leak checking on where no JVM starts).
#if defined(ZOLSDK_SANITIZED)
extern "C" {
__attribute__((visibility("default"), used)) const char* __asan_default_options() {
    return "detect_leaks=0";
}
__attribute__((visibility("default"), used)) const char* __ubsan_default_options() {
    return "halt_on_error=1:print_stacktrace=1";
}
}
#endif
