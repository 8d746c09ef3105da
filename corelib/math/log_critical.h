/// The one way in which the atlas stage tells of a failure: a critical line to the message box and
/// to the debugger. The caller goes on by returning a failure of its own.
#pragma once

#include "corelib/error.h"

template <class... Arguments>
void log_critical(const char* format, Arguments... arguments) {
    do_log(LOG_CRITICAL, LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER, format, arguments...);
}
