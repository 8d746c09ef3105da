#include "platform/d3dx9/inspect.h"

#include "platform/d3dx9/object.h"
#include "platform/d3dx9/reason.h"

#include <cstdarg>
#include <cstdio>

namespace d3dx9 {

unsigned live_objects = 0;

namespace {
char last_reason[256] = "";
} // namespace

void clear_reason() { last_reason[0] = '\0'; }

HRESULT fail(HRESULT result, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(last_reason, sizeof last_reason, format, arguments);
    va_end(arguments);
    return result;
}

} // namespace d3dx9

const char* d3dx9_last_reason(void) { return d3dx9::last_reason; }

unsigned d3dx9_live_objects(void) { return d3dx9::live_objects; }
