#include "host/graph/library.h"

#include <dlfcn.h>

namespace host::graph::library {

const char* const k_extension = ".so";
// Mangled names, because the entry points have C++ linkage.
const char* const k_initialize = "_Z16initializePlugin7MObject";
const char* const k_uninitialize = "_Z18uninitializePlugin7MObject";
const char k_path_separator = ':';

void* open(const std::string& path, std::string& error) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const text = dlerror();
        error = text == nullptr ? "unknown reason" : text;
    }
    return library;
}

void close(void* library) { dlclose(library); }

void* find(void* library, const char* symbol) { return dlsym(library, symbol); }

bool contains(void* library, const void* address) {
    Dl_info at, here;
    const void* const inside = dlsym(library, "MApiVersion");
    return address != nullptr && inside != nullptr && dladdr(address, &at) != 0 &&
           dladdr(inside, &here) != 0 && at.dli_fbase == here.dli_fbase;
}

} // namespace host::graph::library
