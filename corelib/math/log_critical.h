/// The one way in which the atlas stage tells of a failure: a critical line to the message box and
/// to the debugger. The caller goes on by returning a failure of its own.
#pragma once

#include "corelib/error.h"

#include <cstdint>

inline constexpr uint32_t k_critical_sinks = LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER;

/// A text as it stands.
inline void log_critical(const char* text) { do_log(LOG_CRITICAL, k_critical_sinks, "%s", text); }

/// A printf format and its arguments.
template <class First, class... Others>
void log_critical(const char* format, First first, Others... others) {
    do_log(LOG_CRITICAL, k_critical_sinks, format, first, others...);
}
