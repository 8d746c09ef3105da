#include "platform/d3dx9/inspect.h"

#include "platform/d3dx9/object.h"
#include "platform/d3dx9/reason.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace d3dx9 {

unsigned live_objects = 0;

namespace {
char last_reason[256] = "";
HRESULT last_result = D3D_OK;
std::vector<uint32_t> over_limit;
} // namespace

void clear_reason() {
    last_reason[0] = '\0';
    last_result = D3D_OK;
    over_limit = {};
}

void record_over_limit(std::vector<uint32_t> faces) { over_limit = std::move(faces); }

HRESULT fail(HRESULT result, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(last_reason, sizeof last_reason, format, arguments);
    va_end(arguments);
    last_result = result;
    return result;
}

} // namespace d3dx9

const char* d3dx9_last_reason(void) { return d3dx9::last_reason; }

HRESULT d3dx9_last_result(void) { return d3dx9::last_result; }

unsigned d3dx9_over_limit(const DWORD** faces) {
    static_assert(sizeof(DWORD) == sizeof(uint32_t));
    if (faces != nullptr)
        *faces = reinterpret_cast<const DWORD*>(d3dx9::over_limit.data());
    return static_cast<unsigned>(d3dx9::over_limit.size());
}

unsigned d3dx9_live_objects(void) { return d3dx9::live_objects; }
