// A library that leaves a trace as soon as it is loaded, before anything checks whether it is a
// plug-in: it creates the file named by TESSORA_TEST_TRACE.
#include <cstdio>
#include <cstdlib>

__attribute__((constructor)) static void leave_trace() {
    if (const char* file = std::getenv("TESSORA_TEST_TRACE"))
        if (std::FILE* trace = std::fopen(file, "w"))
            std::fclose(trace);
}
