#include "host/graph/library.h"

#include <windows.h>

namespace host::graph::library {

const char* const k_extension = ".mll";
// Plug-ins export these under unmangled names on Windows.
const char* const k_initialize = "initializePlugin";
const char* const k_uninitialize = "uninitializePlugin";
const char k_path_separator = ';';

namespace {

std::string last_reason() {
    const DWORD number = GetLastError();
    char text[512];
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                            FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                        nullptr, number, 0, text, sizeof text, nullptr);
    std::string reason(text, length);
    while (!reason.empty() && (reason.back() == ' ' || reason.back() == '.'))
        reason.pop_back();
    return reason.empty() ? "error " + std::to_string(number) : reason;
}

} // namespace

void* open(const std::string& path, std::string& error) {
    // This search order finds other libraries in the plug-in's own folder.
    const HMODULE library = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr)
        error = last_reason();
    return library;
}

void close(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }

void* find(void* library, const char* symbol) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), symbol));
}

bool contains(void* library, const void* address) {
    HMODULE owner = nullptr;
    return address != nullptr &&
           GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                  GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              static_cast<const char*>(address), &owner) != 0 &&
           owner == library;
}

} // namespace host::graph::library
