/// Sends one line to the sinks that its first argument names as a number, then prints "returned".
#include "corelib/error.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    do_log(LOG_CRITICAL, static_cast<uint32_t>(std::atoi(argv[1])), "%s", argv[2]);
    std::puts("returned");
    return 0;
}
