// The sanitizers' settings, so that a target run by hand finds what scripts/fuzz finds.

extern "C" {
__attribute__((visibility("default"), used)) const char* __asan_default_options() {
    return "detect_leaks=1:detect_stack_use_after_return=1";
}
// The rows of the value tables are packed, their texts at addresses that are no multiples of 8.
__attribute__((visibility("default"), used)) const char* __lsan_default_options() {
    return "use_unaligned=1";
}
__attribute__((visibility("default"), used)) const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}
}
