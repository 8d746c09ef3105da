#include "tests/corelib/support.h"

Notices& notices() {
    static Notices record;
    return record;
}

/// The platform layer looks this function up at run time, like the application's own hook.
extern "C" FIXTURES_EXPORT int host_show_notice(const char* caption, const char* text) {
    notices().captions.emplace_back(caption);
    notices().texts.emplace_back(text);
    if (notices().while_showing)
        notices().while_showing();
    return notices().answer;
}
