// A library that loads and exports something, but not the entry point of a filter.
#ifdef _WIN32
extern "C" __declspec(dllexport) int NotTheEntryPoint() {
    return 1;
}
#else
extern "C" __attribute__((visibility("default"))) int NotTheEntryPoint() {
    return 1;
}
#endif
