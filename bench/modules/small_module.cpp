// A small shared library that host_bench loads and unloads beside the toolkit.
extern "C" __attribute__((visibility("default"))) int SmallAnswer() {
    return 42;
}
