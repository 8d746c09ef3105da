/// Preloaded into the program: makes one allocation fail.
///
/// In the plug-in: TESSORA_FAIL_SIZE is the size in bytes, TESSORA_FAIL_CALL which call of that
/// size fails, from 1. Only calls of malloc from the plug-in's own library count.
///
/// Anywhere: TESSORA_FAIL_NEW is which call of operator new for at least TESSORA_FAIL_NEW_SIZE
/// bytes fails, from 1; "allocation failed" on standard error says that it has.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <unistd.h>

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

__attribute__((visibility("default"))) void* operator new(size_t size) {
    static const char* const call = std::getenv("TESSORA_FAIL_NEW");
    static const size_t least =
        call ? std::strtoul(std::getenv("TESSORA_FAIL_NEW_SIZE"), nullptr, 10) : 0;
    static std::atomic<int> left{call ? std::atoi(call) : 0};
    if (call && size >= least && --left == 0) {
        constexpr char words[] = "allocation failed\n";
        if (::write(STDERR_FILENO, words, sizeof words - 1) > 0)
            throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
