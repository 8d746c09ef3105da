/// Preloaded into the program: makes one allocation of the plug-in fail.
///
/// TESSORA_FAIL_SIZE is the size in bytes, TESSORA_FAIL_CALL which call of that size fails, from 1.
/// Only calls of malloc from the plug-in's own library count.
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

extern "C" void* __libc_malloc(size_t size);

extern "C" __attribute__((visibility("default"))) void* malloc(size_t size) {
    static int calls = 0;
    const char* const wanted = std::getenv("TESSORA_FAIL_SIZE");
    if (wanted == nullptr || std::strtoul(wanted, nullptr, 10) != size)
        return __libc_malloc(size);
    Dl_info caller;
    if (::dladdr(__builtin_return_address(0), &caller) == 0 ||
        std::strstr(caller.dli_fname, "/tessora.so") == nullptr)
        return __libc_malloc(size);
    return ++calls == std::atoi(std::getenv("TESSORA_FAIL_CALL")) ? nullptr : __libc_malloc(size);
}
