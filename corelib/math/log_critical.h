/// How the atlas stage reports failures: a critical line to the message box and the debugger.
#pragma once

#include "corelib/error.h"

#include <cstdint>

inline constexpr uint32_t k_critical_sinks = LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER;

/// Logs the text verbatim.
inline void log_critical(const char* text) { do_log(LOG_CRITICAL, k_critical_sinks, "%s", text); }

/// Logs a printf format with its arguments.
template <class First, class... Others>
void log_critical(const char* format, First first, Others... others) {
    do_log(LOG_CRITICAL, k_critical_sinks, format, first, others...);
}
