#include "corelib/array.h"

#include "corelib/error.h"

#include <cstdio>

void report_array_bug(const char* element, const char* operation, int line, const char* assertion) {
    char function[128];
    std::snprintf(function, sizeof function, "array<%s>::%s", element, operation);
    report_bug(function, "corelib/array", line, assertion);
}
