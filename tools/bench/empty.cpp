// The least that a shared library can be.
extern "C" [[gnu::visibility("default")]] int bench_empty() { return 0; }
